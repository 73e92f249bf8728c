#pragma once

#include "RecordRef.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QIcon>

class ProjectDocument;

// The project browser's item model: four groups (surfaces with the mixed
// surfaces, textures, utility maps, models), each listing its records in
// store order. It follows the document's signals row by row, renames through
// undo commands and takes image and mesh files dropped on it.
class ProjectModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Group
    {
        SurfacesGroup = 0,
        TexturesGroup = 1,
        UtilityMapsGroup = 2,
        ModelsGroup = 3,
        GroupCount = 4
    };
    // RecordRef of a row (null for groups).
    static constexpr int RecordRole = Qt::UserRole + 1;
    static constexpr int thumbnailSize = 32;

    explicit ProjectModel(ProjectDocument* document, QObject* parent = nullptr);

    RecordRef recordAt(const QModelIndex& index) const;
    QModelIndex indexOf(const RecordRef& record) const;
    QModelIndex groupIndex(Group group) const { return createIndex(int(group), 0, quintptr(0)); }

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

private:
    Group groupOf(RecordKind kind) const;
    // Row of the record of `kind` at `index` in its list, within its group.
    int rowInGroup(RecordKind kind, int index) const;
    QIcon decoration(const RecordRef& record) const;

    void onRecordChanged(const RecordRef& record);

    ProjectDocument* document;
    // Thumbnails by record; dropped when the record changes or goes.
    mutable QHash<void*, QIcon> thumbnails;
};
