#pragma once

#include "ProjectData.h"

#include <QSet>
#include <QString>

namespace Velmor {

// Writes a whole project store into a project directory: "Cache/Mask.cache",
// then textures, models, maps and surfaces under "Textures", "Models",
// "Utilities" and "Surfaces". IDs are renumbered as list positions before any
// file that refers to them is written. Every file goes through a temporary
// name, so a failed save leaves the previous files as they were. Files of
// records deleted since the last save are left in place.
class ProjectSaver
{
public:
    explicit ProjectSaver(const QString& directory);

    // False when a folder or file could not be written (each one is logged).
    bool save(ProjectData& store);

private:
    bool ensureDirectory(const QString& path);
    // Folder + safe file name + extension, made unique within this save so
    // that records whose names collide on disk never overwrite each other.
    QString recordPath(const QString& folder, const std::string& name, const QString& extension);

    QString directory;
    QSet<QString> usedPaths;
};

} // namespace Velmor
