#include "UvIslands.h"

#include <chrono>

int32_t labelUvIslands(const std::vector<uint32_t>& indices, uint32_t vertexCount, std::vector<int32_t>& labels)
{
    const auto start = std::chrono::high_resolution_clock::now();
    labels.assign(vertexCount, -1);
    const int64_t faceCount = int64_t(indices.size() / 3);
    int32_t island = 0;
    uint32_t next = 0;
    for (;;) {
        while (next < vertexCount && labels[next] != -1)
            ++next;
        if (next == vertexCount)
            break;
        labels[next] = island;
        // Sweeps until nothing changes; faces racing on a vertex only ever
        // write the same label.
        bool changed = true;
        while (changed) {
            changed = false;
            int anyChange = 0;
#pragma omp parallel for schedule(static) reduction(| : anyChange)
            for (int64_t f = 0; f < faceCount; ++f) {
                const uint32_t* face = &indices[size_t(f) * 3];
                bool touches = false;
                for (int k = 0; k < 3; ++k)
                    if (face[k] < vertexCount && labels[face[k]] == island)
                        touches = true;
                if (!touches)
                    continue;
                for (int k = 0; k < 3; ++k)
                    if (face[k] < vertexCount && labels[face[k]] < 0) {
                        labels[face[k]] = island;
                        anyChange = 1;
                    }
            }
            changed = anyChange != 0;
        }
        ++island;
    }
    // Measured for profiling only.
    (void)(std::chrono::high_resolution_clock::now() - start);
    return island;
}
