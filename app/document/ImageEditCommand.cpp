#include "ImageEditCommand.h"

#include "ProjectDocument.h"

#include <algorithm>
#include <cstring>
#include <utility>

ImageEditCommand::ImageEditCommand(ProjectDocument* document, const RecordRef& owner, Image* image,
                                   const Image& before, const QString& text, QUndoCommand* parent)
    : QUndoCommand(text, parent)
    , document(document)
    , owner(owner)
    , image(image)
{
    if (!image)
        return;
    shapeWidth = image->width;
    shapeHeight = image->height;
    shapeFormat = image->format;
    const bool sameShape = before.width == image->width && before.height == image->height
                           && before.format == image->format && before.isEmpty() == image->isEmpty();
    if (sameShape)
        keepChangedTiles(before);
    else
        wholeImage = std::make_unique<Image>(before);
}

ImageEditCommand::~ImageEditCommand() = default;

void ImageEditCommand::redo()
{
    // The edit is already in the image when the command is pushed.
    if (firstRedo)
        firstRedo = false;
    else
        swap();
    document->notifyChanged(owner);
}

void ImageEditCommand::undo()
{
    swap();
    document->notifyChanged(owner);
}

void ImageEditCommand::keepChangedTiles(const Image& before)
{
    if (image->isEmpty())
        return;
    const size_t channels = image->channels();
    for (uint32_t y0 = 0; y0 < image->height; y0 += tileSize)
        for (uint32_t x0 = 0; x0 < image->width; x0 += tileSize) {
            const uint32_t w = std::min(tileSize, image->width - x0);
            const uint32_t h = std::min(tileSize, image->height - y0);
            const size_t rowFloats = channels * w;
            auto offset = [&](uint32_t row) { return channels * (size_t(x0) + size_t(image->width) * (y0 + row)); };
            // Bitwise comparison: a NaN written over a NaN is no change.
            bool changed = false;
            for (uint32_t row = 0; row < h && !changed; ++row)
                changed = std::memcmp(before.data + offset(row), image->data + offset(row),
                                      rowFloats * sizeof(float)) != 0;
            if (!changed)
                continue;
            Tile tile{x0, y0, w, h, std::vector<float>(rowFloats * h)};
            for (uint32_t row = 0; row < h; ++row)
                std::copy_n(before.data + offset(row), rowFloats, tile.pixels.data() + rowFloats * row);
            tiles.push_back(std::move(tile));
        }
}

void ImageEditCommand::swap()
{
    if (wholeImage) {
        std::swap(*image, *wholeImage);
        return;
    }
    // Tiles only fit the image they were cut from; an image resized behind
    // the undo stack's back is left alone rather than written out of bounds.
    if (image->width != shapeWidth || image->height != shapeHeight || image->format != shapeFormat
        || image->isEmpty())
        return;
    const size_t channels = image->channels();
    for (Tile& tile : tiles) {
        const size_t rowFloats = channels * tile.width;
        for (uint32_t row = 0; row < tile.height; ++row) {
            float* pixels = image->data + channels * (size_t(tile.x) + size_t(image->width) * (tile.y + row));
            std::swap_ranges(pixels, pixels + rowFloats, tile.pixels.data() + rowFloats * row);
        }
    }
}
