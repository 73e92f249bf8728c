#include "CutoutPatchSynthesizer.h"
#include "DocumentTestSupport.h"
#include "ImageSynthesizer.h"
#include "NormalMap.h"
#include "PbrImport.h"
#include "ProjectEdits.h"
#include "ScriptedDialogs.h"

#include <gtest/gtest.h>

#include <QUndoStack>

#include <functional>

using ProjectData = Velmor::ProjectData;
using ProjectEdits::setField;

namespace {

// A project with every kind of record and every kind of reference between
// them, built straight in the store (no undo history).
class UndoFixture : public testing::Test {
protected:
    void SetUp() override
    {
        ProjectData& store = document.store();
        colour = store.addTexture(writePng(files.path(), "wall_color.png"));
        normal = store.addTexture(writePng(files.path(), "wall_normal.png"));
        mask = store.addTexture(writePng(files.path(), "mask.png", true));
        directionMap = store.addDirectionMap();
        scaleMap = store.addScaleMap();
        model = store.addModel(files.path() + "/rock.obj");
        // Small images keep the many level-9 compressed saves quick.
        store.projectMask.resample(16, 16);
        directionMap->image.resample(16, 16);
        scaleMap->image.resample(16, 16);
        wall = store.addSurface("Wall");
        wall->layers = {{"color", colour, ProjectData::LayerMode::Color},
                        {"height", normal, ProjectData::LayerMode::Displacement}};
        wall->maskTexture = colour;
        wall->directionMap = directionMap;
        wall->scaleMap = scaleMap;
        rock = store.addSurface("Rock");
        rock->layers
            = {{"color", normal, ProjectData::LayerMode::Color}, {"other", colour, ProjectData::LayerMode::Color}};
        mixed = store.addMixedSurface("Mixed");
        mixed->whiteSurface = wall;
        mixed->blackSurface = rock;
        mixed->maskTexture = mask;
    }

    template <class T> void set(const RecordRef& owner, T& field, const T& value)
    {
        setField(document, owner, field, value, QStringLiteral("Edit"));
    }

    QTemporaryDir files;
    ProjectDocument document;
    ScriptedDialogs dialogs;
    ProjectData::TextureData *colour, *normal, *mask;
    ProjectData::DirectionMapData* directionMap;
    ProjectData::ScaleMapData* scaleMap;
    ProjectData::ModelData* model;
    ProjectData::SurfaceData *wall, *rock;
    ProjectData::MixedSurfaceData* mixed;
};

using Edit = std::function<void(UndoFixture&)>;

} // namespace

// Every edit must change the saved project, undo must give back exactly the
// files before it and redo exactly the files after it.
TEST_F(UndoFixture, EveryEditUndoesAndRedoesToIdenticalProjectFiles)
{
    auto layersWith = [](ProjectData::SurfaceData* s, std::function<void(std::vector<ProjectData::SurfaceLayer>&)> f) {
        std::vector<ProjectData::SurfaceLayer> layers = s->layers;
        f(layers);
        return layers;
    };
    const std::vector<std::pair<const char*, std::function<void()>>> edits = {
        {"rename surface onto a taken name", [&] { ProjectEdits::rename(document, wall, "Rock"); }},
        {"rename texture", [&] { ProjectEdits::rename(document, colour, "Bricks"); }},
        {"rename direction map", [&] { ProjectEdits::rename(document, directionMap, "Flow"); }},
        {"rename scale map", [&] { ProjectEdits::rename(document, scaleMap, "Size"); }},
        {"rename model", [&] { ProjectEdits::rename(document, model, "Boulder"); }},
        {"duplicate surface", [&] { ProjectEdits::duplicate(document, wall); }},
        {"duplicate mixed surface", [&] { ProjectEdits::duplicate(document, mixed); }},
        {"duplicate texture", [&] { ProjectEdits::duplicate(document, normal); }},
        {"duplicate direction map", [&] { ProjectEdits::duplicate(document, directionMap); }},
        {"duplicate scale map", [&] { ProjectEdits::duplicate(document, scaleMap); }},
        {"duplicate model", [&] { ProjectEdits::duplicate(document, model); }},
        {"delete texture used by layers and a mask", [&] { ProjectEdits::remove(document, colour); }},
        {"delete mask texture of the mixed surface", [&] { ProjectEdits::remove(document, mask); }},
        {"delete direction map", [&] { ProjectEdits::remove(document, directionMap); }},
        {"delete scale map", [&] { ProjectEdits::remove(document, scaleMap); }},
        {"delete surface a mixed surface uses", [&] { ProjectEdits::remove(document, wall); }},
        {"delete mixed surface", [&] { ProjectEdits::remove(document, mixed); }},
        {"delete model", [&] { ProjectEdits::remove(document, model); }},
        {"new surface", [&] { ProjectEdits::newSurface(document); }},
        {"new mixed surface", [&] { ProjectEdits::newMixedSurface(document); }},
        {"new direction map", [&] { ProjectEdits::newDirectionMap(document); }},
        {"new scale map", [&] { ProjectEdits::newScaleMap(document); }},
        {"import images",
         [&] {
             ProjectEdits::importImages(document, {writePng(files.path(), "a.png"), writePng(files.path(), "b.png")});
         }},
        {"import models", [&] { ProjectEdits::importModels(document, {files.path() + "/tree.obj"}); }},
        {"PBR import",
         [&] {
             PbrImport::importFiles(document,
                                    {writePng(files.path(), "x_normal.png"), writePng(files.path(), "x_col.png")});
         }},
        {"add layer",
         [&] {
             ProjectEdits::setLayers(document, wall,
                                     layersWith(wall,
                                                [&](auto& l) {
                                                    l.push_back({"ao", mask, ProjectData::LayerMode::Occlusion});
                                                }),
                                     "Add Layer");
         }},
        {"remove layer",
         [&] {
             ProjectEdits::setLayers(document, wall, layersWith(wall, [](auto& l) { l.erase(l.begin()); }),
                                     "Remove Layer");
         }},
        {"move layer",
         [&] {
             ProjectEdits::setLayers(document, wall, layersWith(wall, [](auto& l) { std::swap(l[0], l[1]); }),
                                     "Move Layer");
         }},
        {"layer texture",
         [&] {
             ProjectEdits::setLayers(document, wall, layersWith(wall, [&](auto& l) { l[0].texture = mask; }),
                                     "Set Texture");
         }},
        {"layer mode to normal, converting",
         [&] {
             dialogs.answers = {Dialogs::Yes};
             ProjectEdits::setLayerMode(document, dialogs, rock, 0, ProjectData::LayerMode::Normal);
         }},
        {"fill direction map",
         [&] {
             Image filled(8, 8, Normal);
             ProjectEdits::replaceImage(document, directionMap, directionMap->image, filled, "Fill");
         }},
        {"resize scale map",
         [&] {
             Image resized = scaleMap->image;
             resized.resample(64, 32);
             ProjectEdits::replaceImage(document, scaleMap, scaleMap->image, resized, "Resize");
         }},
        {"fix normal map slope",
         [&] {
             Image fixed = normal->image;
             convertToNormalLayer(fixed);
             ProjectEdits::replaceImage(document, normal, normal->image, fixed, "Convert");
         }},
        {"reload texture from another file",
         [&] { ProjectEdits::reloadTexture(document, colour, writePng(files.path(), "other.png", false, 24)); }},
        {"surface flags",
         [&] {
             document.undoStack()->beginMacro("Flags");
             set(RecordRef(wall), wall->useDirectionMap, false);
             set(RecordRef(wall), wall->makeInputSeamless, true);
             set(RecordRef(wall), wall->masked, true);
             document.undoStack()->endMacro();
         }},
        {"mask channel", [&] { set<int32_t>(wall, wall->maskChannel, 2); }},
        {"mask texture", [&] { set<ProjectData::TextureData*>(rock, rock->maskTexture, mask); }},
        {"clear direction map", [&] { set<ProjectData::DirectionMapData*>(wall, wall->directionMap, nullptr); }},
        {"method", [&] { set<size_t>(wall, wall->currentSynthesizerIndex, 1); }},
        {"patch size",
         [&] {
             auto* p = static_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(wall->synthesizers[0]->params);
             set<int32_t>(wall, p->patchSize, 64);
         }},
        {"target width", [&] { set<uint32_t>(wall, wall->synthesizers[0]->params->targetWidth, 2048u); }},
        {"feather",
         [&] {
             auto* p = static_cast<Velmor::CutoutPatchSynthesizer::CutoutPatchSynthesizerParams*>(
                 wall->synthesizers[1]->params);
             set<int32_t>(wall, p->feather, 9);
         }},
        {"white surface", [&] { set<ProjectData::SurfaceData*>(mixed, mixed->whiteSurface, rock); }},
        {"mixed flags", [&] { set(RecordRef(mixed), mixed->tileMask, true); }},
        {"mask filter mode", [&] { set<int32_t>(mixed, mixed->maskFilterMode, 1); }},
        {"model rotation", [&] { set(RecordRef(model), model->rotationY, 45.0f); }},
        {"model scale", [&] { set(RecordRef(model), model->scale, 2.5f); }},
    };

    QUndoStack* stack = document.undoStack();
    for (const auto& [name, edit] : edits) {
        SCOPED_TRACE(name);
        const Snapshot before = saveSnapshot(document);
        const int steps = stack->index();
        edit();
        ASSERT_EQ(stack->index(), steps + 1) << "one edit must be one undo step";
        EXPECT_TRUE(document.isModified());
        const Snapshot after = saveSnapshot(document);
        EXPECT_FALSE(differences(before, after).isEmpty()) << "the edit changed nothing";
        stack->undo();
        EXPECT_EQ(differences(before, saveSnapshot(document)), QStringList());
        stack->redo();
        EXPECT_EQ(differences(after, saveSnapshot(document)), QStringList());
        stack->undo();
        EXPECT_FALSE(document.isModified()) << "undone back to the clean state";
    }
    EXPECT_TRUE(dialogs.scriptUsedUp());
}

TEST_F(UndoFixture, DeletingATextureAsksNothingButClearsEveryReferenceAndUndoRestoresThem)
{
    EXPECT_EQ(ProjectEdits::referrers(document, colour),
              QStringList(
                  {"Surface 'Wall', layer 'color'", "Surface 'Wall', mask texture", "Surface 'Rock', layer 'other'"}));
    EXPECT_EQ(ProjectEdits::referrers(document, wall), QStringList({"Mixed surface 'Mixed', white surface"}));
    EXPECT_TRUE(ProjectEdits::referrers(document, model).isEmpty());

    ProjectEdits::remove(document, colour);
    EXPECT_EQ(document.store().textures.size(), 2u);
    EXPECT_EQ(wall->layers[0].texture, nullptr);
    EXPECT_EQ(wall->layers[1].texture, normal);
    EXPECT_EQ(wall->maskTexture, nullptr);
    EXPECT_EQ(rock->layers[1].texture, nullptr);
    EXPECT_EQ(document.undoStack()->count(), 1);

    // The very same record comes back, so every pointer to it is good again.
    document.undoStack()->undo();
    ASSERT_EQ(document.store().textures.size(), 3u);
    EXPECT_EQ(document.store().textures[0].get(), colour);
    EXPECT_EQ(wall->layers[0].texture, colour);
    EXPECT_EQ(wall->maskTexture, colour);
    EXPECT_EQ(rock->layers[1].texture, colour);
}

TEST_F(UndoFixture, RenamesStayUniqueAndNothingIsPushedWhileReadOnly)
{
    ProjectEdits::rename(document, rock, "Wall");
    EXPECT_EQ(rock->name, "Wall_1");
    ProjectEdits::rename(document, rock, "Wall_1"); // its own name: no step
    ProjectEdits::rename(document, rock, "  "); // empty: refused
    EXPECT_EQ(document.undoStack()->count(), 1);
    // A numbered name is not parsed: the counter goes after it.
    ProjectEdits::rename(document, wall, "Wall_1");
    EXPECT_EQ(wall->name, "Wall_1_1");

    document.setReadOnly(true);
    ProjectEdits::rename(document, wall, "Other");
    ProjectEdits::remove(document, colour);
    EXPECT_EQ(ProjectEdits::newSurface(document), RecordRef());
    EXPECT_EQ(wall->name, "Wall_1_1");
    EXPECT_EQ(document.store().textures.size(), 3u);
    EXPECT_EQ(document.store().surfaces.size(), 3u);
}

TEST_F(UndoFixture, SuccessiveEditsOfOneFieldMergeIntoOneStep)
{
    QUndoStack* stack = document.undoStack();
    for (int32_t size : {90, 80, 70})
        setField(document, wall, wall->maskChannel, size, "Set", true);
    EXPECT_EQ(stack->count(), 1);
    stack->undo();
    EXPECT_EQ(wall->maskChannel, 0);
    stack->redo();
    EXPECT_EQ(wall->maskChannel, 70);

    // Another field does not merge; back to the start removes the step.
    setField(document, mixed, mixed->maskFilterMode, 3, "Set", true);
    setField(document, mixed, mixed->maskFilterMode, 0, "Set", true);
    EXPECT_EQ(stack->count(), 1);
    EXPECT_EQ(mixed->maskFilterMode, 0);

    // No merge into the saved state: undo must still reach it.
    stack->setClean();
    setField(document, wall, wall->maskChannel, 60, "Set", true);
    EXPECT_EQ(stack->count(), 2);
    stack->undo();
    EXPECT_FALSE(document.isModified());
    EXPECT_EQ(wall->maskChannel, 70);
}

TEST_F(UndoFixture, LayerModeQuestionConvertsOnlyColourTexturesAndOnlyOnYes)
{
    // No: the mode changes, the texture stays colour.
    dialogs.answers = {Dialogs::No};
    ProjectEdits::setLayerMode(document, dialogs, wall, 0, ProjectData::LayerMode::Normal);
    EXPECT_EQ(wall->layers[0].mode, ProjectData::LayerMode::Normal);
    EXPECT_EQ(colour->image.format, RGB);
    document.undoStack()->undo();

    dialogs.answers = {Dialogs::Yes};
    ProjectEdits::setLayerMode(document, dialogs, wall, 0, ProjectData::LayerMode::Normal);
    EXPECT_EQ(colour->image.format, Normal);
    EXPECT_TRUE(colour->image.mappedNormalXY && colour->image.mappedNormalZ);
    EXPECT_FALSE(colour->image.flipNormalX || colour->image.flipNormalY);
    document.undoStack()->undo();
    EXPECT_EQ(colour->image.format, RGB);
    EXPECT_EQ(wall->layers[0].mode, ProjectData::LayerMode::Color);

    // A grey texture cannot become a normal map: a note, no question.
    ProjectEdits::setLayers(document, wall, {{"gray", mask, ProjectData::LayerMode::Color}}, "Set");
    ProjectEdits::setLayerMode(document, dialogs, wall, 0, ProjectData::LayerMode::Normal);
    EXPECT_EQ(mask->image.format, Gray);
    EXPECT_EQ(wall->layers[0].mode, ProjectData::LayerMode::Normal);
    EXPECT_EQ(dialogs.questions, QStringList({normalLayerQuestion, normalLayerQuestion, normalLayerNotConvertible}));
}
