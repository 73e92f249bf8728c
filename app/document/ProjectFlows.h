#pragma once

#include <QObject>
#include "RecordRef.h"

#include <QString>

#include <vector>

class Dialogs;
class ProjectDocument;

// The File menu's project commands as the user walks through them: the
// questions, the choosers and what each answer does. Every question goes
// through Dialogs, so the flows run unchanged in tests.
class ProjectFlows : public QObject
{
    Q_OBJECT
public:
    // Where the project choosers start, below the working directory.
    static const char* const projectsDirectory;

    ProjectFlows(ProjectDocument* document, Dialogs* dialogs, QObject* parent = nullptr);

    // False when cancelled or when the project could not be written.
    bool save();
    bool saveAs();
    void newProject();
    // Asks, chooses a directory, shows the wait note and loads one second
    // later (startProjectLoad), so that the note is painted first.
    void loadProject();
    // Loads `directory` at once; false (logged) when it is not a directory.
    bool loadProjectFrom(const QString& directory);
    // True when the application may quit.
    bool quit();

    // Each returns what it added (nothing when cancelled).
    std::vector<RecordRef> importImages();
    RecordRef importPbrImages();
    std::vector<RecordRef> importModels();

    // The folder the file choosers start in: the last one used.
    QString lastDirectory() const { return lastUsedDirectory; }

public slots:
    void startProjectLoad();

signals:
    void projectLoaded();

private:
    // Asks "Save current project?"; false when the flow must end here.
    bool offerSave();
    // Yes saves (false when that save is cancelled or fails), No goes on,
    // Cancel returns false.
    bool askToSave(const QString& question);
    bool saveTo(const QString& directory);
    // The last folder used, or the default project location before any.
    QString fileChooserStart() const;

    ProjectDocument* document;
    Dialogs* dialogs;
    QString pendingDirectory;
    QString lastUsedDirectory;
};
