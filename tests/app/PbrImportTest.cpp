#include "DocumentTestSupport.h"
#include "NormalMap.h"
#include "PbrImport.h"
#include "ScriptedDialogs.h"

#include <gtest/gtest.h>

#include <QUndoStack>

using ProjectData = Velmor::ProjectData;

namespace {

const QString skipped = "Could not determine PBR purpose of image file, skipping.";

struct Layer
{
    std::string name;
    std::string texture;
    int mode;
    bool operator==(const Layer& o) const { return name == o.name && texture == o.texture && mode == o.mode; }
};

std::vector<Layer> layersOf(const RecordRef& surface)
{
    std::vector<Layer> layers;
    for (const auto& l : surface.surface()->layers)
        layers.push_back({l.name, l.texture ? l.texture->name : "", int(l.mode)});
    return layers;
}

} // namespace

TEST(PbrImport, LayersComeInPurposeOrderAndTheChooserIsAskedAfterTheSurfaceIsMade)
{
    QTemporaryDir files;
    ProjectDocument document;
    ScriptedDialogs dialogs;
    // Chooser order: normal first, then an unmatched name, case variants and
    // two files of the same purpose (the later one wins the slot).
    dialogs.files = {{writePng(files.path(), "wall_normal.png"), writePng(files.path(), "mynormal.png"),
                      writePng(files.path(), "wall_Color.png"), writePng(files.path(), "wall_color.png"),
                      writePng(files.path(), "rock_metal_rough.png"), writePng(files.path(), "wall_nor_ao.png"),
                      writePng(files.path(), "disp.png"), writePng(files.path(), "wall_diff_normal.png")}};
    LogCapture log;
    QString directory = "./Projects";
    const RecordRef surface = PbrImport::importWithChooser(document, dialogs, directory);

    EXPECT_EQ(dialogs.chooserTitles, QStringList({"Import PBR Images"}));
    EXPECT_EQ(dialogs.chooserStarts, QStringList({"./Projects"}));
    EXPECT_EQ(directory, files.path());
    ASSERT_EQ(surface.surface()->name, "NewSurface");
    int skips = 0;
    for (const auto& m : log.messages)
        skips += m.first == skipped && m.second == Warning;
    EXPECT_EQ(skips, 2); // mynormal, wall_Color
    EXPECT_EQ(document.store().textures.size(), 6u);
    const std::vector<Layer> expected = {{"color", "wall_color", 0},
                                         {"normal", "wall_diff_normal", 1},
                                         {"displacement", "disp", 2},
                                         {"metalness", "rock_metal_rough", 4},
                                         {"occlusion", "wall_nor_ao", 5}};
    EXPECT_EQ(layersOf(surface), expected);

    // Both normal files were converted, 8-bit: mapped, not flipped.
    for (const char* name : {"wall_normal", "wall_diff_normal"})
        for (const auto& t : document.store().textures)
            if (t->name == name) {
                EXPECT_EQ(t->image.format, Normal) << name;
                EXPECT_TRUE(t->image.mappedNormalXY && t->image.mappedNormalZ && !t->image.flipNormalX) << name;
            }

    // The whole import is one undo step.
    EXPECT_EQ(document.undoStack()->count(), 1);
    document.undoStack()->undo();
    EXPECT_TRUE(document.store().surfaces.empty() && document.store().textures.empty());
}

TEST(PbrImport, GreyNormalIsKeptUnconvertedAndACancelledChooserLeavesAnEmptySurface)
{
    QTemporaryDir files;
    ProjectDocument document;
    LogCapture log;
    const RecordRef surface = PbrImport::importFiles(document, {writePng(files.path(), "x_normal.png", true)});
    EXPECT_TRUE(log.contains(normalLayerImportWarning, Warning));
    ASSERT_EQ(layersOf(surface), std::vector<Layer>({{"normal", "x_normal", 1}}));
    EXPECT_EQ(surface.surface()->layers[0].texture->image.format, Gray);

    ScriptedDialogs dialogs;
    dialogs.files = {{}};
    QString directory;
    const RecordRef empty = PbrImport::importWithChooser(document, dialogs, directory);
    EXPECT_EQ(empty.surface()->name, "NewSurface_1");
    EXPECT_TRUE(empty.surface()->layers.empty());
    EXPECT_EQ(document.store().textures.size(), 1u);
}
