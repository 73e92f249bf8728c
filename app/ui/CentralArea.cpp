#include "CentralArea.h"

#include "PreviewArea.h"

#include <QLabel>

namespace {

QLabel* placeholder(const QString& title)
{
    auto* label = new QLabel(title);
    label->setObjectName(title);
    label->setAlignment(Qt::AlignCenter);
    label->setMinimumSize(160, 120);
    label->setFrameShape(QFrame::StyledPanel);
    label->setStyleSheet(QStringLiteral("QLabel { background: rgb(44, 46, 52); color: rgb(150, 150, 160); }"));
    return label;
}

} // namespace

CentralArea::CentralArea(ProjectDocument* document, QWidget* parent)
    : QSplitter(Qt::Vertical, parent)
    , input(placeholder(tr("Input View")))
    , generated(placeholder(tr("Generated View")))
    , preview(new PreviewArea(document))
{
    auto* views2d = new QSplitter(Qt::Horizontal);
    views2d->addWidget(input);
    views2d->addWidget(generated);
    addWidget(views2d);
    addWidget(preview);
    setStretchFactor(0, 3);
    setStretchFactor(1, 2);
}
