#pragma once

#include "ProjectDocument.h"

#include <QUndoCommand>

#include <functional>
#include <type_traits>
#include <utility>

// Sets one field of a record: a name, a flag, a reference, a parameter, a
// surface's whole layer list or a record's image. Redo and undo swap the
// stored value with the field's, so the command holds the other state.
// `field` is looked up at every swap: a layer is reached through its surface
// and index, never through a pointer into the layer vector.
//
// Commands given the same non-null `mergeKey` (the field's address) merge
// when pushed one after the other, so that stepping a spin box up ten times
// is one undo step; a merge that ends where it started removes the step.
template <class T>
class SetValueCommand : public QUndoCommand
{
public:
    SetValueCommand(ProjectDocument* document, const RecordRef& owner, std::function<T&()> field, T value,
                    const QString& text, QUndoCommand* parent = nullptr, const void* mergeKey = nullptr)
        : QUndoCommand(text, parent)
        , document(document)
        , owner(owner)
        , field(std::move(field))
        , value(std::move(value))
        , mergeKey(mergeKey)
    {
    }

    void redo() override { swap(); }
    void undo() override { swap(); }

    // One id for every mergeable field edit; mergeWith tells them apart.
    int id() const override { return mergeKey ? 0x5e7 : -1; }

    bool mergeWith(const QUndoCommand* other) override
    {
        // Only plain values (numbers, flags, references) are merged.
        if constexpr (std::is_arithmetic_v<T> || std::is_pointer_v<T>) {
            const auto* next = dynamic_cast<const SetValueCommand<T>*>(other);
            if (!next || next->mergeKey != mergeKey)
                return false;
            // This command keeps the value from before the first edit.
            setObsolete(value == field());
            return true;
        } else {
            return false;
        }
    }

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
    const void* mergeKey;
};
