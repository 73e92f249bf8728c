#include "ViewBar.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

ViewBar makeViewBar(QWidget* pane, QWidget* view, const QString& prefix)
{
    ViewBar bar;
    auto* column = new QVBoxLayout(pane);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    bar.row = new QHBoxLayout;
    bar.row->setContentsMargins(4, 2, 4, 0);
    bar.normalise = new QCheckBox(QObject::tr("Normalise"));
    bar.normalise->setObjectName(prefix + QStringLiteral("Normalise"));
    bar.normalise->setToolTip(
        QObject::tr("Stretch the values from their minimum to their maximum, for float images outside 0..1 and "
                    "faint 16-bit images, and show vectors stored as -1..1 (direction maps) as 0..1. "
                    "Otherwise values outside 0..1 are clamped."));
    bar.row->addWidget(bar.normalise);
    bar.zoomOneToOne = new QPushButton(QObject::tr("1:1"));
    bar.zoomOneToOne->setObjectName(prefix + QStringLiteral("Zoom11"));
    bar.zoomOneToOne->setToolTip(QObject::tr("One image pixel on one screen pixel"));
    bar.zoomToFit = new QPushButton(QObject::tr("Fit"));
    bar.zoomToFit->setObjectName(prefix + QStringLiteral("ZoomFit"));
    bar.zoomToFit->setToolTip(QObject::tr("Fit the image into the view"));
    for (QPushButton* button : {bar.zoomOneToOne, bar.zoomToFit}) {
        button->setMaximumWidth(48);
        bar.row->addWidget(button);
    }
    column->addLayout(bar.row);
    column->addWidget(view, 1);
    return bar;
}
