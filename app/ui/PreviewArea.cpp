#include "PreviewArea.h"

#include "Preview3D.h"
#include "PreviewDataLoader.h"
#include "PreviewPanel.h"
#include "PreviewSelection.h"

#include <QScrollArea>
#include <QTimer>

namespace {
const char* const bridgePath = "./data/Meshes/Bridge.obj";
const char* const treePath = "./data/Meshes/Tree.obj";
const char* const environmentFolder = "data/Textures/EnvMaps/";
} // namespace

PreviewArea::PreviewArea(ProjectDocument* document, QWidget* parent)
    : QSplitter(Qt::Horizontal, parent)
    , shown(new PreviewSelection(document, this))
    , loader(new PreviewDataLoader(this))
    , view(new Preview3D)
    , controls(new PreviewPanel)
{
    setObjectName(QStringLiteral("3D Preview"));
    auto* scroll = new QScrollArea;
    scroll->setWidget(controls);
    scroll->setWidgetResizable(true);
    scroll->setMinimumWidth(260);
    addWidget(view);
    addWidget(scroll);
    setStretchFactor(0, 1);
    setStretchFactor(1, 0);

    view->setSettings(controls->settings());
    connect(controls, &PreviewPanel::settingsChanged, view, &Preview3D::setSettings);
    connect(controls, &PreviewPanel::settingsChanged, this, &PreviewArea::updateTransform);
    connect(controls, &PreviewPanel::resetCameraRequested, view, &Preview3D::resetCamera);
    connect(controls, &PreviewPanel::environmentChosen, this,
            [this](const QString& name) { loader->loadEnvironment(environmentFolder + name); });

    connect(loader, &PreviewDataLoader::meshLoaded, view, &Preview3D::setSampleMesh);
    connect(loader, &PreviewDataLoader::environmentLoaded, view, &Preview3D::setEnvironment);

    connect(shown, &PreviewSelection::layersChanged, this, &PreviewArea::refreshLayers);
    connect(shown, &PreviewSelection::modelTransformChanged, this, &PreviewArea::updateTransform);
    connect(shown, &PreviewSelection::modelChanged, this, [this](const QString& path) {
        view->setSampleMesh(PreviewSettings::ModelMesh, MeshData());
        loader->loadMesh(PreviewSettings::ModelMesh, path);
        if (!path.isEmpty())
            controls->setMeshChoice(PreviewSettings::ModelMesh);
    });

    // Once the event loop runs, so that the log's welcome lines come first.
    QTimer::singleShot(0, this, [this] {
        loader->loadMesh(PreviewSettings::BridgeMesh, bridgePath);
        loader->loadMesh(PreviewSettings::TreeMesh, treePath);
        loader->loadEnvironment(environmentFolder + controls->environmentName());
    });
}

void PreviewArea::showRecord(const RecordRef& record)
{
    shown->select(record);
}

void PreviewArea::showMesh(int choice)
{
    controls->setMeshChoice(choice);
}

void PreviewArea::updateTransform()
{
    // The model record's rotation and scale belong to its mesh only.
    const bool model = controls->settings().mesh == PreviewSettings::ModelMesh;
    view->setModelTransform(model ? shown->modelTransform() : QMatrix4x4());
}

void PreviewArea::refreshLayers()
{
    const PreviewSelection::Layers layers = shown->layers();
    std::array<const Image*, Preview3D::LayerSlotCount> images{};
    std::copy(layers.begin(), layers.end(), images.begin());
    view->setLayers(images);
}
