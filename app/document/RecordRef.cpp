#include "RecordRef.h"

std::string RecordRef::name() const
{
    switch (kind) {
    case RecordKind::Surface: return surface()->name;
    case RecordKind::Texture: return texture()->name;
    case RecordKind::DirectionMap: return directionMap()->name;
    case RecordKind::ScaleMap: return scaleMap()->name;
    case RecordKind::Model: return model()->name;
    case RecordKind::ProjectMask: return "Project Mask";
    case RecordKind::None: break;
    }
    return std::string();
}

Image* RecordRef::image() const
{
    switch (kind) {
    case RecordKind::Texture: return &texture()->image;
    case RecordKind::DirectionMap: return &directionMap()->image;
    case RecordKind::ScaleMap: return &scaleMap()->image;
    case RecordKind::ProjectMask: return mask();
    default: return nullptr;
    }
}
