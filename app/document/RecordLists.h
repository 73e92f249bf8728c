#pragma once

#include "RecordRef.h"

// Maps a record type to its list in the store and to its kind, so that the
// add and remove commands are written once for every kind.
template <class Record>
struct RecordList;

template <>
struct RecordList<Velmor::ProjectData::SurfaceData>
{
    static constexpr RecordKind kind = RecordKind::Surface;
    static auto& of(Velmor::ProjectData& store) { return store.surfaces; }
};

template <>
struct RecordList<Velmor::ProjectData::TextureData>
{
    static constexpr RecordKind kind = RecordKind::Texture;
    static auto& of(Velmor::ProjectData& store) { return store.textures; }
};

template <>
struct RecordList<Velmor::ProjectData::DirectionMapData>
{
    static constexpr RecordKind kind = RecordKind::DirectionMap;
    static auto& of(Velmor::ProjectData& store) { return store.directionMaps; }
};

template <>
struct RecordList<Velmor::ProjectData::ScaleMapData>
{
    static constexpr RecordKind kind = RecordKind::ScaleMap;
    static auto& of(Velmor::ProjectData& store) { return store.scaleMaps; }
};

template <>
struct RecordList<Velmor::ProjectData::ModelData>
{
    static constexpr RecordKind kind = RecordKind::Model;
    static auto& of(Velmor::ProjectData& store) { return store.models; }
};
