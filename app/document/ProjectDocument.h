#pragma once

#include "ProjectData.h"
#include "RecordLists.h"
#include "RecordRef.h"

#include <QObject>
#include <QString>

#include <algorithm>
#include <memory>

class QUndoCommand;
class QUndoStack;

// The open project: the store, the undo stack that every edit goes through,
// the project directory and the read-only state while a synthesis run reads
// the store. Views and panels listen to its signals; only undo commands
// change the store, through insertRecord, takeRecord and notifyChanged.
class ProjectDocument : public QObject
{
    Q_OBJECT
public:
    explicit ProjectDocument(QObject* parent = nullptr);
    ~ProjectDocument() override;

    Velmor::ProjectData& store() { return *project; }
    QUndoStack* undoStack() const { return stack; }

    // Empty for an untitled project.
    QString directory() const { return projectDirectory; }
    // The directory, or "Untitled Project".
    QString displayName() const;
    // Unsaved changes: the undo stack is away from its clean state.
    bool isModified() const;
    bool isReadOnly() const { return readOnly; }
    void setReadOnly(bool value);

    // Installs another project (New, Load): the undo history goes, the new
    // project starts unmodified.
    void replaceProject(std::unique_ptr<Velmor::ProjectData> store, const QString& directory);
    // The project was written to `directory`: it is the clean state now.
    void markSaved(const QString& directory);

    // Runs and keeps `command`; refused (and deleted) while read-only.
    bool push(QUndoCommand* command);

    // Used by the undo commands only. Positions are rows in the record's own
    // list; the record must be in the store (take) or not (insert).
    template <class Record>
    void insertRecord(std::unique_ptr<Record> record, int index);
    template <class Record>
    std::unique_ptr<Record> takeRecord(Record* record, int* index);
    void notifyChanged(const RecordRef& record) { emit recordChanged(record); }

signals:
    void projectAboutToBeReplaced();
    void projectReplaced();
    void recordAboutToBeInserted(RecordKind kind, int index);
    void recordInserted(const RecordRef& record, int index);
    void recordAboutToBeRemoved(const RecordRef& record, int index);
    void recordRemoved(RecordKind kind, int index);
    // A field, layer or image of the record changed.
    void recordChanged(const RecordRef& record);
    void modifiedChanged(bool modified);
    void directoryChanged(const QString& directory);
    void readOnlyChanged(bool readOnly);

private:
    std::unique_ptr<Velmor::ProjectData> project;
    QUndoStack* stack = nullptr;
    QString projectDirectory;
    bool readOnly = false;
};

template <class Record>
void ProjectDocument::insertRecord(std::unique_ptr<Record> record, int index)
{
    auto& list = RecordList<Record>::of(*project);
    index = std::clamp(index, 0, int(list.size()));
    emit recordAboutToBeInserted(RecordList<Record>::kind, index);
    Record* inserted = record.get();
    list.insert(list.begin() + index, std::move(record));
    emit recordInserted(RecordRef(inserted), index);
}

template <class Record>
std::unique_ptr<Record> ProjectDocument::takeRecord(Record* record, int* index)
{
    auto& list = RecordList<Record>::of(*project);
    auto found = std::find_if(list.begin(), list.end(), [record](const auto& r) { return r.get() == record; });
    if (found == list.end())
        return nullptr;
    const int row = int(found - list.begin());
    if (index)
        *index = row;
    emit recordAboutToBeRemoved(RecordRef(record), row);
    std::unique_ptr<Record> taken = std::move(*found);
    list.erase(found);
    emit recordRemoved(RecordList<Record>::kind, row);
    return taken;
}
