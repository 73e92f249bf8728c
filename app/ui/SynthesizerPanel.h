#pragma once

#include "ProjectData.h"

#include <QWidget>

class ProjectDocument;
class PropertyForm;
class QComboBox;

// The synthesizer parameters of a surface: the method (one of the surface's
// two parameter sets) and the patch fields of the current set (the output
// size and similarity mode are on the GenerationPanel). Values the engine
// would refuse are kept as entered and flagged beside the field.
class SynthesizerPanel : public QWidget
{
    Q_OBJECT
public:
    explicit SynthesizerPanel(ProjectDocument* document, QWidget* parent = nullptr);

    void setSurface(Velmor::ProjectData::SurfaceData* surface);
    void refresh();

    QComboBox* methodChoice() const { return method; }

private:
    Velmor::ProjectData::SurfaceData* surface = nullptr;
    PropertyForm* form;
    QComboBox* method;
};
