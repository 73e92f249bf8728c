#include "ClearOutputCommand.h"
#include "GeneratedImageSaver.h"
#include "GenerationTestSupport.h"
#include "ScriptedDialogs.h"
#include "SurfaceSynthesis.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QUndoStack>

namespace {

using ProjectData = Velmor::ProjectData;

class GeneratedImageSaverTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(Velmor::synthesizeSurface(*scene.surface->synthesisContext, {}));
        ASSERT_TRUE(output.mkpath("out"));
        output.setPath(files.path() + "/out");
    }

    QTemporaryDir files;
    ProjectDocument document;
    GenerationScene scene{document, files.path(), 24};
    ScriptedDialogs dialogs;
    QDir output{files.path()};
};

TEST(GeneratedImageNames, ExtensionFollowsTheFileTypeAndUnknownTypesGetNone)
{
    const char* const expected[] = {".bmp", ".exr", ".jpg", ".png", ".tga", ".tif"};
    for (uint32_t type = 0; type < 6; ++type)
        EXPECT_EQ(GeneratedImageSaver::extensionFor(type), QString(expected[type]));
    EXPECT_EQ(GeneratedImageSaver::extensionFor(6), QString());
    EXPECT_EQ(GeneratedImageSaver::extensionFor(1000), QString());
}

// One file per output layer, named after the surface's layers with the
// extension of each layer's source file; a cancelled chooser writes nothing.
TEST_F(GeneratedImageSaverTest, SavesEveryLayerUnderItsNameAndExtension)
{
    LogCapture log;
    dialogs.directories = {QString(), output.path()};
    EXPECT_FALSE(GeneratedImageSaver::saveImages(document, dialogs, *scene.surface));
    EXPECT_TRUE(output.entryList(QDir::Files).isEmpty());
    EXPECT_FALSE(log.contains("Saving finished.", Success));

    EXPECT_TRUE(GeneratedImageSaver::saveImages(document, dialogs, *scene.surface));
    EXPECT_EQ(output.entryList(QDir::Files, QDir::Name), QStringList({"Color.jpg", "Normal.png"}));
    EXPECT_EQ(dialogs.chooserTitles.last(), QString("Save Generated Image"));
    EXPECT_TRUE(log.contains("Saving started.", Info));
    EXPECT_TRUE(log.contains("Saving finished.", Success));

    // The files hold the generated images, not the sources.
    Image colour;
    ImageFileInfo info;
    ASSERT_TRUE(loadImage(info, output.filePath("Color.jpg"), colour));
    EXPECT_EQ(colour.width, 24u);
    EXPECT_EQ(colour.height, 24u);
    // Saving changes nothing in the project.
    EXPECT_EQ(document.undoStack()->count(), 0);
}

// The saved files come back as a new surface whose layers copy the names and
// modes, the normal layer a Normal image with the source's flags; undo takes
// the surface and its textures away, redo brings the same records back.
TEST_F(GeneratedImageSaverTest, LoadsTheSavedImagesAsANewSurfaceInOneUndoStep)
{
    ProjectData& store = document.store();
    const size_t texturesBefore = store.textures.size();
    dialogs.directories = {output.path()};
    const RecordRef created = GeneratedImageSaver::saveImagesAsSurface(document, dialogs, *scene.surface);
    ProjectData::SurfaceData* surface = created.surface();
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(surface->name, "NewSurface");
    ASSERT_EQ(surface->layers.size(), 2u);
    EXPECT_EQ(surface->layers[0].name, "Color");
    EXPECT_EQ(surface->layers[0].mode, ProjectData::LayerMode::Color);
    EXPECT_EQ(surface->layers[1].name, "Normal");
    EXPECT_EQ(surface->layers[1].mode, ProjectData::LayerMode::Normal);
    EXPECT_EQ(QFileInfo(surface->layers[0].texture->path).fileName(), QString("Color.jpg"));
    EXPECT_EQ(QFileInfo(surface->layers[1].texture->path).fileName(), QString("Normal.png"));
    const Image& loadedNormal = surface->layers[1].texture->image;
    EXPECT_EQ(loadedNormal.format, Normal);
    EXPECT_FALSE(loadedNormal.flipNormalX);
    EXPECT_TRUE(loadedNormal.flipNormalY);
    EXPECT_TRUE(loadedNormal.mappedNormalXY);
    EXPECT_TRUE(loadedNormal.mappedNormalZ);
    EXPECT_EQ(loadedNormal.width, 24u);
    // The vectors survive the trip through the 8-bit file.
    const Image& generated = *scene.surface->synthesizer()->target->layers[1];
    for (uint64_t i = 0; i < generated.floatCount(); ++i)
        ASSERT_NEAR(loadedNormal.data[i], generated.data[i], 0.02f) << "float " << i;
    EXPECT_EQ(store.textures.size(), texturesBefore + 2);

    ASSERT_EQ(document.undoStack()->count(), 1);
    document.undoStack()->undo();
    EXPECT_EQ(store.surfaces.size(), 1u);
    EXPECT_EQ(store.textures.size(), texturesBefore);
    document.undoStack()->redo();
    ASSERT_EQ(store.surfaces.size(), 2u);
    EXPECT_EQ(store.surfaces.back().get(), surface);
    EXPECT_EQ(store.textures.size(), texturesBefore + 2);
    EXPECT_EQ(surface->layers[1].texture, store.textures.back().get());
}

// A cancelled chooser still leaves the new, empty surface, undoable; a
// read-only document gets nothing.
TEST_F(GeneratedImageSaverTest, CancelledChooserLeavesAnEmptySurface)
{
    LogCapture log;
    dialogs.directories = {QString()};
    const RecordRef created = GeneratedImageSaver::saveImagesAsSurface(document, dialogs, *scene.surface);
    ASSERT_NE(created.surface(), nullptr);
    EXPECT_TRUE(created.surface()->layers.empty());
    EXPECT_TRUE(output.entryList(QDir::Files).isEmpty());
    EXPECT_TRUE(log.contains("Saving finished.", Success));
    document.undoStack()->undo();
    EXPECT_EQ(document.store().surfaces.size(), 1u);

    document.setReadOnly(true);
    EXPECT_TRUE(GeneratedImageSaver::saveImagesAsSurface(document, dialogs, *scene.surface).isNull());
    EXPECT_EQ(document.store().surfaces.size(), 1u);
}

// Clear Output hands the very same output back on undo.
TEST_F(GeneratedImageSaverTest, ClearOutputIsUndoable)
{
    Velmor::ImageSynthesizer* synthesizer = scene.surface->synthesizer();
    LayeredImage* before = synthesizer->target;
    synthesizer->targetReady = true;
    document.push(new ClearOutputCommand(&document, scene.surface));
    EXPECT_EQ(synthesizer->target, nullptr);
    EXPECT_FALSE(synthesizer->targetReady);
    EXPECT_EQ(GeneratedImageSaver::outputOf(*scene.surface), nullptr);
    dialogs.directories.clear();
    EXPECT_FALSE(GeneratedImageSaver::saveImages(document, dialogs, *scene.surface));

    document.undoStack()->undo();
    EXPECT_EQ(synthesizer->target, before);
    EXPECT_TRUE(synthesizer->targetReady);
    document.undoStack()->redo();
    EXPECT_EQ(synthesizer->target, nullptr);
}

} // namespace
