#include "ProjectBrowserDock.h"

#include "Dialogs.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"
#include "ProjectModel.h"

#include <QAction>
#include <QHeaderView>
#include <QMenu>
#include <QTreeView>

ProjectBrowserDock::ProjectBrowserDock(ProjectDocument* document, Dialogs* dialogs, QWidget* parent)
    : QDockWidget(tr("Project Browser"), parent)
    , document(document)
    , dialogs(dialogs)
    , model(new ProjectModel(document, this))
    , tree(new QTreeView)
{
    setObjectName(QStringLiteral("ProjectBrowser"));
    tree->setModel(model);
    tree->setHeaderHidden(true);
    tree->setIconSize(QSize(ProjectModel::thumbnailSize, ProjectModel::thumbnailSize));
    tree->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    tree->setSelectionMode(QAbstractItemView::SingleSelection);
    tree->setDragDropMode(QAbstractItemView::DropOnly);
    tree->setAcceptDrops(true);
    tree->setDropIndicatorShown(true);
    tree->setContextMenuPolicy(Qt::CustomContextMenu);
    tree->expandAll();
    setWidget(tree);

    auto makeAction = [this](const QString& text, const QKeySequence& shortcut) {
        auto* action = new QAction(text, this);
        action->setShortcut(shortcut);
        // The browser's keys work while the browser has focus; the menus
        // carry the same actions for the rest of the window.
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        tree->addAction(action);
        return action;
    };
    rename = makeAction(tr("Rename"), QKeySequence(Qt::Key_F2));
    duplicate = makeAction(tr("Duplicate"), QKeySequence(Qt::CTRL + Qt::Key_D));
    remove = makeAction(tr("Delete"), QKeySequence::Delete);
    newSurface = makeAction(tr("New Surface"), QKeySequence());
    newMixedSurface = makeAction(tr("New Mixed Surface"), QKeySequence());
    newDirectionMap = makeAction(tr("New Direction Map"), QKeySequence());
    newScaleMap = makeAction(tr("New Scale Map"), QKeySequence());

    connect(rename, &QAction::triggered, this, [this] {
        if (!currentRecord().isNull())
            tree->edit(tree->currentIndex());
    });
    connect(duplicate, &QAction::triggered, this,
            [this] { selectRecord(ProjectEdits::duplicate(*this->document, currentRecord())); });
    connect(remove, &QAction::triggered, this, &ProjectBrowserDock::deleteCurrent);
    connect(newSurface, &QAction::triggered, this, [this] { selectRecord(ProjectEdits::newSurface(*this->document)); });
    connect(newMixedSurface, &QAction::triggered, this,
            [this] { selectRecord(ProjectEdits::newMixedSurface(*this->document)); });
    connect(newDirectionMap, &QAction::triggered, this,
            [this] { selectRecord(ProjectEdits::newDirectionMap(*this->document)); });
    connect(newScaleMap, &QAction::triggered, this,
            [this] { selectRecord(ProjectEdits::newScaleMap(*this->document)); });

    connect(tree, &QWidget::customContextMenuRequested, this, &ProjectBrowserDock::showContextMenu);
    connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
        updateActions();
        emit currentRecordChanged(currentRecord());
    });
    // New rows open their group so that they can be seen.
    connect(model, &QAbstractItemModel::rowsInserted, tree, [this](const QModelIndex& parent) { tree->expand(parent); });
    connect(model, &QAbstractItemModel::modelReset, tree, [this] {
        tree->expandAll();
        updateActions();
        emit currentRecordChanged(RecordRef());
    });
    connect(document, &ProjectDocument::readOnlyChanged, this, [this] { updateActions(); });
    updateActions();
}

RecordRef ProjectBrowserDock::currentRecord() const
{
    return model->recordAt(tree->currentIndex());
}

void ProjectBrowserDock::selectRecord(const RecordRef& record)
{
    const QModelIndex index = model->indexOf(record);
    if (!index.isValid())
        return;
    tree->setCurrentIndex(index);
    tree->scrollTo(index);
}

void ProjectBrowserDock::deleteCurrent()
{
    const RecordRef record = currentRecord();
    if (record.isNull() || document->isReadOnly())
        return;
    const QStringList users = ProjectEdits::referrers(*document, record);
    if (!users.isEmpty()) {
        const QString question = tr("'%1' is used by:\n%2\n\nDelete it and clear these references?")
                                     .arg(QString::fromStdString(record.name()), users.join('\n'));
        if (dialogs->ask(question, Dialogs::Yes | Dialogs::No, Dialogs::No) != Dialogs::Yes)
            return;
    }
    ProjectEdits::remove(*document, record);
}

void ProjectBrowserDock::updateActions()
{
    const bool editable = !document->isReadOnly();
    const bool hasRecord = !currentRecord().isNull();
    for (QAction* action : {rename, duplicate, remove})
        action->setEnabled(editable && hasRecord);
    for (QAction* action : {newSurface, newMixedSurface, newDirectionMap, newScaleMap})
        action->setEnabled(editable);
}

void ProjectBrowserDock::showContextMenu(const QPoint& position)
{
    QMenu menu(this);
    if (!currentRecord().isNull()) {
        menu.addAction(rename);
        menu.addAction(duplicate);
        menu.addAction(remove);
        menu.addSeparator();
    }
    menu.addAction(newSurface);
    menu.addAction(newMixedSurface);
    menu.addAction(newDirectionMap);
    menu.addAction(newScaleMap);
    menu.exec(tree->viewport()->mapToGlobal(position));
}
