#pragma once

#include "RecordRef.h"

#include <QWidget>

class Dialogs;
class LayerList;
class ProjectDocument;
class PropertyForm;

// Properties of a plain surface: name, layers and mask. What steers a run
// (maps, seam repair, size, method) is on the GenerationPanel.
class SurfacePanel : public QWidget
{
    Q_OBJECT
public:
    SurfacePanel(ProjectDocument* document, Dialogs* dialogs, QWidget* parent = nullptr);

    void setSurface(Velmor::ProjectData::SurfaceData* surface);
    void refresh();

    LayerList* layerList() const { return layers; }

private:
    Velmor::ProjectData::SurfaceData* surface = nullptr;
    PropertyForm* form;
    LayerList* layers;
};
