#include "MainWindow.h"

#include "AboutText.h"
#include "CentralArea.h"
#include "DialogsSwitch.h"
#include "DropImport.h"
#include "GeneratedViewPane.h"
#include "GenerationController.h"
#include "GenerationPanel.h"
#include "LogDock.h"
#include "LogMessage.h"
#include "PaintToolBar.h"
#include "PaintToolBox.h"
#include "ProjectBrowserDock.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"
#include "ProjectFlows.h"
#include "Preview2DExtended.h"
#include "PreviewArea.h"
#include "PreviewSelection.h"
#include "PreviewSettings.h"
#include "PropertiesDock.h"
#include "UvToolBar.h"
#include "WidgetDialogs.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QUndoStack>
#include <QUrl>

namespace {
const char* const titlePrefix = "Ondrels - ";

QStringList localFiles(const QMimeData* data)
{
    QStringList paths;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    return paths;
}
} // namespace

MainWindow* MainWindow::instance()
{
    static MainWindow* window = nullptr;
    if (!window)
        window = new MainWindow;
    return window;
}

MainWindow::MainWindow()
    : widgetDialogs(std::make_unique<WidgetDialogs>(this))
    , dialogs(std::make_unique<DialogsSwitch>(widgetDialogs.get()))
    , projectDocument(new ProjectDocument(this))
    , projectFlows(new ProjectFlows(projectDocument, dialogs.get(), this))
    , generation(new GenerationController(projectDocument, this))
{
    setObjectName(QStringLiteral("MainWindow"));
    setAcceptDrops(true);
    setDockOptions(QMainWindow::AnimatedDocks | QMainWindow::AllowNestedDocks | QMainWindow::AllowTabbedDocks);

    log = new LogDock(this);
    central = new CentralArea(projectDocument, this);
    setCentralWidget(central);
    browser = new ProjectBrowserDock(projectDocument, dialogs.get(), this);
    properties = new PropertiesDock(projectDocument, dialogs.get(), generation, this);
    connect(browser, &ProjectBrowserDock::currentRecordChanged, properties, &PropertiesDock::showRecord);
    connect(browser, &ProjectBrowserDock::currentRecordChanged, central, &CentralArea::showRecord);
    connect(central, &CentralArea::readoutChanged, this, [this](const QString& text) {
        if (text.isEmpty())
            statusBar()->clearMessage();
        else
            statusBar()->showMessage(text);
    });
    // The views and the 3D preview follow a run; a surface loaded from saved output is selected.
    connect(generation, &GenerationController::needRedraw, central, &CentralArea::refreshGeneratedView);
    connect(generation, &GenerationController::outputChanged, central->previewArea()->selection(),
            &PreviewSelection::outputChanged);
    connect(properties->generationPanel(), &GenerationPanel::surfaceCreated, browser, &ProjectBrowserDock::selectRecord);

    // The tools paint the maps of the surface last chosen in the browser.
    paintToolBox = new PaintToolBox(projectDocument, this);
    connect(browser, &ProjectBrowserDock::currentRecordChanged, paintToolBox, &PaintToolBox::showRecord);
    Preview2DExtended* generatedView = central->generatedView();
    connect(paintToolBox, &PaintToolBox::toolChanged, generatedView, &Preview2DExtended::setTool);
    // The brush outline follows the radius.
    connect(paintToolBox, &PaintToolBox::settingsChanged, generatedView, QOverload<>::of(&QWidget::update));

    createMenus();
    arrangeDocks();

    // After a load the first surface is shown, so that the panels are not empty.
    connect(projectFlows, &ProjectFlows::projectLoaded, this, [this] {
        if (!projectDocument->store().surfaces.empty())
            browser->selectRecord(RecordRef(projectDocument->store().surfaces.front().get()));
    });
    connect(projectDocument, &ProjectDocument::directoryChanged, this, &MainWindow::updateTitle);
    connect(projectDocument, &ProjectDocument::modifiedChanged, this, &MainWindow::updateTitle);
    updateTitle();

    logMessage(Info, QStringLiteral("Welcome to Ondrels!"));
    logMessage(Info, QStringLiteral("HAVE FUN!"));
}

MainWindow::~MainWindow() = default;

void MainWindow::setDialogs(Dialogs* replacement)
{
    dialogs->setTarget(replacement ? replacement : widgetDialogs.get());
}

bool MainWindow::loadProject(const QString& directory)
{
    return projectFlows->loadProjectFrom(directory);
}

void MainWindow::updateTitle()
{
    setWindowTitle(QString(titlePrefix) + projectDocument->displayName() + QStringLiteral("[*]"));
    setWindowModified(projectDocument->isModified());
}

void MainWindow::createMenus()
{
    QStyle* style = QApplication::style();
    auto add = [this](QMenu* menu, const QString& text, const QKeySequence& shortcut, auto slot) {
        QAction* action = menu->addAction(text);
        action->setShortcut(shortcut);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };

    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* newProject = add(file, tr("New Project"), QKeySequence::New, [this] { projectFlows->newProject(); });
    QAction* loadProject = add(file, tr("Load Project..."), QKeySequence::Open, [this] { projectFlows->loadProject(); });
    QAction* save = add(file, tr("Save Project"), QKeySequence::Save, [this] { projectFlows->save(); });
    add(file, tr("Save Project As..."), QKeySequence::SaveAs, [this] { projectFlows->saveAs(); });
    file->addSeparator();
    QAction* importImage = add(file, tr("Import Image..."), QKeySequence(Qt::CTRL + Qt::Key_I), [this] {
        const std::vector<RecordRef> added = projectFlows->importImages();
        if (!added.empty())
            browser->selectRecord(added.back());
    });
    QAction* importPbr = add(file, tr("Import PBR Images..."), QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_I),
                             [this] { browser->selectRecord(projectFlows->importPbrImages()); });
    QAction* importModel = add(file, tr("Import Model..."), QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_M),
        [this] {
            const std::vector<RecordRef> added = projectFlows->importModels();
            if (!added.empty())
                browser->selectRecord(added.back());
        });
    file->addSeparator();
    file->addAction(browser->newDirectionMapAction());
    file->addAction(browser->newScaleMapAction());
    file->addSeparator();
    QAction* quit = add(file, tr("Quit"), QKeySequence::Quit, [this] { close(); });
    quit->setMenuRole(QAction::QuitRole);
    newProject->setIcon(style->standardIcon(QStyle::SP_FileIcon));
    loadProject->setIcon(style->standardIcon(QStyle::SP_DialogOpenButton));
    save->setIcon(style->standardIcon(QStyle::SP_DialogSaveButton));

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    QUndoStack* stack = projectDocument->undoStack();
    undoAction = add(edit, tr("Undo"), QKeySequence::Undo, [this, stack] {
        if (!projectDocument->isReadOnly())
            stack->undo();
    });
    redoAction = add(edit, tr("Redo"), QKeySequence::Redo, [this, stack] {
        if (!projectDocument->isReadOnly())
            stack->redo();
    });
    // The toolbar keeps short labels; the menu says what would be undone.
    undoAction->setIconText(tr("Undo"));
    redoAction->setIconText(tr("Redo"));
    undoAction->setIcon(style->standardIcon(QStyle::SP_ArrowBack));
    redoAction->setIcon(style->standardIcon(QStyle::SP_ArrowForward));
    connect(stack, &QUndoStack::indexChanged, this, &MainWindow::updateUndoActions);
    connect(stack, &QUndoStack::cleanChanged, this, &MainWindow::updateUndoActions);
    connect(projectDocument, &ProjectDocument::readOnlyChanged, this, &MainWindow::updateUndoActions);
    connect(projectDocument, &ProjectDocument::projectReplaced, this, &MainWindow::updateUndoActions);
    updateUndoActions();
    edit->addSeparator();
    edit->addAction(browser->renameAction());
    edit->addAction(browser->duplicateAction());
    edit->addAction(browser->deleteAction());
    edit->addSeparator();
    edit->addAction(browser->newSurfaceAction());
    edit->addAction(browser->newMixedSurfaceAction());

    QMenu* view = menuBar()->addMenu(tr("&View"));
    view->addAction(browser->toggleViewAction());
    view->addAction(properties->toggleViewAction());
    view->addAction(log->toggleViewAction());

    // The preview's mesh; importing a model selects it and shows it.
    QMenu* mesh = menuBar()->addMenu(tr("&Mesh"));
    const std::pair<QString, int> meshes[] = {
        {tr("Cube"), PreviewSettings::CubeMesh},     {tr("Sphere"), PreviewSettings::SphereMesh},
        {tr("Cylinder"), PreviewSettings::CylinderMesh}, {tr("Plane"), PreviewSettings::PlaneMesh},
        {tr("Bridge"), PreviewSettings::BridgeMesh}, {tr("Tree"), PreviewSettings::TreeMesh}};
    for (const auto& [text, choice] : meshes) {
        const int shown = choice;
        mesh->addAction(text, this, [this, shown] { central->previewArea()->showMesh(shown); });
    }
    mesh->addSeparator();
    mesh->addAction(importModel);

    // The generated view's UV tools, also in its own strip.
    QMenu* uv = menuBar()->addMenu(tr("&UV"));
    const UvToolBar* uvTools = central->generatedPane()->uvToolBar();
    uv->addAction(uvTools->layoutAction());
    uv->addAction(uvTools->islandSelectionAction());
    uv->addSeparator();
    uv->addAction(uvTools->islandMaskAction());
    uv->addAction(uvTools->allIslandsMaskAction());
    uv->addAction(uvTools->autoDirectionAction());
    uv->addSeparator();
    uv->addAction(uvTools->fixSeamsAction());

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    QAction* about = help->addAction(tr("About Ondrels"));
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, [this] { QMessageBox::about(this, tr("About Ondrels"), aboutText()); });

    QToolBar* tools = addToolBar(tr("Main Toolbar"));
    tools->setObjectName(QStringLiteral("MainToolbar"));
    tools->setMovable(false);
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    tools->addAction(newProject);
    tools->addAction(loadProject);
    tools->addAction(save);
    tools->addSeparator();
    tools->addAction(importImage);
    tools->addAction(importPbr);
    tools->addSeparator();
    tools->addAction(undoAction);
    tools->addAction(redoAction);
    view->addSeparator();
    view->addAction(tools->toggleViewAction());

    auto* paintBar = new PaintToolBar(paintToolBox, this);
    addToolBar(paintBar);
    view->addAction(paintBar->toggleViewAction());
}

void MainWindow::updateUndoActions()
{
    const QUndoStack* stack = projectDocument->undoStack();
    const bool editable = !projectDocument->isReadOnly();
    undoAction->setEnabled(editable && stack->canUndo());
    redoAction->setEnabled(editable && stack->canRedo());
    undoAction->setText(stack->canUndo() ? tr("Undo %1").arg(stack->undoText()) : tr("Undo"));
    redoAction->setText(stack->canRedo() ? tr("Redo %1").arg(stack->redoText()) : tr("Redo"));
}

void MainWindow::arrangeDocks()
{
    addDockWidget(Qt::LeftDockWidgetArea, browser);
    addDockWidget(Qt::RightDockWidgetArea, properties);
    addDockWidget(Qt::LeftDockWidgetArea, log);
    // The log spans the bottom of the left column under the browser.
    splitDockWidget(browser, log, Qt::Vertical);

    // A window that fits the screen it opens on, with room for the views.
    QSize size(1600, 1000);
    if (const QScreen* screen = QApplication::primaryScreen())
        size = size.boundedTo(screen->availableSize());
    resize(size);
    const bool wide = size.width() >= 1500;
    resizeDocks({browser, properties}, {wide ? 380 : 280, wide ? 420 : 370}, Qt::Horizontal);
    resizeDocks({browser, log}, {size.height() * 3 / 5, size.height() * 2 / 5}, Qt::Vertical);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (projectFlows->quit())
        event->accept();
    else
        event->ignore();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!projectDocument->isReadOnly() && DropImport::canImport(localFiles(event->mimeData())))
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    DropImport::importFiles(*projectDocument, localFiles(event->mimeData()), false);
    event->acceptProposedAction();
}
