#include "UvOverlay.h"

#include "Image.h"
#include "MeshReadback.h"

#include <QMatrix4x4>

UvOverlay::UvOverlay(QObject* parent)
    : QObject(parent)
{
}

QStringList UvOverlay::autoModeNames()
{
    return {tr("Triangle Orientation 1"), tr("Triangle Orientation 2"), tr("Triangle Orientation 3"),
            tr("World X"), tr("World Y"), tr("World Z")};
}

void UvOverlay::setMesh(Mesh* mesh)
{
    currentMesh = mesh;
    if (!mesh)
        picked = -1;
}

void UvOverlay::setCursor(QPointF position, bool inside)
{
    cursor = position;
    cursorInside = inside;
}

void UvOverlay::requestIslandMask(bool add)
{
    pendingIsland = true;
    pendingIslandAdd = add;
}

void UvOverlay::requestAllIslandsMask()
{
    pendingAllIslands = true;
}

void UvOverlay::paint(const QMatrix4x4& combined, QSize viewSize, qreal pixelRatio, const Image* generated)
{
    picked = -1;
    if (currentMesh && islandSelection && cursorInside)
        picked = renderer.pickIsland(currentMesh, combined, viewSize, cursor * pixelRatio);
    if (currentMesh && (layoutVisible || islandSelection))
        renderer.drawUvLayout(currentMesh, combined, islandSelection, picked);

    // Each flag goes down before its request runs.
    if (pendingIsland) {
        pendingIsland = false;
        loadOutputMaskFromUVIsland(picked, pendingIslandAdd, generated);
    }
    if (pendingAllIslands) {
        pendingAllIslands = false;
        loadOutputMaskFromUVIsland(-1, false, generated);
    }
}

bool UvOverlay::generateAutoDirection()
{
    if (!directionMap || !currentMesh)
        return false;
    auto before = std::make_shared<const Image>(*directionMap);
    if (!renderer.generateAutoDirection(currentMesh, directionMap, autoMode))
        return false;
    emit imageEdited(directionMap, before, tr("Auto Generate Direction Map from Geometry Normals"));
    return true;
}

bool UvOverlay::loadOutputMaskFromUVIsland(int island, bool add, const Image* generated)
{
    if (!outputMask || !currentMesh)
        return false;
    auto before = std::make_shared<const Image>(*outputMask);
    if (!renderer.loadOutputMaskFromUVIsland(currentMesh, outputMask, generated, island, add))
        return false;
    emit imageEdited(outputMask, before,
                     island < 0 ? tr("Load Output Mask from ALL UV Island") : tr("Load Output Mask from UV Island"));
    return true;
}

std::vector<MeshVertex> UvOverlay::meshVertices()
{
    return currentMesh ? readMeshVertices(*currentMesh) : std::vector<MeshVertex>();
}
