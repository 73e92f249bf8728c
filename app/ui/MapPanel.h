#pragma once

#include "RecordRef.h"

#include <QWidget>

class ProjectDocument;
class PropertyForm;
class QDoubleSpinBox;
class QSpinBox;

// Properties of a direction map or a scale map: name, size (resize) and a
// fill with one direction (an angle in the image plane) or one scale value.
class MapPanel : public QWidget
{
    Q_OBJECT
public:
    explicit MapPanel(ProjectDocument* document, QWidget* parent = nullptr);

    // A direction map or a scale map record.
    void setMap(const RecordRef& map);
    void refresh();

private:
    void resize();
    void fill();

    ProjectDocument* document;
    RecordRef map;
    PropertyForm* form;
    QSpinBox* width;
    QSpinBox* height;
    QDoubleSpinBox* fillValue;
};
