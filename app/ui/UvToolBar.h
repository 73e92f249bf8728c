#pragma once

#include "ProjectData.h"

#include <QWidget>

class Preview2DExtended;
class ProjectDocument;
class QAction;
class QComboBox;
class QToolBar;

// The generated view's UV tools: the layout and island selection switches,
// island masks, the direction map from the mesh's geometry with its
// "Auto mode", and seam fixing on the shown surface's output, in two rows so
// that they fit beside each other in a narrow view. Every change to a map is
// one undo step; nothing is written while a run reads the store.
class UvToolBar : public QWidget
{
    Q_OBJECT
public:
    UvToolBar(ProjectDocument* document, Preview2DExtended* view, QWidget* parent = nullptr);

    // The surface whose direction map and output the tools work on.
    void setSurface(Velmor::ProjectData::SurfaceData* surface);
    // Lets go of every image (before the project or surface goes away).
    void forget();

    QAction* layoutAction() const { return showLayout; }
    QAction* islandSelectionAction() const { return islandSelection; }
    QAction* islandMaskAction() const { return islandMask; }
    QAction* allIslandsMaskAction() const { return allIslandsMask; }
    QAction* autoDirectionAction() const { return autoDirection; }
    QAction* fixSeamsAction() const { return fixSeams; }
    QComboBox* autoModeChooser() const { return autoMode; }

private:
    void updateTargets();

    ProjectDocument* document;
    Preview2DExtended* view;
    Velmor::ProjectData::SurfaceData* surface = nullptr;
    QAction* showLayout;
    QAction* islandSelection;
    QAction* addToMask;
    QAction* islandMask;
    QAction* allIslandsMask;
    QComboBox* autoMode;
    QAction* autoDirection;
    QAction* fixSeams;
};
