#include "GeneratedViewPane.h"

#include "PixelReadout.h"
#include "Preview2DExtended.h"
#include "ProjectDocument.h"
#include "RecordRef.h"
#include "ViewBar.h"
#include "UvToolBar.h"
#include "ViewSources.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using Velmor::ProjectData;

GeneratedViewPane::GeneratedViewPane(ProjectDocument* document, QWidget* parent)
    : QWidget(parent)
    , document(document)
    , preview(new Preview2DExtended)
    , chooser(new QComboBox)
    , maskOverlay(new QCheckBox(tr("Mask")))
    , directionOverlay(new QCheckBox(tr("Directions")))
    , scaleOverlay(new QCheckBox(tr("Scales")))
    , sizeLabel(new QLabel)
    , uvBar(new UvToolBar(document, preview))
{
    preview->setObjectName(QStringLiteral("GeneratedView"));
    preview->setLabelText(tr("Generated"));
    chooser->setObjectName(QStringLiteral("GeneratedLayer"));
    chooser->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    chooser->setMinimumContentsLength(8);
    chooser->setToolTip(tr("The output layer to show"));
    maskOverlay->setObjectName(QStringLiteral("GeneratedMaskOverlay"));
    maskOverlay->setToolTip(tr("Tint by the output mask: lightly where it is set, strongly where it is not"));
    directionOverlay->setObjectName(QStringLiteral("GeneratedDirectionOverlay"));
    directionOverlay->setToolTip(tr("Arrows of the surface's direction map"));
    scaleOverlay->setObjectName(QStringLiteral("GeneratedScaleOverlay"));
    scaleOverlay->setToolTip(tr("Circles of the surface's scale map"));

    const ViewBar bar = makeViewBar(this, preview, QStringLiteral("Generated"));
    bar.row->insertWidget(0, chooser, 1);
    bar.row->insertWidget(1, sizeLabel);
    // The overlay switches and the UV tools sit in rows of their own between
    // the bar and the view, so that the pane stays narrow enough to leave the
    // properties dock its width.
    auto* overlays = new QHBoxLayout;
    overlays->setContentsMargins(4, 0, 4, 0);
    overlays->addWidget(new QLabel(tr("Show:")));
    for (QWidget* control : {static_cast<QWidget*>(maskOverlay), static_cast<QWidget*>(directionOverlay),
                             static_cast<QWidget*>(scaleOverlay)})
        overlays->addWidget(control);
    overlays->addStretch(1);
    if (auto* column = qobject_cast<QVBoxLayout*>(layout())) {
        column->insertLayout(1, overlays);
        column->insertWidget(2, uvBar);
    }
    connect(bar.zoomOneToOne, &QPushButton::clicked, preview, &Preview2D::zoomOneToOne);
    connect(bar.zoomToFit, &QPushButton::clicked, preview, &Preview2D::zoomToFit);
    connect(bar.normalise, &QCheckBox::toggled, preview, &Preview2D::setNormalise);
    connect(maskOverlay, &QCheckBox::toggled, preview, &Preview2DExtended::setMaskVisible);
    connect(directionOverlay, &QCheckBox::toggled, preview, &Preview2DExtended::setDirectionsVisible);
    connect(scaleOverlay, &QCheckBox::toggled, preview, &Preview2DExtended::setScalesVisible);
    connect(chooser, QOverload<int>::of(&QComboBox::activated), this, &GeneratedViewPane::showLayer);

    connect(preview, &Preview2D::hovered, this, [this](QPointF texture) {
        const Image* image = preview->image();
        const QString value = image ? pixelReadout(*image, texture) : QString();
        emit readoutChanged(value.isEmpty() ? QString() : tr("Generated: %1").arg(value));
    });
    connect(preview, &Preview2D::cursorLeft, this, [this] { emit readoutChanged(QString()); });

    // The shown images belong to records: let go of them before they go.
    connect(document, &ProjectDocument::projectAboutToBeReplaced, this, [this] {
        shownSurface = nullptr;
        uvBar->forget();
        forget();
    });
    connect(document, &ProjectDocument::recordAboutToBeRemoved, this, [this](const RecordRef& removed) {
        if (removed.surface() && removed.surface() == shownSurface)
            shownSurface = nullptr;
        uvBar->forget();
        forget();
    });
    connect(document, &ProjectDocument::recordRemoved, this, &GeneratedViewPane::refresh);
    connect(document, &ProjectDocument::recordChanged, this, [this](const RecordRef& changed) {
        if (changed.surface() && changed.surface() == shownSurface)
            refresh();
        else if (changed.directionMap() || changed.scaleMap() || changed.mask())
            refreshOverlays();
    });
    // A run may replace the output's images when it starts: hold no pointer
    // into them until its first progress report refreshes the view.
    connect(document, &ProjectDocument::readOnlyChanged, this, [this](bool running) {
        if (running)
            preview->setImage(nullptr);
        else
            refresh();
    });
    refresh();
}

void GeneratedViewPane::showRecord(const RecordRef& record)
{
    ProjectData::SurfaceData* surface = record.surface();
    if (!surface || surface == shownSurface)
        return;
    shownSurface = surface;
    chooser->clear();
    refresh();
    // A new picture starts whole.
    preview->zoomToFit();
}

void GeneratedViewPane::refresh()
{
    const QString previous = chooser->currentText();
    const QSignalBlocker blocker(chooser);
    chooser->clear();
    for (const std::string& name : ViewSources::outputLayerNames(shownSurface))
        chooser->addItem(QString::fromStdString(name));
    chooser->setCurrentIndex(std::max(chooser->findText(previous), 0));
    chooser->setEnabled(chooser->count() > 0);
    showLayer();
    refreshOverlays();
    uvBar->setSurface(shownSurface);
}

void GeneratedViewPane::refreshOverlays()
{
    const Image* mask = shownSurface ? &document->store().projectMask : nullptr;
    const Image* directions = shownSurface && shownSurface->directionMap ? &shownSurface->directionMap->image : nullptr;
    const Image* scales = shownSurface && shownSurface->scaleMap ? &shownSurface->scaleMap->image : nullptr;
    preview->setMaskImage(mask);
    preview->setDirectionMap(directions);
    preview->setScaleMap(scales);
    maskOverlay->setEnabled(mask);
    directionOverlay->setEnabled(directions);
    scaleOverlay->setEnabled(scales);
}

void GeneratedViewPane::showLayer()
{
    const Image* image = ViewSources::outputLayer(shownSurface, chooser->currentText().toStdString());
    preview->setImage(image);
    if (image)
        sizeLabel->setText(QStringLiteral("%1 x %2").arg(image->width).arg(image->height));
    else
        sizeLabel->setText(shownSurface ? tr("No output yet") : QString());
}

void GeneratedViewPane::forget()
{
    preview->setImage(nullptr);
    preview->setMaskImage(nullptr);
    preview->setDirectionMap(nullptr);
    preview->setScaleMap(nullptr);
}
