#include "ImageEditCommand.h"
#include "ProjectDocument.h"

#include <gtest/gtest.h>

#include <QUndoStack>

#include <cstring>
#include <limits>
#include <vector>

using ProjectData = Velmor::ProjectData;

namespace {

bool samePixels(const Image& a, const Image& b)
{
    return a.width == b.width && a.height == b.height && a.format == b.format
           && std::memcmp(a.data, b.data, a.floatCount() * sizeof(float)) == 0;
}

// Every float different, so that a tile swapped into the wrong place shows.
void fillDistinct(Image& image)
{
    for (uint64_t i = 0; i < image.floatCount(); ++i)
        image.data[i] = float(i) * 0.001f;
}

struct ChangeCounter
{
    explicit ChangeCounter(ProjectDocument& document)
    {
        QObject::connect(&document, &ProjectDocument::recordChanged,
                         [this](const RecordRef& record) { changed.push_back(record); });
    }
    std::vector<RecordRef> changed;
};

} // namespace

// Edits in three tiles of an image whose size is no multiple of the tile
// size: only those tiles are kept, and undo and redo give back every pixel.
TEST(ImageEditCommand, KeepsOnlyChangedTilesAndRestoresEveryPixel)
{
    ProjectDocument document;
    ProjectData::DirectionMapData* map = document.store().addDirectionMap();
    map->image.allocate(200, 130, RGB);
    fillDistinct(map->image);
    const Image before = map->image;

    map->image.pixelAt(0, 0)[0] = -5.0f;
    map->image.pixelAt(199, 129)[2] = 7.0f; // the clipped corner tile
    map->image.pixelAt(64, 64)[1] = 3.0f;
    const Image after = map->image;

    ChangeCounter counter(document);
    auto* command = new ImageEditCommand(&document, RecordRef(map), &map->image, before, "Paint");
    EXPECT_FALSE(command->isEmpty());
    EXPECT_EQ(command->tileCount(), 3);
    ASSERT_TRUE(document.push(command));
    EXPECT_TRUE(samePixels(map->image, after)) << "the push must not undo the edit";
    EXPECT_TRUE(document.isModified());

    document.undoStack()->undo();
    EXPECT_TRUE(samePixels(map->image, before));
    document.undoStack()->redo();
    EXPECT_TRUE(samePixels(map->image, after));
    document.undoStack()->undo();
    EXPECT_TRUE(samePixels(map->image, before));

    ASSERT_EQ(counter.changed.size(), 4u);
    for (const RecordRef& record : counter.changed)
        EXPECT_EQ(record, RecordRef(map));
}

TEST(ImageEditCommand, UnchangedImageGivesAnEmptyCommand)
{
    ProjectDocument document;
    ProjectData::ScaleMapData* map = document.store().addScaleMap();
    const Image before = map->image;
    ImageEditCommand same(&document, RecordRef(map), &map->image, before, "Paint");
    EXPECT_TRUE(same.isEmpty());
    EXPECT_EQ(same.tileCount(), 0);

    // NaN over NaN is no change either.
    map->image.data[0] = std::numeric_limits<float>::quiet_NaN();
    const Image nan = map->image;
    ImageEditCommand nanOverNan(&document, RecordRef(map), &map->image, nan, "Paint");
    EXPECT_TRUE(nanOverNan.isEmpty());
}

// An edit that resized the image is swapped whole.
TEST(ImageEditCommand, ResizedImageUndoesToItsOldSize)
{
    ProjectDocument document;
    Image& mask = document.store().projectMask;
    const Image before = mask;
    mask.resample(40, 30);
    mask.pixelAt(3, 3)[0] = 0.25f;
    const Image after = mask;

    ASSERT_TRUE(document.push(
        new ImageEditCommand(&document, RecordRef::projectMask(document.store()), &mask, before, "Resize")));
    document.undoStack()->undo();
    EXPECT_TRUE(samePixels(mask, before));
    document.undoStack()->redo();
    EXPECT_TRUE(samePixels(mask, after));
}

TEST(ImageEditCommand, RefusedWhileReadOnly)
{
    ProjectDocument document;
    ProjectData::ScaleMapData* map = document.store().addScaleMap();
    const Image before = map->image;
    map->image.pixelAt(1, 1)[0] = 0.0f;
    document.setReadOnly(true);
    EXPECT_FALSE(document.push(new ImageEditCommand(&document, RecordRef(map), &map->image, before, "Paint")));
    EXPECT_EQ(document.undoStack()->count(), 0);
}

TEST(ImageEditCommand, ProjectMaskIsARecordOfItsOwn)
{
    ProjectDocument document;
    const RecordRef mask = RecordRef::projectMask(document.store());
    EXPECT_EQ(mask.kind, RecordKind::ProjectMask);
    EXPECT_EQ(mask.image(), &document.store().projectMask);
    EXPECT_EQ(mask.name(), "Project Mask");
    EXPECT_EQ(mask.directionMap(), nullptr);
    EXPECT_NE(mask, RecordRef());
}
