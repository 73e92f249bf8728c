#include "CentralArea.h"

#include "GeneratedViewPane.h"
#include "InputViewPane.h"
#include "PreviewArea.h"

CentralArea::CentralArea(ProjectDocument* document, QWidget* parent)
    : QSplitter(Qt::Vertical, parent)
    , input(new InputViewPane(document))
    , generated(new GeneratedViewPane(document))
    , preview(new PreviewArea(document))
{
    auto* views2d = new QSplitter(Qt::Horizontal);
    views2d->addWidget(input);
    views2d->addWidget(generated);
    addWidget(views2d);
    addWidget(preview);
    setStretchFactor(0, 3);
    setStretchFactor(1, 2);
    // The first layout shares the height in the same proportion.
    setSizes({3000, 2000});
    connect(input, &InputViewPane::readoutChanged, this, &CentralArea::readoutChanged);
    connect(generated, &GeneratedViewPane::readoutChanged, this, &CentralArea::readoutChanged);
}

Preview2D* CentralArea::inputView() const
{
    return input->view();
}

Preview2DExtended* CentralArea::generatedView() const
{
    return generated->view();
}

void CentralArea::showRecord(const RecordRef& record)
{
    input->showRecord(record);
    generated->showRecord(record);
    preview->showRecord(record);
}

void CentralArea::refreshViews()
{
    input->refresh();
    generated->refresh();
}
