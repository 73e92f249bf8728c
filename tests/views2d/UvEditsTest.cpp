#include "Image.h"
#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "MeshData.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"
#include "UvEdits.h"

#include <gtest/gtest.h>

#include <QUndoStack>

#include <cmath>

using ProjectData = Velmor::ProjectData;

namespace {

std::vector<MeshVertex> cylinderSide()
{
    std::vector<MeshVertex> vertices = makeCylinder(32, 1).vertices;
    vertices.resize(32 * 6);
    for (MeshVertex& v : vertices) {
        v.texCoord[0] = 0.1f + 0.8f * v.texCoord[0];
        v.texCoord[1] = 0.1f + 0.8f * v.texCoord[1];
    }
    return vertices;
}

bool samePixels(const Image& a, const Image& b)
{
    if (a.width != b.width || a.height != b.height || a.format != b.format)
        return false;
    for (uint64_t i = 0; i < a.floatCount(); ++i)
        if (a.data[i] != b.data[i])
            return false;
    return true;
}

// A surface whose synthesizer holds a generated colour and normal layer.
ProjectData::SurfaceData* surfaceWithOutput(ProjectDocument& document)
{
    ProjectData::SurfaceData* surface = ProjectEdits::newSurface(document).surface();
    LayeredImage source;
    source.setLayer("color", new Image(4, 4, RGB));
    source.setLayer("normal", new Image(4, 4, Normal));
    Velmor::ImageSynthesizer* synthesizer = surface->synthesizer();
    synthesizer->setInputs(&source, 96, 96, nullptr, nullptr, nullptr);
    synthesizer->forgetInputs();
    synthesizer->targetReady = true;
    for (Image* layer : synthesizer->target->layers)
        for (uint64_t i = 0; i < layer->pixelCount(); ++i) {
            float* p = layer->data + 3 * i;
            const float s = std::sin(float(i % 96) * 0.37f + float(i / 96) * 0.11f);
            p[0] = 0.3f * s;
            p[1] = 0.2f;
            p[2] = layer->format == Normal ? std::sqrt(1.0f - p[0] * p[0] - p[1] * p[1]) : 0.5f;
        }
    return surface;
}

TEST(UvEdits, FixingSeamsIsOneUndoStepOverAllLayers)
{
    ProjectDocument document;
    ProjectData::SurfaceData* surface = surfaceWithOutput(document);
    const std::vector<Image*> layers = UvEdits::generatedLayers(surface);
    ASSERT_EQ(layers.size(), 2u);
    const Image colourBefore = *layers[0], normalBefore = *layers[1];
    const int stepsBefore = document.undoStack()->count();

    ASSERT_TRUE(UvEdits::fixSeams(document, surface, cylinderSide()));
    EXPECT_EQ(document.undoStack()->count(), stepsBefore + 1);
    EXPECT_EQ(document.undoStack()->undoText(), "Fix UV Seams");
    EXPECT_FALSE(samePixels(*layers[0], colourBefore));
    EXPECT_FALSE(samePixels(*layers[1], normalBefore));
    const Image colourAfter = *layers[0], normalAfter = *layers[1];

    document.undoStack()->undo();
    EXPECT_TRUE(samePixels(*layers[0], colourBefore));
    EXPECT_TRUE(samePixels(*layers[1], normalBefore));
    document.undoStack()->redo();
    EXPECT_TRUE(samePixels(*layers[0], colourAfter));
    EXPECT_TRUE(samePixels(*layers[1], normalAfter));

    // Refused while a run reads the store, and without output or mesh.
    document.undoStack()->undo();
    document.setReadOnly(true);
    EXPECT_FALSE(UvEdits::fixSeams(document, surface, cylinderSide()));
    EXPECT_TRUE(samePixels(*layers[0], colourBefore));
    document.setReadOnly(false);
    EXPECT_FALSE(UvEdits::fixSeams(document, surface, {}));
    EXPECT_TRUE(samePixels(*layers[0], colourBefore));
    EXPECT_FALSE(UvEdits::fixSeams(document, ProjectEdits::newSurface(document).surface(), cylinderSide()));
}

} // namespace
