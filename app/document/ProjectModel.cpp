#include "ProjectModel.h"

#include "DropImport.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"
#include "RecordIcons.h"
#include "TextureStatus.h"

#include <QBrush>
#include <QMimeData>
#include <QPainter>
#include <QPixmap>
#include <QUrl>

namespace {

const char* const groupNames[ProjectModel::GroupCount] = {"Surfaces", "Textures", "Utility Maps", "Models"};

// Children carry their group + 1 as internal id; groups carry 0.
constexpr quintptr groupId(int group)
{
    return quintptr(group + 1);
}

QStringList localFiles(const QMimeData* data)
{
    QStringList paths;
    if (data)
        for (const QUrl& url : data->urls())
            if (url.isLocalFile())
                paths << url.toLocalFile();
    return paths;
}

} // namespace

ProjectModel::ProjectModel(ProjectDocument* document, QObject* parent)
    : QAbstractItemModel(parent)
    , document(document)
{
    connect(document, &ProjectDocument::projectAboutToBeReplaced, this, [this] {
        beginResetModel();
        thumbnails.clear();
    });
    connect(document, &ProjectDocument::projectReplaced, this, [this] { endResetModel(); });
    connect(document, &ProjectDocument::recordAboutToBeInserted, this, [this](RecordKind kind, int index) {
        const int row = rowInGroup(kind, index);
        beginInsertRows(groupIndex(groupOf(kind)), row, row);
    });
    connect(document, &ProjectDocument::recordInserted, this, [this] { endInsertRows(); });
    connect(document, &ProjectDocument::recordAboutToBeRemoved, this, [this](const RecordRef& record, int index) {
        const int row = rowInGroup(record.kind, index);
        thumbnails.remove(record.record);
        beginRemoveRows(groupIndex(groupOf(record.kind)), row, row);
    });
    connect(document, &ProjectDocument::recordRemoved, this, [this] { endRemoveRows(); });
    connect(document, &ProjectDocument::recordChanged, this, &ProjectModel::onRecordChanged);
    connect(document, &ProjectDocument::readOnlyChanged, this, [this] {
        // Editable flags follow the read-only state.
        for (int g = 0; g < GroupCount; ++g) {
            const int rows = rowCount(groupIndex(Group(g)));
            if (rows > 0)
                emit dataChanged(index(0, 0, groupIndex(Group(g))), index(rows - 1, 0, groupIndex(Group(g))));
        }
    });
}

ProjectModel::Group ProjectModel::groupOf(RecordKind kind) const
{
    switch (kind) {
    case RecordKind::Texture: return TexturesGroup;
    case RecordKind::DirectionMap:
    case RecordKind::ScaleMap: return UtilityMapsGroup;
    case RecordKind::Model: return ModelsGroup;
    default: return SurfacesGroup;
    }
}

int ProjectModel::rowInGroup(RecordKind kind, int index) const
{
    // Scale maps follow the direction maps in their group.
    if (kind == RecordKind::ScaleMap)
        return int(document->store().directionMaps.size()) + index;
    return index;
}

RecordRef ProjectModel::recordAt(const QModelIndex& index) const
{
    if (!index.isValid() || index.internalId() == 0)
        return RecordRef();
    Velmor::ProjectData& store = document->store();
    const size_t row = size_t(index.row());
    switch (int(index.internalId()) - 1) {
    case SurfacesGroup: return row < store.surfaces.size() ? RecordRef(store.surfaces[row].get()) : RecordRef();
    case TexturesGroup: return row < store.textures.size() ? RecordRef(store.textures[row].get()) : RecordRef();
    case UtilityMapsGroup:
        if (row < store.directionMaps.size())
            return RecordRef(store.directionMaps[row].get());
        if (row - store.directionMaps.size() < store.scaleMaps.size())
            return RecordRef(store.scaleMaps[row - store.directionMaps.size()].get());
        return RecordRef();
    case ModelsGroup: return row < store.models.size() ? RecordRef(store.models[row].get()) : RecordRef();
    }
    return RecordRef();
}

QModelIndex ProjectModel::indexOf(const RecordRef& record) const
{
    if (record.isNull())
        return QModelIndex();
    const QModelIndex group = groupIndex(groupOf(record.kind));
    const int rows = rowCount(group);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex child = index(row, 0, group);
        if (recordAt(child) == record)
            return child;
    }
    return QModelIndex();
}

QModelIndex ProjectModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return QModelIndex();
    if (!parent.isValid())
        return createIndex(row, column, quintptr(0));
    return createIndex(row, column, groupId(parent.row()));
}

QModelIndex ProjectModel::parent(const QModelIndex& child) const
{
    if (!child.isValid() || child.internalId() == 0)
        return QModelIndex();
    return createIndex(int(child.internalId()) - 1, 0, quintptr(0));
}

int ProjectModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return GroupCount;
    if (parent.internalId() != 0 || parent.column() != 0)
        return 0;
    const Velmor::ProjectData& store = document->store();
    switch (parent.row()) {
    case SurfacesGroup: return int(store.surfaces.size());
    case TexturesGroup: return int(store.textures.size());
    case UtilityMapsGroup: return int(store.directionMaps.size() + store.scaleMaps.size());
    case ModelsGroup: return int(store.models.size());
    }
    return 0;
}

int ProjectModel::columnCount(const QModelIndex&) const
{
    return 1;
}

QVariant ProjectModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    if (index.internalId() == 0) {
        if (role == Qt::DisplayRole)
            return QString::fromUtf8(groupNames[index.row()]);
        if (role == Qt::DecorationRole)
            return RecordIcons::forGroup(index.row());
        return QVariant();
    }
    const RecordRef record = recordAt(index);
    if (record.isNull())
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole: return QString::fromStdString(record.name());
    case Qt::DecorationRole: return decoration(record);
    case Qt::ToolTipRole:
        if (record.texture())
            return textureStatus(*record.texture());
        if (record.model())
            return record.model()->path;
        return QVariant();
    case Qt::ForegroundRole:
        if (record.texture() && record.texture()->loadFailed)
            return QBrush(QColor(220, 40, 40));
        return QVariant();
    case RecordRole: return QVariant::fromValue(record);
    }
    return QVariant();
}

bool ProjectModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const RecordRef record = recordAt(index);
    if (role != Qt::EditRole || record.isNull() || document->isReadOnly())
        return false;
    const std::string before = record.name();
    ProjectEdits::rename(*document, record, value.toString());
    return record.name() != before;
}

Qt::ItemFlags ProjectModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    if (index.internalId() == 0)
        return Qt::ItemIsEnabled | Qt::ItemIsDropEnabled;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled;
    if (!document->isReadOnly())
        result |= Qt::ItemIsEditable;
    return result;
}

QIcon ProjectModel::decoration(const RecordRef& record) const
{
    const Image* image = record.image();
    if (!image)
        return RecordIcons::forRecord(record);
    auto found = thumbnails.find(record.record);
    if (found != thumbnails.end())
        return *found;
    // The image scaled into a square, with the kind's icon in a corner.
    QPixmap pixmap(thumbnailSize, thumbnailSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    if (!image->isEmpty()) {
        const QImage picture = image->toDisplayImage().scaled(thumbnailSize, thumbnailSize, Qt::KeepAspectRatio,
                                                               Qt::SmoothTransformation);
        painter.drawImage((thumbnailSize - picture.width()) / 2, (thumbnailSize - picture.height()) / 2, picture);
    }
    const int badge = thumbnailSize / 2;
    painter.drawPixmap(thumbnailSize - badge, thumbnailSize - badge,
                       RecordIcons::forRecord(record).pixmap(badge, badge));
    painter.end();
    return *thumbnails.insert(record.record, QIcon(pixmap));
}

void ProjectModel::onRecordChanged(const RecordRef& record)
{
    thumbnails.remove(record.record);
    const QModelIndex changed = indexOf(record);
    if (changed.isValid())
        emit dataChanged(changed, changed);
}

QStringList ProjectModel::mimeTypes() const
{
    return {QStringLiteral("text/uri-list")};
}

Qt::DropActions ProjectModel::supportedDropActions() const
{
    return Qt::CopyAction;
}

bool ProjectModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int, const QModelIndex&) const
{
    return !document->isReadOnly() && DropImport::canImport(localFiles(data));
}

bool ProjectModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                const QModelIndex& parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    // A drop on the surfaces group or on one of its surfaces builds a surface.
    const bool ontoSurfaces = parent.isValid()
        && (parent.internalId() == 0 ? parent.row() == SurfacesGroup
                                     : int(parent.internalId()) - 1 == SurfacesGroup);
    DropImport::importFiles(*document, localFiles(data), ontoSurfaces);
    return true;
}
