#include "TextureStatus.h"

#include <QFileInfo>

QString textureStatus(const Velmor::ProjectData::TextureData& texture)
{
    if (texture.path.isEmpty())
        return QStringLiteral("Generated texture, no file.");
    if (!texture.loadFailed)
        return texture.path;
    if (!QFileInfo::exists(texture.path))
        return QStringLiteral("Image file not found: ") + texture.path;
    return QStringLiteral("Image file could not be read (unsupported or damaged): ") + texture.path;
}
