#pragma once

#include "DocumentTestSupport.h"
#include "ImageFile.h"
#include "ImageSynthesizer.h"
#include "SurfaceSynthesisContext.h"

#include <cmath>

// A surface of two layers read from files the test writes: "Color" from a
// JPEG and "Normal" from a PNG turned into a Normal image with `flags`
// (flip Y, mapped XY, mapped Z). Its synthesizer grows `size` x `size`
// pixels in small patches from a fixed seed.
struct GenerationScene
{
    Velmor::ProjectData::SurfaceData* surface = nullptr;

    GenerationScene(ProjectDocument& document, const QString& directory, uint32_t size)
    {
        Velmor::ProjectData& store = document.store();
        const QString colourPath = writeImage(directory + "/stones.jpg", RGB);
        const QString normalPath = writeImage(directory + "/stones_n.png", RGB);
        auto* colour = store.addTexture(colourPath);
        auto* normal = store.addTexture(normalPath);
        normal->image.toNormalMap(false, true, true, true);
        surface = store.addSurface("Stones");
        surface->layers = {{"Color", colour, Velmor::ProjectData::LayerMode::Color},
                           {"Normal", normal, Velmor::ProjectData::LayerMode::Normal}};
        auto* params = dynamic_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(surface->synthesizer()->params);
        params->targetWidth = size;
        params->targetHeight = size;
        params->patchSize = 8;
        params->patchBoundary = 2;
        params->maxTries = 4;
        surface->synthesisContext->seed = 7;
    }

    // A 32 x 32 pattern of smooth waves, saved by the project's own writer.
    static QString writeImage(const QString& path, PixelFormat format)
    {
        Image image(32, 32, format);
        const uint32_t channels = image.channels();
        for (uint32_t y = 0; y < image.height; ++y)
            for (uint32_t x = 0; x < image.width; ++x)
                for (uint32_t c = 0; c < channels; ++c)
                    image.data[(y * image.width + x) * channels + c]
                        = 0.5f + 0.4f * std::sin(0.4f * float(x) + 0.7f * float(y) + float(c));
        saveImage(path, image);
        return path;
    }
};
