#include "ViewBar.h"

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
