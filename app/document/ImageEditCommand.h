#pragma once

#include "Image.h"
#include "RecordRef.h"

#include <QUndoCommand>

#include <cstdint>
#include <memory>
#include <vector>

class ProjectDocument;

// One edit of a record's pixels (a paint stroke, a fill, a map generated
// from a mesh), kept as the tiles that differ rather than the whole image.
// Made after the edit: `image` holds the new pixels and `before` a copy taken
// before the edit. The first redo (the push) leaves the pixels alone; later
// undos and redos swap the kept tiles with the image's.
//
// Check ProjectDocument::isReadOnly before editing: a refused push leaves
// the image as edited. An edit that changed no pixel gives an empty command,
// not worth pushing.
class ImageEditCommand : public QUndoCommand
{
public:
    static constexpr uint32_t tileSize = 64;

    ImageEditCommand(ProjectDocument* document, const RecordRef& owner, Image* image, const Image& before,
                     const QString& text, QUndoCommand* parent = nullptr);
    ~ImageEditCommand() override;

    void redo() override;
    void undo() override;

    bool isEmpty() const { return tiles.empty() && !wholeImage; }
    // Tiles kept; the whole image counts as one when its size or format changed.
    int tileCount() const { return wholeImage ? 1 : int(tiles.size()); }

private:
    // The other state of one tile: its pixels row by row, all channels.
    struct Tile
    {
        uint32_t x = 0;
        uint32_t y = 0;
        uint32_t width = 0;
        uint32_t height = 0;
        std::vector<float> pixels;
    };

    void keepChangedTiles(const Image& before);
    void swap();

    ProjectDocument* document;
    RecordRef owner;
    Image* image;
    uint32_t shapeWidth = 0;
    uint32_t shapeHeight = 0;
    PixelFormat shapeFormat = None;
    std::vector<Tile> tiles;
    // The image before the edit, when it changed size or format: swapped whole.
    std::unique_ptr<Image> wholeImage;
    bool firstRedo = true;
};
