#pragma once

#include "ProjectData.h"

#include <QWidget>

class Preview2DExtended;
class ProjectDocument;
class QCheckBox;
class QComboBox;
class QLabel;
class RecordRef;

// The generated view with its bar: the output of the last selected surface,
// one layer at a time, with the output mask (the project mask), the
// direction arrows and the scale circles of the surface's maps as overlays.
class GeneratedViewPane : public QWidget
{
    Q_OBJECT
public:
    explicit GeneratedViewPane(ProjectDocument* document, QWidget* parent = nullptr);

    Preview2DExtended* view() const { return preview; }
    Velmor::ProjectData::SurfaceData* surface() const { return shownSurface; }
    QComboBox* layerChooser() const { return chooser; }

public slots:
    // Surfaces become the shown one; other records change nothing.
    void showRecord(const RecordRef& record);
    // Finds the output and the maps again and re-uploads them.
    void refresh();
    // The overlay images only: after painting a map or the mask.
    void refreshOverlays();

signals:
    // Position and value under the cursor; empty when it leaves.
    void readoutChanged(const QString& text);

private:
    void showLayer();
    void forget();

    ProjectDocument* document;
    Velmor::ProjectData::SurfaceData* shownSurface = nullptr;
    Preview2DExtended* preview;
    QComboBox* chooser;
    QCheckBox* maskOverlay;
    QCheckBox* directionOverlay;
    QCheckBox* scaleOverlay;
    QCheckBox* normalise;
    QLabel* sizeLabel;
};
