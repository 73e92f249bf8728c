#include "LayerList.h"

#include "PbrPurpose.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QToolButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

using ProjectData = Velmor::ProjectData;

LayerList::LayerList(ProjectDocument* document, Dialogs* dialogs, QWidget* parent)
    : QWidget(parent)
    , document(document)
    , dialogs(dialogs)
    , rows(new QListWidget)
    , name(new QLineEdit)
    , texture(new QComboBox)
    , mode(new QComboBox)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    // Four rows without a sideways scroll bar; long rows end in "...".
    rows->setMinimumHeight(4 * rows->fontMetrics().height() + 8);
    rows->setMaximumHeight(120);
    rows->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    rows->setTextElideMode(Qt::ElideRight);
    layout->addWidget(rows);

    auto* buttons = new QHBoxLayout;
    // Tool buttons stay as narrow as their labels, so the panel fits a
    // narrow dock.
    auto* addButton = new QToolButton;
    removeButton = new QToolButton;
    upButton = new QToolButton;
    downButton = new QToolButton;
    const QString labels[] = {tr("Add"), tr("Remove"), tr("Move Up"), tr("Move Down")};
    QToolButton* all[] = {addButton, removeButton, upButton, downButton};
    for (int i = 0; i < 4; ++i) {
        all[i]->setText(labels[i]);
        all[i]->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        buttons->addWidget(all[i]);
    }
    layout->addLayout(buttons);

    auto* editor = new QFormLayout;
    editor->addRow(tr("Layer name"), name);
    editor->addRow(tr("Texture"), texture);
    for (int purpose = 0; purpose < pbrPurposeCount; ++purpose)
        mode->addItem(pbrLayerName(purpose));
    editor->addRow(tr("Mode"), mode);
    layout->addLayout(editor);

    for (QComboBox* combo : {texture, mode}) {
        combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        combo->setMinimumContentsLength(8);
    }
    connect(addButton, &QToolButton::clicked, this, &LayerList::addLayer);
    connect(removeButton, &QToolButton::clicked, this, &LayerList::removeLayer);
    connect(upButton, &QToolButton::clicked, this, [this] { moveLayer(-1); });
    connect(downButton, &QToolButton::clicked, this, [this] { moveLayer(1); });
    connect(rows, &QListWidget::currentRowChanged, this, &LayerList::refreshEditor);
    connect(name, &QLineEdit::editingFinished, this, [this] {
        const int i = currentLayer();
        if (i < 0 || name->text().toStdString() == surface->layers[size_t(i)].name)
            return;
        Layers layers = surface->layers;
        layers[size_t(i)].name = name->text().toStdString();
        change(layers, tr("Rename Layer"), i);
    });
    connect(texture, QOverload<int>::of(&QComboBox::activated), this, [this](int row) {
        const int i = currentLayer();
        if (i < 0)
            return;
        Layers layers = surface->layers;
        layers[size_t(i)].texture = static_cast<ProjectData::TextureData*>(texture->itemData(row).value<void*>());
        if (layers[size_t(i)].texture != surface->layers[size_t(i)].texture)
            change(layers, tr("Set Layer Texture"), i);
    });
    connect(mode, QOverload<int>::of(&QComboBox::activated), this, [this](int row) {
        const int i = currentLayer();
        if (i >= 0)
            ProjectEdits::setLayerMode(*this->document, *this->dialogs, surface, i, ProjectData::LayerMode(row));
        refreshEditor();
    });
}

void LayerList::setSurface(ProjectData::SurfaceData* shown)
{
    surface = shown;
    refresh();
    rows->setCurrentRow(surface && !surface->layers.empty() ? 0 : -1);
}

int LayerList::currentLayer() const
{
    const int row = rows->currentRow();
    return surface && row >= 0 && row < int(surface->layers.size()) ? row : -1;
}

void LayerList::change(const Layers& layers, const QString& text, int select)
{
    ProjectEdits::setLayers(*document, surface, layers, text);
    rows->setCurrentRow(select);
}

void LayerList::addLayer()
{
    if (!surface)
        return;
    Layers layers = surface->layers;
    ProjectData::SurfaceLayer layer;
    layer.name = "layer" + std::to_string(layers.size());
    layers.push_back(layer);
    change(layers, tr("Add Layer"), int(layers.size()) - 1);
}

void LayerList::removeLayer()
{
    const int i = currentLayer();
    if (i < 0)
        return;
    Layers layers = surface->layers;
    layers.erase(layers.begin() + i);
    change(layers, tr("Remove Layer"), std::min(i, int(layers.size()) - 1));
}

void LayerList::moveLayer(int step)
{
    const int i = currentLayer();
    const int j = i + step;
    if (i < 0 || j < 0 || j >= int(surface->layers.size()))
        return;
    Layers layers = surface->layers;
    std::swap(layers[size_t(i)], layers[size_t(j)]);
    change(layers, tr("Move Layer"), j);
}

void LayerList::refresh()
{
    const int keep = rows->currentRow();
    {
        const QSignalBlocker blocker(rows);
        rows->clear();
        if (surface)
            for (const ProjectData::SurfaceLayer& layer : surface->layers) {
                const QString textureName =
                    layer.texture ? QString::fromStdString(layer.texture->name) : tr("no texture");
                rows->addItem(QStringLiteral("%1  (%2, %3)")
                                  .arg(QString::fromStdString(layer.name), pbrLayerName(int(layer.mode)), textureName));
            }
        rows->setCurrentRow(std::min(keep, rows->count() - 1));
    }
    refreshEditor();
}

void LayerList::refreshEditor()
{
    const int i = currentLayer();
    const bool has = i >= 0;
    for (QWidget* w : {static_cast<QWidget*>(name), static_cast<QWidget*>(texture), static_cast<QWidget*>(mode),
                       static_cast<QWidget*>(removeButton), static_cast<QWidget*>(upButton),
                       static_cast<QWidget*>(downButton)})
        w->setEnabled(has);
    const QSignalBlocker b1(texture), b2(mode);
    texture->clear();
    texture->addItem(tr("(none)"), QVariant::fromValue<void*>(nullptr));
    for (const auto& t : document->store().textures)
        texture->addItem(QString::fromStdString(t->name), QVariant::fromValue<void*>(t.get()));
    if (!has) {
        name->clear();
        return;
    }
    const ProjectData::SurfaceLayer& layer = surface->layers[size_t(i)];
    name->setText(QString::fromStdString(layer.name));
    texture->setCurrentIndex(std::max(0, texture->findData(QVariant::fromValue<void*>(layer.texture))));
    mode->setCurrentIndex(int(layer.mode));
}
