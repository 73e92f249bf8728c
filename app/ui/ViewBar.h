#pragma once

#include <QString>

class QCheckBox;
class QHBoxLayout;
class QPushButton;
class QWidget;

// The strip above a 2D view: a row of controls ending in the normalise
// switch and the 1:1 and fit buttons, which get the object names `prefix` +
// "Normalise", "Zoom11" and "ZoomFit".
struct ViewBar
{
    QHBoxLayout* row = nullptr;
    QCheckBox* normalise = nullptr;
    QPushButton* zoomOneToOne = nullptr;
    QPushButton* zoomToFit = nullptr;
};

// Lays out the bar over `view` in `pane`; the caller adds its controls to the
// front of the row with insertWidget.
ViewBar makeViewBar(QWidget* pane, QWidget* view, const QString& prefix);
