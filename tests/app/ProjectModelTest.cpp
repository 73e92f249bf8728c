#include "ProjectModel.h"
#include "DocumentTestSupport.h"
#include "PbrImport.h"
#include "ProjectEdits.h"
#include "ProjectFlows.h"
#include "ScriptedDialogs.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>
#include <QUndoStack>
#include <QUrl>

namespace {

QStringList rowNames(const ProjectModel& model, ProjectModel::Group group)
{
    QStringList names;
    const QModelIndex parent = model.groupIndex(group);
    for (int row = 0; row < model.rowCount(parent); ++row)
        names << model.index(row, 0, parent).data().toString();
    return names;
}

} // namespace

// The tester checks every signal and index the model gives while the
// project grows, shrinks, is undone and replaced.
TEST(ProjectModel, FollowsEveryEditUndoAndReplacementConsistently)
{
    QTemporaryDir files;
    ProjectDocument document;
    ProjectModel model(&document);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);

    ASSERT_EQ(model.rowCount(), 4);
    EXPECT_EQ(model.index(0, 0).data().toString(), "Surfaces");
    EXPECT_EQ(model.index(1, 0).data().toString(), "Textures");
    EXPECT_EQ(model.index(2, 0).data().toString(), "Utility Maps");
    EXPECT_EQ(model.index(3, 0).data().toString(), "Models");

    // Views learn of new rows only through the signals.
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    ProjectEdits::newScaleMap(document);
    ProjectEdits::newDirectionMap(document); // goes before the scale map
    ProjectEdits::newDirectionMap(document);
    ProjectEdits::newMixedSurface(document);
    PbrImport::importFiles(document, {writePng(files.path(), "s_color.png"), writePng(files.path(), "s_ao.png")});
    ProjectEdits::importModels(document, {files.path() + "/m.obj"});
    EXPECT_EQ(inserted.count(), 8);
    EXPECT_EQ(inserted.at(1).at(1).toInt(), 0); // the first direction map's row
    EXPECT_EQ(rowNames(model, ProjectModel::UtilityMapsGroup), QStringList({"DirMap", "DirMap_1", "ScaleMap"}));
    EXPECT_EQ(rowNames(model, ProjectModel::SurfacesGroup), QStringList({"NewMixedSurface", "NewSurface"}));
    EXPECT_EQ(rowNames(model, ProjectModel::TexturesGroup), QStringList({"s_color", "s_ao"}));

    // Rename in place goes through the undo stack; duplicates land after their original.
    const QModelIndex texture = model.index(0, 0, model.groupIndex(ProjectModel::TexturesGroup));
    EXPECT_TRUE(model.flags(texture) & Qt::ItemIsEditable);
    EXPECT_TRUE(model.setData(texture, "s_ao"));
    EXPECT_EQ(texture.data().toString(), "s_ao_1");
    ProjectEdits::duplicate(document, model.recordAt(texture));
    ProjectEdits::remove(document, model.recordAt(model.index(1, 0, model.groupIndex(ProjectModel::UtilityMapsGroup))));
    EXPECT_EQ(rowNames(model, ProjectModel::TexturesGroup), QStringList({"s_ao_1", "s_ao_1_1", "s_ao"}));
    EXPECT_EQ(rowNames(model, ProjectModel::UtilityMapsGroup), QStringList({"DirMap", "ScaleMap"}));
    EXPECT_EQ(model.indexOf(model.recordAt(texture)), texture);

    while (document.undoStack()->canUndo())
        document.undoStack()->undo();
    for (int g = 0; g < ProjectModel::GroupCount; ++g)
        EXPECT_EQ(model.rowCount(model.groupIndex(ProjectModel::Group(g))), 0);
    while (document.undoStack()->canRedo())
        document.undoStack()->redo();
    EXPECT_EQ(rowNames(model, ProjectModel::TexturesGroup), QStringList({"s_ao_1", "s_ao_1_1", "s_ao"}));

    // Thumbnails for textures and maps, kind icons for the rest.
    EXPECT_FALSE(texture.data(Qt::DecorationRole).value<QIcon>().isNull());
    EXPECT_FALSE(model.index(0, 0, model.groupIndex(ProjectModel::ModelsGroup))
                     .data(Qt::DecorationRole)
                     .value<QIcon>()
                     .isNull());

    document.replaceProject(std::make_unique<Velmor::ProjectData>(), QString());
    EXPECT_EQ(model.rowCount(model.groupIndex(ProjectModel::TexturesGroup)), 0);
}

TEST(ProjectModel, DroppedImagesBecomeTexturesOrOneSurfaceOnTheSurfacesGroup)
{
    QTemporaryDir files;
    ProjectDocument document;
    ProjectModel model(&document);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(writePng(files.path(), "d_color.png")),
                  QUrl::fromLocalFile(writePng(files.path(), "d_normal.png")),
                  QUrl::fromLocalFile(files.path() + "/notes.txt")});
    const QModelIndex surfaces = model.groupIndex(ProjectModel::SurfacesGroup);
    ASSERT_TRUE(model.canDropMimeData(&data, Qt::CopyAction, -1, -1, surfaces));
    ASSERT_TRUE(model.dropMimeData(&data, Qt::CopyAction, -1, -1, surfaces));
    ASSERT_EQ(document.store().surfaces.size(), 1u);
    EXPECT_EQ(document.store().surfaces[0]->layers.size(), 2u);

    model.dropMimeData(&data, Qt::CopyAction, -1, -1, model.groupIndex(ProjectModel::TexturesGroup));
    EXPECT_EQ(document.store().surfaces.size(), 1u);
    EXPECT_EQ(document.store().textures.size(), 4u);
    EXPECT_EQ(document.undoStack()->count(), 2);

    QMimeData text;
    text.setUrls({QUrl::fromLocalFile(files.path() + "/notes.txt")});
    EXPECT_FALSE(model.canDropMimeData(&text, Qt::CopyAction, -1, -1, surfaces));
}

TEST(ProjectModel, TexturesThatFailedToLoadAreMarkedWithTheReason)
{
    QTemporaryDir files;
    ProjectDocument document;
    ProjectModel model(&document);
    QFile broken(files.path() + "/broken.png");
    broken.open(QIODevice::WriteOnly);
    broken.write("not a png");
    broken.close();
    ProjectEdits::importImages(document,
                               {files.path() + "/missing.png", broken.fileName(), writePng(files.path(), "ok.png")});
    const QModelIndex group = model.groupIndex(ProjectModel::TexturesGroup);
    EXPECT_TRUE(model.index(0, 0, group).data(Qt::ToolTipRole).toString().startsWith("Image file not found: "));
    EXPECT_TRUE(model.index(1, 0, group).data(Qt::ToolTipRole).toString().startsWith("Image file could not be read"));
    EXPECT_EQ(model.index(2, 0, group).data(Qt::ToolTipRole).toString(), files.path() + "/ok.png");
    EXPECT_TRUE(model.index(0, 0, group).data(Qt::ForegroundRole).isValid());
    EXPECT_FALSE(model.index(2, 0, group).data(Qt::ForegroundRole).isValid());
}
