#include "ProjectDocument.h"

#include <QUndoStack>

ProjectDocument::ProjectDocument(QObject* parent)
    : QObject(parent)
    , project(std::make_unique<Velmor::ProjectData>())
    , stack(new QUndoStack(this))
{
    connect(stack, &QUndoStack::cleanChanged, this, [this](bool clean) { emit modifiedChanged(!clean); });
}

// The stack's commands may hold records taken out of the store; they go first.
ProjectDocument::~ProjectDocument()
{
    stack->clear();
}

QString ProjectDocument::displayName() const
{
    return projectDirectory.isEmpty() ? QStringLiteral("Untitled Project") : projectDirectory;
}

bool ProjectDocument::isModified() const
{
    return !stack->isClean();
}

void ProjectDocument::setReadOnly(bool value)
{
    if (readOnly == value)
        return;
    readOnly = value;
    emit readOnlyChanged(readOnly);
}

void ProjectDocument::replaceProject(std::unique_ptr<Velmor::ProjectData> store, const QString& directory)
{
    if (!store)
        return;
    // Commands point into the old store: clear them while it still exists.
    stack->clear();
    emit projectAboutToBeReplaced();
    project = std::move(store);
    projectDirectory = directory;
    emit projectReplaced();
    emit directoryChanged(projectDirectory);
    emit modifiedChanged(false);
}

void ProjectDocument::markSaved(const QString& directory)
{
    stack->setClean();
    if (projectDirectory != directory) {
        projectDirectory = directory;
        emit directoryChanged(projectDirectory);
    }
    emit modifiedChanged(false);
}

bool ProjectDocument::push(QUndoCommand* command)
{
    if (readOnly) {
        delete command;
        return false;
    }
    stack->push(command);
    return true;
}
