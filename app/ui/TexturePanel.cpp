#include "TexturePanel.h"

#include "Dialogs.h"
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

QString yesNo(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
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
    form->addRow(QString(), details);

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
        status->setStyleSheet(texture->loaded ? QString() : QStringLiteral("color: rgb(255, 80, 80);"));
        const Image& image = texture->image;
        details->setText(tr("Size: %1 x %2\nFormat: %3\nSample type: %4\nNormal flags: flip X %5, flip Y %6, "
                            "mapped XY %7, mapped Z %8")
                             .arg(image.width)
                             .arg(image.height)
                             .arg(formatName(image.format))
                             .arg(image.sampleType)
                             .arg(yesNo(image.flipNormalX), yesNo(image.flipNormalY), yesNo(image.mappedNormalXY),
                                  yesNo(image.mappedNormalZ)));
        convertButton->setEnabled(normalLayerRule(image).convertible);
        slopeButton->setEnabled(image.format == Normal);
    });
}

void TexturePanel::setTexture(TextureData* shown)
{
    texture = shown;
    form->refresh();
}

void TexturePanel::refresh()
{
    form->refresh();
}

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
        const QStringList chosen =
            dialogs->chooseFiles(tr("Load Image"), QFileInfo(path).absolutePath(),
                                 QString::fromUtf8(PbrImport::imageFilters), QString::fromUtf8(PbrImport::allImagesFilter));
        if (chosen.isEmpty())
            return;
        path = chosen.first();
    }
    ProjectEdits::reloadTexture(*document, texture, path);
}
