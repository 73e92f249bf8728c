#pragma once

#include "ProjectDocument.h"

#include <QUndoCommand>

#include <memory>

// Puts a record into its list. Made either right after the store appended
// the record, which the command then takes back out unannounced (no view has
// seen it yet) so that its first redo inserts it with the document's
// signals, or with a record that is not in the store yet (a duplicate).
template <class Record>
class AddRecordCommand : public QUndoCommand
{
public:
    AddRecordCommand(ProjectDocument* document, Record* added, const QString& text, QUndoCommand* parent = nullptr)
        : QUndoCommand(text, parent)
        , document(document)
        , record(added)
    {
        auto& list = RecordList<Record>::of(document->store());
        for (auto it = list.begin(); it != list.end(); ++it)
            if (it->get() == added) {
                index = int(it - list.begin());
                held = std::move(*it);
                list.erase(it);
                break;
            }
    }

    AddRecordCommand(ProjectDocument* document, std::unique_ptr<Record> added, int index, const QString& text,
                     QUndoCommand* parent = nullptr)
        : QUndoCommand(text, parent)
        , document(document)
        , record(added.get())
        , held(std::move(added))
        , index(index)
    {
    }

    void redo() override
    {
        if (held)
            document->insertRecord(std::move(held), index);
    }

    void undo() override { held = document->takeRecord(record, &index); }

private:
    ProjectDocument* document;
    Record* record;
    std::unique_ptr<Record> held; // owned here while undone
    int index = 0;
};

// Takes a record out of its list and keeps it, so that undo puts the very
// same object back and every pointer to it stays good. References to it
// must be cleared by commands pushed before this one.
template <class Record>
class RemoveRecordCommand : public QUndoCommand
{
public:
    RemoveRecordCommand(ProjectDocument* document, Record* removed, const QString& text,
                        QUndoCommand* parent = nullptr)
        : QUndoCommand(text, parent)
        , document(document)
        , record(removed)
    {
    }

    void redo() override { held = document->takeRecord(record, &index); }

    void undo() override
    {
        if (held)
            document->insertRecord(std::move(held), index);
    }

private:
    ProjectDocument* document;
    Record* record;
    std::unique_ptr<Record> held;
    int index = 0;
};
