#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <vector>

// One level of an environment map: linear RGB floats, equirectangular, row 0
// at the bottom (looking down).
struct EnvironmentLevel
{
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<float> rgb;

    bool isEmpty() const { return rgb.empty(); }
};

// The four mip levels bound as "EnvMap". A set on disk is four Radiance files:
// envmap1.hdr is the sharp map (level 0), envmap2.hdr to envmap4.hdr are
// pre-blurred at half, quarter and eighth size (levels 1 to 3), so that the
// shader's LOD rule finds a blurred environment for rough materials.
struct EnvironmentMap
{
    std::array<EnvironmentLevel, 4> levels;

    bool isEmpty() const { return levels[0].isEmpty(); }
};

constexpr int environmentLevelCount = 4;

// A uniform environment of one colour (the fallback when files are missing).
EnvironmentMap plainEnvironment(float r, float g, float b);

// Loads envmap1.hdr to envmap4.hdr from `directory`. A missing or mismatched
// blurred level is filtered from the level above it; a missing sharp map
// gives a plain grey environment. Each problem is logged.
EnvironmentMap loadEnvironmentSet(const QString& directory);

// Half the size of `level`, box filtered, then blurred by a 3 x 3 tent that
// wraps around horizontally.
EnvironmentLevel filterEnvironmentLevel(const EnvironmentLevel& level);

// Radiance .hdr through FreeImage; false after logging on failure.
bool loadRadianceHdr(const QString& path, EnvironmentLevel& level);
bool saveRadianceHdr(const QString& path, const EnvironmentLevel& level);
