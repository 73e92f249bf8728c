#include "MapPanel.h"

#include "ProjectEdits.h"
#include "PropertyForm.h"

#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

MapPanel::MapPanel(ProjectDocument* document, QWidget* parent)
    : QWidget(parent)
    , document(document)
    , form(new PropertyForm(document, [this] { return map; }))
    , width(new QSpinBox)
    , height(new QSpinBox)
    , fillValue(new QDoubleSpinBox)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form);
    form->addName();

    for (QSpinBox* side : {width, height})
        side->setRange(1, 8192);
    auto* sizeRow = new QWidget;
    auto* sizeLayout = new QHBoxLayout(sizeRow);
    sizeLayout->setContentsMargins(0, 0, 0, 0);
    sizeLayout->addWidget(width, 1);
    sizeLayout->addWidget(new QLabel(QStringLiteral("x")), 0);
    sizeLayout->addWidget(height, 1);
    auto* resizeButton = new QPushButton(tr("Resize"));
    sizeLayout->addWidget(resizeButton);
    form->addRow(tr("Size"), sizeRow);

    auto* fillRow = new QWidget;
    auto* fillLayout = new QHBoxLayout(fillRow);
    fillLayout->setContentsMargins(0, 0, 0, 0);
    fillLayout->addWidget(fillValue, 1);
    auto* fillButton = new QPushButton(tr("Fill"));
    fillLayout->addWidget(fillButton);
    auto* fillLabel = new QLabel;
    form->addRow(QString(), fillLabel);
    form->addRow(tr("Fill with"), fillRow);

    connect(resizeButton, &QPushButton::clicked, this, &MapPanel::resize);
    connect(fillButton, &QPushButton::clicked, this, &MapPanel::fill);
    form->onRefresh([this, fillLabel] {
        const Image* image = map.image();
        if (image) {
            width->setValue(int(image->width));
            height->setValue(int(image->height));
        }
        // Directions are filled by angle, scales by value.
        const bool direction = map.kind == RecordKind::DirectionMap;
        fillLabel->setText(direction ? tr("Direction angle in degrees (0 points up)") : tr("Scale value"));
        fillValue->setRange(direction ? -360.0 : 0.0, direction ? 360.0 : 100.0);
        fillValue->setDecimals(direction ? 1 : 3);
    });
}

void MapPanel::setMap(const RecordRef& shown)
{
    if (shown.kind != map.kind)
        fillValue->setValue(shown.kind == RecordKind::ScaleMap ? 1.0 : 0.0);
    map = shown;
    form->refresh();
}

void MapPanel::refresh()
{
    form->refresh();
}

void MapPanel::resize()
{
    Image* image = map.image();
    if (!image || (image->width == uint32_t(width->value()) && image->height == uint32_t(height->value())))
        return;
    Image resized = *image;
    resized.resample(uint32_t(width->value()), uint32_t(height->value()));
    ProjectEdits::replaceImage(*document, map, *image, std::move(resized), tr("Resize Map"));
}

void MapPanel::fill()
{
    Image* image = map.image();
    if (!image)
        return;
    Image filled(image->width, image->height, image->format);
    filled.wrapMode = image->wrapMode;
    float value[3] = {float(fillValue->value()), 0.0f, 0.0f};
    if (map.kind == RecordKind::DirectionMap) {
        const double radians = fillValue->value() * M_PI / 180.0;
        value[0] = float(-std::sin(radians));
        value[1] = float(std::cos(radians));
        value[2] = 0.0f;
    }
    const uint32_t channels = filled.channels();
    for (uint64_t i = 0; i < filled.pixelCount(); ++i)
        for (uint32_t c = 0; c < channels && c < 3; ++c)
            filled.data[i * channels + c] = value[c];
    ProjectEdits::replaceImage(*document, map, *image, std::move(filled), tr("Fill Map"));
}
