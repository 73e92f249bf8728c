#pragma once

#include "ProjectDocument.h"

#include <QUndoCommand>

#include <functional>
#include <utility>

// Sets one field of a record: a name, a flag, a reference, a parameter, a
// surface's whole layer list or a record's image. Redo and undo swap the
// stored value with the field's, so the command holds the other state.
// `field` is looked up at every swap: a layer is reached through its surface
// and index, never through a pointer into the layer vector.
template <class T>
class SetValueCommand : public QUndoCommand
{
public:
    SetValueCommand(ProjectDocument* document, const RecordRef& owner, std::function<T&()> field, T value,
                    const QString& text, QUndoCommand* parent = nullptr)
        : QUndoCommand(text, parent)
        , document(document)
        , owner(owner)
        , field(std::move(field))
        , value(std::move(value))
    {
    }

    void redo() override { swap(); }
    void undo() override { swap(); }

private:
    void swap()
    {
        using std::swap;
        swap(field(), value);
        document->notifyChanged(owner);
    }

    ProjectDocument* document;
    RecordRef owner;
    std::function<T&()> field;
    T value;
};
