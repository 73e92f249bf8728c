#include "ProjectFlows.h"

#include "Dialogs.h"
#include "LogMessage.h"
#include "PbrImport.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"
#include "ProjectLoader.h"
#include "ProjectSaver.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

const char* const ProjectFlows::projectsDirectory = "./Projects";

namespace {
const char* const saveChooserTitle = "Select Empty Directory to Save Project";
const char* const modelFilters = "Mesh files (*.obj *.3ds *.fbx);; All files (*)";

// The default project location, made on first use so that the choosers open
// in it rather than falling back to another folder.
QString projectsFolder()
{
    QDir().mkpath(QString::fromUtf8(ProjectFlows::projectsDirectory));
    return QString::fromUtf8(ProjectFlows::projectsDirectory);
}
}

ProjectFlows::ProjectFlows(ProjectDocument* document, Dialogs* dialogs, QObject* parent)
    : QObject(parent)
    , document(document)
    , dialogs(dialogs)
    , lastUsedDirectory(QString::fromUtf8(projectsDirectory))
{
}

bool ProjectFlows::save()
{
    if (document->directory().isEmpty())
        return saveAs();
    return saveTo(document->directory());
}

bool ProjectFlows::saveAs()
{
    const QString directory = dialogs->chooseDirectory(QString::fromUtf8(saveChooserTitle), projectsFolder());
    if (directory.isEmpty())
        return false;
    return saveTo(directory);
}

bool ProjectFlows::saveTo(const QString& directory)
{
    logMessage(Info, QStringLiteral("Saving project to: ") + directory);
    if (!Velmor::ProjectSaver(directory).save(document->store())) {
        logMessage(Error, QStringLiteral("The project was not saved completely: ") + directory);
        return false;
    }
    document->markSaved(directory);
    return true;
}

bool ProjectFlows::offerSave()
{
    return askToSave(QStringLiteral("Save current project?"));
}

bool ProjectFlows::askToSave(const QString& question)
{
    const Dialogs::Button answer
        = dialogs->ask(question, Dialogs::Yes | Dialogs::No | Dialogs::Cancel, Dialogs::Yes);
    if (answer == Dialogs::Cancel)
        return false;
    if (answer == Dialogs::Yes)
        return save();
    return true;
}

void ProjectFlows::newProject()
{
    if (!offerSave())
        return;
    document->replaceProject(std::make_unique<Velmor::ProjectData>(), QString());
}

void ProjectFlows::loadProject()
{
    if (!offerSave())
        return;
    const QString directory = dialogs->chooseDirectory(QStringLiteral("Load Project Directory"), projectsFolder());
    if (directory.isEmpty())
        return;
    pendingDirectory = directory;
    dialogs->showWait(QStringLiteral("Loading project, please wait..."));
    QTimer::singleShot(1000, this, &ProjectFlows::startProjectLoad);
}

void ProjectFlows::startProjectLoad()
{
    const QString directory = pendingDirectory;
    pendingDirectory.clear();
    if (!directory.isEmpty())
        loadProjectFrom(directory);
    dialogs->hideWait();
}

bool ProjectFlows::loadProjectFrom(const QString& directory)
{
    const QFileInfo info(directory);
    if (directory.isEmpty() || !info.isDir()) {
        logMessage(Error, QStringLiteral("Project directory not found: ") + directory);
        return false;
    }
    const QString path = QDir::cleanPath(info.absoluteFilePath());
    logMessage(Info, QStringLiteral("Loading project from: ") + path);
    document->replaceProject(Velmor::ProjectLoader(path).load(), path);
    const Velmor::ProjectData& store = document->store();
    logMessage(Success, "Project loaded: %d textures, %d surfaces, %d direction maps, %d scale maps, %d models",
               int(store.textures.size()), int(store.surfaces.size()), int(store.directionMaps.size()),
               int(store.scaleMaps.size()), int(store.models.size()));
    emit projectLoaded();
    return true;
}

bool ProjectFlows::quit()
{
    return askToSave(QStringLiteral("Save project before quit?"));
}

QString ProjectFlows::fileChooserStart() const
{
    return lastUsedDirectory == QLatin1String(projectsDirectory) ? projectsFolder() : lastUsedDirectory;
}

std::vector<RecordRef> ProjectFlows::importImages()
{
    const QStringList paths = dialogs->chooseFiles(QStringLiteral("Load Image"), fileChooserStart(),
                                                   QString::fromUtf8(PbrImport::imageFilters),
                                                   QString::fromUtf8(PbrImport::allImagesFilter));
    if (paths.isEmpty())
        return {};
    lastUsedDirectory = QFileInfo(paths.first()).absolutePath();
    return ProjectEdits::importImages(*document, paths);
}

RecordRef ProjectFlows::importPbrImages()
{
    lastUsedDirectory = fileChooserStart();
    return PbrImport::importWithChooser(*document, *dialogs, lastUsedDirectory);
}

std::vector<RecordRef> ProjectFlows::importModels()
{
    const QStringList paths = dialogs->chooseFiles(QStringLiteral("Import Model"), fileChooserStart(),
                                                   QString::fromUtf8(modelFilters), QString());
    if (paths.isEmpty())
        return {};
    lastUsedDirectory = QFileInfo(paths.first()).absolutePath();
    return ProjectEdits::importModels(*document, paths);
}
