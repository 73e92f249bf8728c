#pragma once

#include "ProjectDocument.h"
#include "SetValueCommand.h"

#include <QStringList>

#include <vector>

class Dialogs;

// The edits that panels, the browser and the menus ask for. Each one pushes
// undo commands on the document (one undo step per call) and does nothing
// while the document is read-only.
namespace ProjectEdits {

using ProjectData = Velmor::ProjectData;

// Sets `field` of `owner` to `value` as one undo step named `text`; a value
// equal to the current one pushes nothing. The field must live as long as
// the record (not inside a layer vector: use setLayers for layers).
// Successive edits of one field with `merge` set are one undo step.
template <class T>
void setField(ProjectDocument& document, const RecordRef& owner, T& field, const T& value, const QString& text,
              bool merge = false)
{
    if (field == value)
        return;
    T* target = &field;
    document.push(new SetValueCommand<T>(&document, owner, [target]() -> T& { return *target; }, value, text,
                                         nullptr, merge ? target : nullptr));
}

// Gives the record `name`, made unique among its kind ("name", "name_1",
// ...); an empty name is refused.
void rename(ProjectDocument& document, const RecordRef& record, const QString& name);
// A copy of the record under a unique name, placed right after it.
RecordRef duplicate(ProjectDocument& document, const RecordRef& record);
// Descriptions of every place that refers to the record, for the question
// before a delete ("Surface 'Wall', layer 'color'").
QStringList referrers(ProjectDocument& document, const RecordRef& record);
// Removes the record and clears every reference to it, in one undo step.
void remove(ProjectDocument& document, const RecordRef& record);

RecordRef newSurface(ProjectDocument& document);
RecordRef newMixedSurface(ProjectDocument& document);
RecordRef newDirectionMap(ProjectDocument& document);
RecordRef newScaleMap(ProjectDocument& document);
// One texture per file, in order, as one undo step.
std::vector<RecordRef> importImages(ProjectDocument& document, const QStringList& paths);
std::vector<RecordRef> importModels(ProjectDocument& document, const QStringList& paths);

// Replaces the surface's whole layer list (add, remove, move, per-layer
// fields) as one undo step.
void setLayers(ProjectDocument& document, ProjectData::SurfaceData* surface,
               const std::vector<ProjectData::SurfaceLayer>& layers, const QString& text);
// Sets the mode of one layer. Switching to the normal mode over a colour
// texture asks whether to convert the texture; the conversion and the mode
// are then one undo step. Other textures are left as they are, with a note.
void setLayerMode(ProjectDocument& document, Dialogs& dialogs, ProjectData::SurfaceData* surface, int layer,
                  ProjectData::LayerMode mode);
// Replaces an image of a record (conversions, reload, resize, fill).
void replaceImage(ProjectDocument& document, const RecordRef& owner, Image& image, Image replacement,
                  const QString& text);
// Reads the texture's file again; a file that fails to load changes nothing.
bool reloadTexture(ProjectDocument& document, ProjectData::TextureData* texture, const QString& path);

} // namespace ProjectEdits
