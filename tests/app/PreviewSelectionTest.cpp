#include "DocumentTestSupport.h"
#include "PreviewSelection.h"
#include "ProjectEdits.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QUndoStack>

using ProjectData = Velmor::ProjectData;

TEST(PreviewSelection, ShowsLayersByModeAndFollowsEditsAndRemoval)
{
    QTemporaryDir files;
    ProjectDocument document;
    PreviewSelection selection(&document);
    QSignalSpy layersChanged(&selection, &PreviewSelection::layersChanged);

    const std::vector<RecordRef> textures = ProjectEdits::importImages(
        document, {writePng(files.path(), "a.png"), writePng(files.path(), "b.png", true)});
    ASSERT_EQ(textures.size(), 2u);
    ProjectData::SurfaceData* surface = ProjectEdits::newSurface(document).surface();
    std::vector<ProjectData::SurfaceLayer> layers(2);
    layers[0] = {"rough", textures[1].texture(), ProjectData::LayerMode::Roughness};
    layers[1] = {"color", textures[0].texture(), ProjectData::LayerMode::Color};
    ProjectEdits::setLayers(document, surface, layers, "Layers");

    // Textures and maps leave the shown surface alone.
    selection.select(textures[0]);
    EXPECT_EQ(selection.surface(), nullptr);
    selection.select(RecordRef(surface));
    EXPECT_EQ(layersChanged.count(), 1);
    PreviewSelection::Layers shown = selection.layers();
    EXPECT_EQ(shown[int(ProjectData::LayerMode::Color)], &textures[0].texture()->image);
    EXPECT_EQ(shown[int(ProjectData::LayerMode::Roughness)], &textures[1].texture()->image);
    EXPECT_EQ(shown[int(ProjectData::LayerMode::Normal)], nullptr);

    // A layer edit and its undo refresh the preview.
    layers.pop_back();
    ProjectEdits::setLayers(document, surface, layers, "Layers");
    EXPECT_EQ(layersChanged.count(), 2);
    EXPECT_EQ(selection.layers()[int(ProjectData::LayerMode::Color)], nullptr);
    document.undoStack()->undo();
    EXPECT_EQ(layersChanged.count(), 3);
    EXPECT_NE(selection.layers()[int(ProjectData::LayerMode::Color)], nullptr);

    // Removing a texture the surface uses refreshes; removing the surface empties.
    ProjectEdits::remove(document, textures[1]);
    EXPECT_GE(layersChanged.count(), 4);
    EXPECT_EQ(selection.layers()[int(ProjectData::LayerMode::Roughness)], nullptr);
    ProjectEdits::remove(document, RecordRef(surface));
    EXPECT_EQ(selection.surface(), nullptr);
    for (const Image* image : selection.layers())
        EXPECT_EQ(image, nullptr);
}

TEST(PreviewSelection, ModelRecordGivesItsMeshPathAndTransform)
{
    ProjectDocument document;
    PreviewSelection selection(&document);
    QSignalSpy modelChanged(&selection, &PreviewSelection::modelChanged);
    QSignalSpy transformChanged(&selection, &PreviewSelection::modelTransformChanged);

    const std::vector<RecordRef> models = ProjectEdits::importModels(document, {"/somewhere/rock.obj"});
    ASSERT_EQ(models.size(), 1u);
    ProjectData::ModelData* model = models[0].model();
    selection.select(models[0]);
    ASSERT_EQ(modelChanged.count(), 1);
    EXPECT_EQ(modelChanged.at(0).at(0).toString(), "/somewhere/rock.obj");
    EXPECT_TRUE(selection.modelTransform().isIdentity());

    ProjectEdits::setField(document, models[0], model->rotationY, 90.0f, "Rotation");
    ProjectEdits::setField(document, models[0], model->scale, 2.0f, "Scale");
    EXPECT_GE(transformChanged.count(), 3);
    // Rotated a quarter turn about y, then doubled: +x goes to -z, twice as far.
    const QVector3D moved = selection.modelTransform().map(QVector3D(1, 0, 0));
    EXPECT_NEAR(moved.x(), 0.0f, 1e-5f);
    EXPECT_NEAR(moved.z(), -2.0f, 1e-5f);

    // Selecting the same model again loads nothing; removing it clears the mesh.
    selection.select(models[0]);
    EXPECT_EQ(modelChanged.count(), 1);
    ProjectEdits::remove(document, models[0]);
    ASSERT_EQ(modelChanged.count(), 2);
    EXPECT_TRUE(modelChanged.at(1).at(0).toString().isEmpty());
    EXPECT_EQ(selection.model(), nullptr);
}
