#include "TexturePanel.h"

#include "Dialogs.h"
#include "ImageFile.h"
#include "NormalMap.h"
#include "PbrImport.h"
#include "PropertyForm.h"
#include "TextureStatus.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QPushButton>
#include <QVBoxLayout>

using TextureData = Velmor::ProjectData::TextureData;

namespace {

const char* formatName(PixelFormat format)
{
    switch (format) {
    case Gray: return "Gray";
    case RGB: return "RGB";
    case RGBA: return "RGBA";
    case Normal: return "Normal";
    default: return "None";
    }
}

QString sampleTypeName(uint32_t type)
{
    switch (type) {
    case UInt8: return QStringLiteral("8-bit");
    case UInt16: return QStringLiteral("16-bit");
    case Int16: return QStringLiteral("16-bit signed");
    case UInt32: return QStringLiteral("32-bit");
    case Int32: return QStringLiteral("32-bit signed");
    case Float32: return QStringLiteral("32-bit float");
    case 0: return QStringLiteral("no file data");
    default: return QString::number(type);
    }
}

// The normal-map flags that are set, or "none".
QString normalFlags(const Image& image)
{
    QStringList set;
    if (image.flipNormalX)
        set << QStringLiteral("flip X");
    if (image.flipNormalY)
        set << QStringLiteral("flip Y");
    if (image.mappedNormalXY)
        set << QStringLiteral("mapped XY");
    if (image.mappedNormalZ)
        set << QStringLiteral("mapped Z");
    return set.isEmpty() ? QStringLiteral("none") : set.join(QStringLiteral(", "));
}

} // namespace

TexturePanel::TexturePanel(ProjectDocument* document, Dialogs* dialogs, QWidget* parent)
    : QWidget(parent)
    , document(document)
    , dialogs(dialogs)
    , form(new PropertyForm(document, [this] { return RecordRef(texture); }))
    , status(new QLabel)
    , details(new QLabel)
    , convertButton(new QPushButton(tr("Convert to Normal Map")))
    , slopeButton(new QPushButton(tr("Fix Normal Map Slope")))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form);
    form->addName();
    status->setWordWrap(true);
    status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(tr("File"), status);
    details->setWordWrap(true);
    form->addRow(tr("Image"), details);

    auto* buttons = new QWidget;
    auto* grid = new QGridLayout(buttons);
    grid->setContentsMargins(0, 0, 0, 0);
    auto* reloadButton = new QPushButton(tr("Reload"));
    auto* reloadFromButton = new QPushButton(tr("Reload From..."));
    grid->addWidget(convertButton, 0, 0);
    grid->addWidget(slopeButton, 0, 1);
    grid->addWidget(reloadButton, 1, 0);
    grid->addWidget(reloadFromButton, 1, 1);
    form->addWidget(buttons);

    connect(convertButton, &QPushButton::clicked, this, &TexturePanel::convertToNormalMap);
    connect(slopeButton, &QPushButton::clicked, this, &TexturePanel::fixSlope);
    connect(reloadButton, &QPushButton::clicked, this, [this] { reload(false); });
    connect(reloadFromButton, &QPushButton::clicked, this, [this] { reload(true); });

    form->onRefresh([this] {
        if (!texture) {
            status->clear();
            details->clear();
            return;
        }
        status->setText(textureStatus(*texture));
        status->setStyleSheet(!texture->loadFailed ? QString() : QStringLiteral("color: rgb(255, 80, 80);"));
        const Image& image = texture->image;
        details->setText(tr("%1 x %2, %3, %4\nNormal flags: %5")
                             .arg(image.width)
                             .arg(image.height)
                             .arg(formatName(image.format), sampleTypeName(image.sampleType), normalFlags(image)));
        convertButton->setEnabled(normalLayerRule(image).convertible);
        slopeButton->setEnabled(image.format == Normal);
    });
}

void TexturePanel::setTexture(TextureData* shown)
{
    texture = shown;
    form->refresh();
}

void TexturePanel::refresh() { form->refresh(); }

void TexturePanel::convertToNormalMap()
{
    if (!texture)
        return;
    Image converted = texture->image;
    if (!convertToNormalLayer(converted)) {
        dialogs->inform(QString::fromUtf8(normalLayerNotConvertible));
        return;
    }
    ProjectEdits::replaceImage(*document, RecordRef(texture), texture->image, std::move(converted),
                               tr("Convert to Normal Map"));
}

void TexturePanel::fixSlope()
{
    if (!texture || texture->image.format != Normal)
        return;
    Image fixed = texture->image;
    fixed.fixNormalMapSlope();
    ProjectEdits::replaceImage(*document, RecordRef(texture), texture->image, std::move(fixed),
                               tr("Fix Normal Map Slope"));
}

void TexturePanel::reload(bool chooseFile)
{
    if (!texture)
        return;
    QString path = texture->path;
    if (chooseFile) {
        const QStringList chosen = dialogs->chooseFiles(tr("Load Image"), QFileInfo(path).absolutePath(),
                                                        QString::fromUtf8(PbrImport::imageFilters),
                                                        QString::fromUtf8(PbrImport::allImagesFilter));
        if (chosen.isEmpty())
            return;
        path = chosen.first();
    }
    ProjectEdits::reloadTexture(*document, texture, path);
}
