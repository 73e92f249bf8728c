#pragma once

#include "RecordRef.h"

#include <QDockWidget>

class Dialogs;
class ProjectDocument;
class ProjectModel;
class QAction;
class QTreeView;

// The project browser: the records grouped by kind, with rename in place,
// duplicate, delete and the new-record commands in its context menu, and
// image and mesh files taken by drag and drop.
class ProjectBrowserDock : public QDockWidget
{
    Q_OBJECT
public:
    ProjectBrowserDock(ProjectDocument* document, Dialogs* dialogs, QWidget* parent = nullptr);

    QTreeView* view() const { return tree; }
    ProjectModel* projectModel() const { return model; }
    RecordRef currentRecord() const;
    void selectRecord(const RecordRef& record);

    QAction* renameAction() const { return rename; }
    QAction* duplicateAction() const { return duplicate; }
    QAction* deleteAction() const { return remove; }
    QAction* newSurfaceAction() const { return newSurface; }
    QAction* newMixedSurfaceAction() const { return newMixedSurface; }
    QAction* newDirectionMapAction() const { return newDirectionMap; }
    QAction* newScaleMapAction() const { return newScaleMap; }

signals:
    void currentRecordChanged(const RecordRef& record);

public slots:
    // Asks first when other records refer to the selected one.
    void deleteCurrent();

private:
    void updateActions();
    void showContextMenu(const QPoint& position);

    ProjectDocument* document;
    Dialogs* dialogs;
    ProjectModel* model;
    QTreeView* tree;
    QAction *rename, *duplicate, *remove, *newSurface, *newMixedSurface, *newDirectionMap, *newScaleMap;
};
