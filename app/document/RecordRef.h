#pragma once

#include "ProjectData.h"

#include <QMetaType>

// The kinds of record the project browser lists. Mixed surfaces share the
// surface list and the Surface kind.
enum class RecordKind
{
    None,
    Surface,
    Texture,
    DirectionMap,
    ScaleMap,
    Model,
    // The store's project mask, the output mask: an image, not a list entry.
    ProjectMask
};

// A non-owning reference to one record of the open project, tagged with its
// kind so that panels and commands can tell what they hold.
struct RecordRef
{
    using ProjectData = Velmor::ProjectData;

    RecordKind kind = RecordKind::None;
    void* record = nullptr;

    RecordRef() = default;
    RecordRef(ProjectData::SurfaceData* r) : kind(r ? RecordKind::Surface : RecordKind::None), record(r) {}
    RecordRef(ProjectData::TextureData* r) : kind(r ? RecordKind::Texture : RecordKind::None), record(r) {}
    RecordRef(ProjectData::DirectionMapData* r) : kind(r ? RecordKind::DirectionMap : RecordKind::None), record(r) {}
    RecordRef(ProjectData::ScaleMapData* r) : kind(r ? RecordKind::ScaleMap : RecordKind::None), record(r) {}
    RecordRef(ProjectData::ModelData* r) : kind(r ? RecordKind::Model : RecordKind::None), record(r) {}
    // The project mask of `store`.
    static RecordRef projectMask(ProjectData& store)
    {
        RecordRef ref;
        ref.kind = RecordKind::ProjectMask;
        ref.record = &store.projectMask;
        return ref;
    }

    bool isNull() const { return record == nullptr; }
    bool operator==(const RecordRef& other) const { return record == other.record && kind == other.kind; }
    bool operator!=(const RecordRef& other) const { return !(*this == other); }

    ProjectData::SurfaceData* surface() const { return get<ProjectData::SurfaceData>(RecordKind::Surface); }
    ProjectData::MixedSurfaceData* mixedSurface() const { return dynamic_cast<ProjectData::MixedSurfaceData*>(surface()); }
    ProjectData::TextureData* texture() const { return get<ProjectData::TextureData>(RecordKind::Texture); }
    ProjectData::DirectionMapData* directionMap() const
    {
        return get<ProjectData::DirectionMapData>(RecordKind::DirectionMap);
    }
    ProjectData::ScaleMapData* scaleMap() const { return get<ProjectData::ScaleMapData>(RecordKind::ScaleMap); }
    ProjectData::ModelData* model() const { return get<ProjectData::ModelData>(RecordKind::Model); }
    Image* mask() const { return get<Image>(RecordKind::ProjectMask); }

    // The record's name, empty for a null reference; "Project Mask" for the
    // project mask.
    std::string name() const;
    // The image a browser thumbnail or view shows: textures, maps and the
    // project mask only.
    Image* image() const;

private:
    template <class Record>
    Record* get(RecordKind wanted) const
    {
        return kind == wanted ? static_cast<Record*>(record) : nullptr;
    }
};

Q_DECLARE_METATYPE(RecordRef)
