#pragma once

#include <cstdint>
#include <vector>

// Labels the connected components of triangles that share vertex indices
// (after vertex joining a UV seam splits a vertex, so these are UV islands).
// `indices` holds three vertex indices per triangle. Fills `labels` with one
// island number per vertex, numbered in order of each island's lowest vertex,
// and returns the island count.
int32_t labelUvIslands(const std::vector<uint32_t>& indices, uint32_t vertexCount, std::vector<int32_t>& labels);
