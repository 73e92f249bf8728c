#include "InputViewPane.h"

#include "Image.h"
#include "PixelReadout.h"
#include "Preview2D.h"
#include "ProjectDocument.h"
#include "ViewBar.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

InputViewPane::InputViewPane(ProjectDocument* document, QWidget* parent)
    : QWidget(parent)
    , document(document)
    , preview(new Preview2D)
    , chooser(new QComboBox)
    , normalise(new QCheckBox(tr("Normalise")))
    , sizeLabel(new QLabel)
{
    preview->setObjectName(QStringLiteral("InputView"));
    preview->setLabelText(tr("Input"));
    chooser->setObjectName(QStringLiteral("InputSource"));
    chooser->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    chooser->setMinimumContentsLength(14);
    chooser->setToolTip(tr("The image of the selected record to show"));
    normalise->setObjectName(QStringLiteral("InputNormalise"));
    normalise->setToolTip(tr("Stretch the values from their minimum to their maximum: for float images outside "
                             "0..1 and faint 16-bit images. Otherwise values are clamped to 0..1."));

    const ViewBar bar = makeViewBar(this, preview, QStringLiteral("Input"));
    bar.row->insertWidget(0, chooser, 1);
    bar.row->insertWidget(1, normalise);
    bar.row->insertWidget(2, sizeLabel);
    connect(bar.zoomOneToOne, &QPushButton::clicked, preview, &Preview2D::zoomOneToOne);
    connect(bar.zoomToFit, &QPushButton::clicked, preview, &Preview2D::zoomToFit);
    connect(normalise, &QCheckBox::toggled, preview, &Preview2D::setNormalise);
    connect(chooser, QOverload<int>::of(&QComboBox::activated), this, &InputViewPane::showChoice);

    connect(preview, &Preview2D::hovered, this, [this](QPointF texture) {
        const Image* image = preview->image();
        emit readoutChanged(image ? tr("Input: %1").arg(pixelReadout(*image, texture)) : QString());
    });
    connect(preview, &Preview2D::cursorLeft, this, [this] { emit readoutChanged(QString()); });

    // The shown images belong to records: let go of them before they go.
    connect(document, &ProjectDocument::projectAboutToBeReplaced, this, [this] {
        record = RecordRef();
        forget();
    });
    connect(document, &ProjectDocument::projectReplaced, this, &InputViewPane::refresh);
    connect(document, &ProjectDocument::recordAboutToBeRemoved, this, [this](const RecordRef& removed) {
        if (removed == record)
            record = RecordRef();
        forget();
    });
    connect(document, &ProjectDocument::recordRemoved, this, &InputViewPane::refresh);
    // A surface shows its textures and maps: their edits show too.
    connect(document, &ProjectDocument::recordChanged, this, [this](const RecordRef& changed) {
        if (changed == record || (record.surface() && !changed.surface() && !changed.model()))
            refresh();
    });
    refresh();
}

void InputViewPane::showRecord(const RecordRef& shown)
{
    if (shown.model() || shown == record)
        return;
    record = shown;
    chooser->clear();
    refresh();
    // A new picture starts whole.
    preview->zoomToFit();
}

void InputViewPane::refresh()
{
    const QString previous = chooser->currentText();
    choices = ViewSources::inputChoices(document->store(), record);
    const QSignalBlocker blocker(chooser);
    chooser->clear();
    int index = 0;
    for (size_t i = 0; i < choices.size(); ++i) {
        chooser->addItem(choices[i].label);
        if (choices[i].label == previous)
            index = int(i);
    }
    chooser->setCurrentIndex(index);
    showChoice(index);
}

void InputViewPane::showChoice(int index)
{
    const Image* image = index >= 0 && size_t(index) < choices.size() ? choices[size_t(index)].image : nullptr;
    if (image && image->isEmpty())
        image = nullptr;
    preview->setImage(image);
    sizeLabel->setText(image ? QStringLiteral("%1 x %2").arg(image->width).arg(image->height) : QString());
}

void InputViewPane::forget()
{
    choices.clear();
    preview->setImage(nullptr);
}
