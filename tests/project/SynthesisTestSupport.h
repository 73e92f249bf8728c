#pragma once

#include "ImageFile.h"
#include "ImageSynthesizer.h"
#include "ProjectData.h"
#include "SurfaceSynthesisContext.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <regex>
#include <string>
#include <vector>

// A smooth, non-repeating pattern; `phase` makes different images.
inline Image patternImage(uint32_t width, uint32_t height, PixelFormat format, float phase = 0.0f)
{
    Image image(width, height, format);
    const uint32_t c = image.channels();
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            for (uint32_t k = 0; k < c; ++k)
                image.data[c * (x + width * y) + k] =
                    0.5f + 0.4f * std::sin(0.37f * float(x) * float(k + 1) + 0.23f * float(y) + phase);
    if (format == Normal) {
        for (uint64_t i = 0; i < image.pixelCount(); ++i) {
            float* p = image.data + 3 * i;
            p[0] -= 0.5f;
            p[1] -= 0.5f;
            const float length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
            for (int k = 0; k < 3; ++k)
                p[k] /= length;
        }
    }
    image.fileType = FilePNG;
    image.sampleType = UInt8;
    return image;
}

inline Image constantImage(uint32_t width, uint32_t height, PixelFormat format, float value)
{
    Image image(width, height, format);
    for (uint64_t i = 0; i < image.floatCount(); ++i)
        image.data[i] = value;
    return image;
}

// A texture record holding `image` directly, no file involved.
inline Velmor::ProjectData::TextureData* addImageTexture(Velmor::ProjectData& store, const std::string& name, Image image)
{
    auto texture = std::make_unique<Velmor::ProjectData::TextureData>();
    texture->name = name;
    texture->image = std::move(image);
    store.textures.push_back(std::move(texture));
    return store.textures.back().get();
}

// Small patches so that a run over a few dozen pixels has many of them.
inline void smallPatches(Velmor::ProjectData::SurfaceData& surface, uint32_t width, uint32_t height)
{
    for (const auto& synthesizer : surface.synthesizers) {
        auto* params = static_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(synthesizer->params);
        params->targetWidth = width;
        params->targetHeight = height;
        params->patchSize = 8;
        params->patchBoundary = 2;
    }
}

inline bool samePixels(const Image& a, const Image& b)
{
    return a.format == b.format && a.width == b.width && a.height == b.height && !a.isEmpty()
        && std::memcmp(a.data, b.data, a.floatCount() * sizeof(float)) == 0;
}

// The totals of every "N patches out of M timed out" line, in order: one per
// synthesizer pass.
template <class Capture>
std::vector<int> passPatchTotals(const Capture& log)
{
    std::vector<int> totals;
    const std::regex line("(\\d+) patches out of (\\d+) timed out");
    for (const auto& message : log.messages) {
        std::smatch match;
        const std::string text = message.first.toStdString();
        if (std::regex_search(text, match, line))
            totals.push_back(std::stoi(match[2]));
    }
    return totals;
}
