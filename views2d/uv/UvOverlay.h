#pragma once

#include "MeshVertex.h"
#include "UvSpaceRenderer.h"

#include <QObject>
#include <QPointF>

#include <memory>
#include <vector>

class Image;
class Mesh;

// The generated view's UV tools: the current mesh, the layout and island
// selection switches, the "Auto mode", and the island-mask requests that
// wait for the view's next paint, where the OpenGL context is current and
// the island under the cursor is known. Writes go to the non-owning direction
// map and output mask images; each write is announced with a copy of the
// image from before, for the owner to turn into an undo step.
class UvOverlay : public QObject
{
    Q_OBJECT
public:
    explicit UvOverlay(QObject* parent = nullptr);

    void setMesh(Mesh* mesh);
    Mesh* mesh() const { return currentMesh; }
    void setLayoutVisible(bool on) { layoutVisible = on; }
    bool isLayoutVisible() const { return layoutVisible; }
    void setIslandSelection(bool on) { islandSelection = on; }
    bool isIslandSelection() const { return islandSelection; }
    // 0 .. 5, the rows of the "Auto mode" combo.
    void setAutoMode(int mode) { autoMode = mode; }
    int currentAutoMode() const { return autoMode; }
    void setDirectionMap(Image* image) { directionMap = image; }
    void setOutputMask(Image* image) { outputMask = image; }
    // Widget pixels (y down); outside the view the cursor picks nothing.
    void setCursor(QPointF position, bool inside);

    // "Load Output Mask from UV Island": the island under the cursor at the
    // next paint (all islands when selection is off).
    void requestIslandMask(bool add);
    // "Load Output Mask from ALL UV Island".
    void requestAllIslandsMask();
    bool hasPendingRequest() const { return pendingIsland || pendingAllIslands; }

    // From the view's paint routine, after the picture: picks the island,
    // draws the layout, then runs the pending requests. `combined` as for
    // UvSpaceRenderer; `viewSize` in device pixels, `pixelRatio` scales the
    // cursor to them.
    void paint(const QMatrix4x4& combined, QSize viewSize, qreal pixelRatio, const Image* generated);
    // The island under the cursor at the last paint, or -1.
    int pickedIsland() const { return picked; }

    // These three need the view's context current.
    bool generateAutoDirection();
    bool loadOutputMaskFromUVIsland(int island, bool add, const Image* generated);
    std::vector<MeshVertex> meshVertices();
    void releaseGL() { renderer.releaseGL(); }

    static QStringList autoModeNames();

signals:
    // `image` was written; `before` holds its pixels from before.
    void imageEdited(Image* image, std::shared_ptr<const Image> before, const QString& text);

private:
    UvSpaceRenderer renderer;
    Mesh* currentMesh = nullptr;
    Image* directionMap = nullptr;
    Image* outputMask = nullptr;
    bool layoutVisible = false;
    bool islandSelection = false;
    int autoMode = 0;
    QPointF cursor;
    bool cursorInside = false;
    int picked = -1;
    bool pendingIsland = false;
    bool pendingIslandAdd = false;
    bool pendingAllIslands = false;
};
