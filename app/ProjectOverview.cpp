#include "ProjectOverview.h"

#include "ProjectData.h"

#include <QHeaderView>
#include <algorithm>
#include <QLabel>
#include <QPixmap>
#include <QTreeWidget>

using Velmor::ProjectData;

namespace {

// Rows keep the image they show as a pointer in this role.
const int imageRole = Qt::UserRole + 1;

const char* const layerModeNames[] = {"color", "normal", "displacement", "roughness", "metalness", "occlusion"};

QString modeName(ProjectData::LayerMode mode)
{
    const int index = int(mode);
    return index >= 0 && index < 6 ? QString::fromLatin1(layerModeNames[index]) : QStringLiteral("mode %1").arg(index);
}

QString sizeText(const Image& image)
{
    return QStringLiteral("%1 x %2").arg(image.width).arg(image.height);
}

template <class Record>
QString referenceText(const Record* record)
{
    return record ? QString::fromStdString(record->name) : QStringLiteral("none");
}

// Direction maps hold raw vectors (-1..1) and scale maps values up to about
// 2: bring both into 0..1 so that the picture shows their variation.
QImage displayImage(const Image& image)
{
    if (image.format == Normal && !image.mappedNormalXY) {
        Image shown(image);
        shown.flipNormalX = shown.flipNormalY = false;
        shown.mappedNormalXY = shown.mappedNormalZ = true;
        return shown.toDisplayImage();
    }
    if (image.format == Gray) {
        float top = 1.0f;
        for (uint64_t i = 0; i < image.floatCount(); ++i)
            top = std::max(top, image.data[i]);
        if (top > 1.0f) {
            Image shown(image);
            for (uint64_t i = 0; i < shown.floatCount(); ++i)
                shown.data[i] /= top;
            return shown.toDisplayImage();
        }
    }
    return image.toDisplayImage();
}

} // namespace

ProjectOverview::ProjectOverview(QWidget* parent)
    : QSplitter(Qt::Horizontal, parent)
{
    tree = new QTreeWidget(this);
    tree->setObjectName("ProjectRecords");
    tree->setColumnCount(2);
    tree->setHeaderLabels({tr("Record"), tr("Details")});
    tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    preview = new QLabel(tr("No project loaded"), this);
    preview->setObjectName("RecordPreview");
    preview->setAlignment(Qt::AlignCenter);
    preview->setMinimumSize(128, 128);
    preview->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    addWidget(tree);
    addWidget(preview);
    setStretchFactor(0, 1);
    setStretchFactor(1, 1);
    connect(tree, &QTreeWidget::currentItemChanged, this, &ProjectOverview::onCurrentItemChanged);
}

QTreeWidgetItem* ProjectOverview::addRow(QTreeWidgetItem* parent, const QString& name, const QString& detail,
                                         const Image* image)
{
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(tree);
    item->setText(0, name);
    item->setText(1, detail);
    item->setData(0, imageRole, QVariant::fromValue(quintptr(image)));
    return item;
}

void ProjectOverview::showProject(const ProjectData* project)
{
    // Clear the selection first so that the preview never reads a row of
    // the old store while the tree is rebuilt.
    tree->setCurrentItem(nullptr);
    tree->clear();
    picture = QImage();
    preview->setPixmap(QPixmap());
    preview->setText(project ? tr("Select a record to see its image") : tr("No project loaded"));
    if (!project)
        return;

    QTreeWidgetItem* textures = addRow(nullptr, tr("Textures"), QString::number(project->textures.size()));
    for (const auto& texture : project->textures)
        addRow(textures, QString::fromStdString(texture->name),
               sizeText(texture->image) + (texture->image.format == Normal ? tr(", normal map") : QString()),
               &texture->image);

    QTreeWidgetItem* maps = addRow(nullptr, tr("Utility maps"),
                                   QString::number(project->directionMaps.size() + project->scaleMaps.size()));
    for (const auto& map : project->directionMaps)
        addRow(maps, QString::fromStdString(map->name), tr("direction map, ") + sizeText(map->image), &map->image);
    for (const auto& map : project->scaleMaps)
        addRow(maps, QString::fromStdString(map->name), tr("scale map, ") + sizeText(map->image), &map->image);

    QTreeWidgetItem* surfaces = addRow(nullptr, tr("Surfaces"), QString::number(project->surfaces.size()));
    for (const auto& surface : project->surfaces) {
        const auto* mixed = dynamic_cast<const ProjectData::MixedSurfaceData*>(surface.get());
        const Image* picture = nullptr;
        if (mixed && mixed->maskTexture)
            picture = &mixed->maskTexture->image;
        else if (!surface->layers.empty() && surface->layers.front().texture)
            picture = &surface->layers.front().texture->image;
        QTreeWidgetItem* row = addRow(surfaces, QString::fromStdString(surface->name),
                                      mixed ? tr("mixed surface") : tr("%n layer(s)", nullptr, int(surface->layers.size())),
                                      picture);
        if (mixed) {
            addRow(row, tr("white surface"), referenceText(mixed->whiteSurface));
            addRow(row, tr("black surface"), referenceText(mixed->blackSurface));
        } else {
            for (const ProjectData::SurfaceLayer& layer : surface->layers)
                addRow(row, QString::fromStdString(layer.name),
                       modeName(layer.mode) + QStringLiteral(": ") + referenceText(layer.texture),
                       layer.texture ? &layer.texture->image : nullptr);
        }
        if (surface->maskTexture)
            addRow(row, tr("mask"), referenceText(surface->maskTexture), &surface->maskTexture->image);
        if (surface->directionMap)
            addRow(row, tr("direction map"), referenceText(surface->directionMap), &surface->directionMap->image);
        if (surface->scaleMap)
            addRow(row, tr("scale map"), referenceText(surface->scaleMap), &surface->scaleMap->image);
    }
    tree->expandAll();
    if (textures->childCount() > 0)
        tree->setCurrentItem(textures->child(0));
}

void ProjectOverview::onCurrentItemChanged(QTreeWidgetItem* current)
{
    const Image* image = current ? reinterpret_cast<const Image*>(current->data(0, imageRole).value<quintptr>()) : nullptr;
    if (!image || image->isEmpty()) {
        picture = QImage();
        preview->setPixmap(QPixmap());
        preview->setText(current ? tr("No image for this row") : QString());
        return;
    }
    picture = displayImage(*image);
    fitPicture();
}

void ProjectOverview::resizeEvent(QResizeEvent* event)
{
    QSplitter::resizeEvent(event);
    fitPicture();
}

// Shows the picture as large as the preview allows, never enlarged.
void ProjectOverview::fitPicture()
{
    if (picture.isNull())
        return;
    const QSize room = preview->size().boundedTo(picture.size());
    preview->setPixmap(QPixmap::fromImage(
        room == picture.size() ? picture : picture.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
}
