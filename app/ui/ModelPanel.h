#pragma once

#include "ProjectData.h"

#include <QWidget>

class ProjectDocument;
class PropertyForm;

// Properties of a model: name, mesh file, rotation and scale.
class ModelPanel : public QWidget
{
    Q_OBJECT
public:
    explicit ModelPanel(ProjectDocument* document, QWidget* parent = nullptr);

    void setModel(Velmor::ProjectData::ModelData* model);
    void refresh();

private:
    Velmor::ProjectData::ModelData* model = nullptr;
    PropertyForm* form;
};
