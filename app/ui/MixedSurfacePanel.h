#pragma once

#include "ProjectData.h"

#include <QWidget>

class ProjectDocument;
class PropertyForm;

// Properties of a mixed surface: its white and black surfaces, the mask
// texture and channel, and the synthesize, tile and freeze flags.
class MixedSurfacePanel : public QWidget
{
    Q_OBJECT
public:
    explicit MixedSurfacePanel(ProjectDocument* document, QWidget* parent = nullptr);

    void setSurface(Velmor::ProjectData::MixedSurfaceData* surface);
    void refresh();

private:
    Velmor::ProjectData::MixedSurfaceData* surface = nullptr;
    PropertyForm* form;
};
