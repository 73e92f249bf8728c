#pragma once

#include "ProjectData.h"

#include <QString>

#include <memory>

namespace Velmor {

// Builds a new project store from a project directory written by
// ProjectSaver. Kinds are read so that references resolve: textures and maps
// before surfaces, plain surfaces before mixed ones. A missing folder or a
// damaged file is reported and skipped; the rest of the project loads.
class ProjectLoader
{
public:
    explicit ProjectLoader(const QString& directory);

    std::unique_ptr<ProjectData> load();

private:
    // File names in `folder` that end in one of `extensions`, sorted by name;
    // empty, with `warning` + folder logged, when the folder is missing.
    QStringList recordFiles(const QString& folder, const QStringList& extensions, const char* warning) const;

    QString directory;
};

} // namespace Velmor
