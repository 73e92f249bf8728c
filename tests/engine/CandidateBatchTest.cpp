#include "CutoutPatch.h"
#include "EngineTestImages.h"
#include "PatchSource.h"
#include "RingErrorFloor.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <cfloat>
#include <cstring>
#include <random>

using namespace Velmor;

namespace {

// A target that holds the source moved by (shiftX, shiftY), so that the
// candidate at the patch position plus the shift fits it almost exactly.
std::unique_ptr<LayeredImage> shiftedCopy(const LayeredImage& source, int shiftX, int shiftY)
{
    auto target = std::make_unique<LayeredImage>();
    for (size_t l = 0; l < source.layerCount(); ++l) {
        const Image& from = *source.layers[l];
        auto* to = new Image(from.width, from.height, from.format);
        for (int y = 0; y < int(from.height); ++y)
            for (int x = 0; x < int(from.width); ++x) {
                const Pixel p = from.pixelAt(x + shiftX, y + shiftY);
                std::copy(p.values, p.values + from.channels(), to->pixelAt(x, y).values);
            }
        target->setLayer(source.names[l], to);
    }
    return target;
}

constexpr int patchSize = 10, boundary = 6, F = 22, x = 12, y = 9;

// Evaluates `candidates` in batches of 3, 5 and 8 on `team` threads and
// checks the outcome against `reference`, which evaluated them one by one to
// the end (errors `full`). Returns how many candidates stopped early.
int checkBatches(LayeredImage& target, const std::vector<PatchSource>& candidates, const std::vector<uint8_t>& filled,
                 const CutoutPatch& reference, const std::vector<float>& full, int team)
{
    CutoutPatch patch;
    patch.init(&target, patchSize, boundary);
    patch.setEarlyExit(true, 1.0e-5);
    patch.x = x, patch.y = y;
    int stopped = 0;
    float bestBefore = FLT_MAX;
    for (const auto& [first, count] : {std::pair{0, 3}, std::pair{3, 5}, std::pair{8, 8}}) {
        std::vector<float> errors(count);
        // A threshold below every error: each complete error bounds the others.
        patch.evaluateBatch(candidates.data() + first, count, filled.data(), true, 3.0f, -1.0f, errors.data());
        for (int i = 0; i < count; ++i) {
            const int n = first + i;
            if (errors[i] == full[n])
                continue;
            // Stopped: both the reported and the full error exceed what the
            // best one or another candidate of the batch reached.
            float others = bestBefore;
            for (int j = first; j < first + count; ++j)
                if (j != n)
                    others = std::min(others, full[j]);
            EXPECT_GT(errors[i], others) << "team " << team << " candidate " << n;
            EXPECT_GT(full[n], others) << "team " << team << " candidate " << n;
            ++stopped;
        }
        for (int i = 0; i < count; ++i)
            patch.takeEvaluated(i, candidates[first + i], errors[i]);
        bestBefore = patch.bestError;
    }
    EXPECT_NE(patch.bestSource, nullptr);
    if (!patch.bestSource)
        return stopped;
    EXPECT_EQ(patch.bestSource->sx, reference.bestSource->sx) << "team " << team;
    EXPECT_EQ(patch.bestSource->sy, reference.bestSource->sy) << "team " << team;
    EXPECT_EQ(patch.bestError, reference.bestError) << "team " << team;
    EXPECT_EQ(std::memcmp(patch.bestErrorMap->data, reference.bestErrorMap->data, sizeof(float) * F * F), 0)
        << "team " << team;

    // One by one with early stops: the same choice and the same errors of it.
    CutoutPatch single;
    single.init(&target, patchSize, boundary);
    single.setEarlyExit(true, 1.0e-5);
    single.x = x, single.y = y;
    for (size_t n = 0; n < candidates.size(); ++n) {
        const float error = single.evaluate(candidates[n], filled.data(), true);
        EXPECT_TRUE(error == full[n] || (error > single.bestError && full[n] > single.bestError)) << n;
        stopped += error != full[n];
    }
    EXPECT_EQ(single.bestError, reference.bestError);
    EXPECT_EQ(std::memcmp(single.bestErrorMap->data, reference.bestErrorMap->data, sizeof(float) * F * F), 0);
    return stopped;
}

} // namespace

// Batches of candidates, evaluated side by side with early stops, must end
// with the best candidate, best error and per-pixel errors that evaluating
// the candidates one by one, to the end, gives; on any number of threads.
TEST(CandidateBatch, MatchesOneByOneEvaluationOnAnyTeam)
{
    auto source = EngineTest::makeSource(48, 44);
    auto target = shiftedCopy(*source, 7, 5);
    std::mt19937 random(3);
    std::vector<uint8_t> filled(48 * 44);
    for (auto& f : filled)
        f = random() % 4 != 0;
    std::vector<PatchSource> candidates;
    for (int i = 0; i < 16; ++i) {
        const bool turned = i % 5 == 3; // some rotated and scaled placements among whole-pixel ones
        candidates.emplace_back(source.get(), int(random() % 48), int(random() % 44), F / 2, turned ? 0.6f : 0.0f,
                                turned ? 0.8f : 1.0f, turned ? 1.5f : 1.0f);
    }
    std::vector<PatchSource> withFit = candidates;
    withFit[1].place(x + 7, y + 5, F / 2, 0.0f, 1.0f, 1.0f); // a near-perfect fit, early on

    const int threads = omp_get_max_threads();
    for (const std::vector<PatchSource>* list : {&candidates, &withFit}) {
        CutoutPatch reference;
        reference.init(target.get(), patchSize, boundary);
        reference.x = x, reference.y = y;
        std::vector<float> full;
        for (const PatchSource& c : *list)
            full.push_back(reference.evaluate(c, filled.data(), true));
        ASSERT_NE(reference.bestSource, nullptr);
        for (int team : {1, 2, 5}) {
            omp_set_num_threads(team);
            EXPECT_GT(checkBatches(*target, *list, filled, reference, full, team), 0) << "team " << team;
        }
    }
    omp_set_num_threads(threads);
}

// Early stops are only allowed where no ring pixel can add a negative or
// undefined error.
TEST(CandidateBatch, ErrorFloorOnlyWhereErrorsStayAboveIt)
{
    auto source = EngineTest::makeSource(16, 16);
    EXPECT_GT(ringErrorFloor(*source, true, false, false), 0.0);   // unit normals: a little slack
    EXPECT_LT(ringErrorFloor(*source, true, true, false), 0.0);    // rotated normals may grow
    EXPECT_LT(ringErrorFloor(*source, true, false, true), 0.0);    // the target's own content is unknown
    EXPECT_EQ(ringErrorFloor(*source, false, true, false), 0.0);   // colour only: squares are never negative

    source->layers[1]->pixelAt(3, 4)[2] = -0.5f; // a normal facing away could blend to length 0
    EXPECT_LT(ringErrorFloor(*source, true, false, false), 0.0);
    EXPECT_EQ(ringErrorFloor(*source, false, false, false), 0.0);
    source->layers[0]->pixelAt(5, 5)[1] = std::nanf("");
    EXPECT_LT(ringErrorFloor(*source, false, false, false), 0.0);
}
