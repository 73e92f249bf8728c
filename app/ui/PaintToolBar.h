#pragma once

#include "PaintToolBox.h"

#include <QToolBar>

class QAction;
class QActionGroup;
class QComboBox;
class QDoubleSpinBox;

// Chooses the painting tool and sets what it paints with. Shows only the
// controls the chosen tool reads; disabled while a run uses the project.
class PaintToolBar : public QToolBar
{
    Q_OBJECT
public:
    explicit PaintToolBar(PaintToolBox* tools, QWidget* parent = nullptr);

    // The checkable action that makes `tool` the active one.
    QAction* toolAction(PaintToolBox::Tool tool) const;

private:
    QAction* addControl(const QString& label, QWidget* control);
    void showSettings();
    void showControlsFor(PaintToolBox::Tool tool);

    PaintToolBox* tools;
    QActionGroup* toolGroup;
    QDoubleSpinBox* radius;
    QDoubleSpinBox* strength;
    QDoubleSpinBox* hardness;
    QDoubleSpinBox* scale;
    QDoubleSpinBox* direction;
    QComboBox* maskMode;
    QComboBox* fillMode;
    QComboBox* targetMap;
    QAction* radiusControl;
    QAction* strengthControl;
    QAction* hardnessControl;
    QAction* scaleControl;
    QAction* directionControl;
    QAction* maskModeControl;
    QAction* fillModeControl;
    QAction* targetMapControl;
};
