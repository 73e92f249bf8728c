#pragma once

#include <QString>

class QHBoxLayout;
class QPushButton;
class QWidget;

// The strip above a 2D view: a row of controls ending in the 1:1 and fit
// buttons, which get the object names `prefix` + "Zoom11" and "ZoomFit".
struct ViewBar
{
    QHBoxLayout* row = nullptr;
    QPushButton* zoomOneToOne = nullptr;
    QPushButton* zoomToFit = nullptr;
};

// Lays out `bar` over `view` in `pane`; the caller adds its controls to the
// row (before the zoom buttons) with insertWidget.
ViewBar makeViewBar(QWidget* pane, QWidget* view, const QString& prefix);
