#include "PreviewSelection.h"

#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "ProjectDocument.h"

using Velmor::ProjectData;

PreviewSelection::PreviewSelection(ProjectDocument* document, QObject* parent)
    : QObject(parent)
    , document(document)
{
    connect(document, &ProjectDocument::recordChanged, this, &PreviewSelection::recordChanged);
    connect(document, &ProjectDocument::recordAboutToBeRemoved, this, &PreviewSelection::recordRemoved);
    // Layers may point at a texture that is gone once it is removed.
    connect(document, &ProjectDocument::recordRemoved, this, [this](RecordKind kind, int) {
        if (kind == RecordKind::Texture && shownSurface)
            emit layersChanged();
    });
    connect(document, &ProjectDocument::projectAboutToBeReplaced, this, [this] {
        shownSurface = nullptr;
        emit layersChanged();
        if (shownModel) {
            shownModel = nullptr;
            emit modelChanged(QString());
        }
    });
}

PreviewSelection::Layers PreviewSelection::layers() const
{
    Layers result{};
    if (!shownSurface)
        return result;
    const Velmor::ImageSynthesizer* synthesizer = shownSurface->synthesizer();
    const LayeredImage* output = synthesizer && synthesizer->targetReady ? synthesizer->target : nullptr;
    for (const ProjectData::SurfaceLayer& layer : shownSurface->layers) {
        const int mode = int(layer.mode);
        if (mode < 0 || mode >= int(result.size()) || result[mode])
            continue;
        const Image* generated = output ? output->layer(layer.name) : nullptr;
        if (generated && !generated->isEmpty())
            result[mode] = generated;
        else if (layer.texture && !layer.texture->image.isEmpty())
            result[mode] = &layer.texture->image;
    }
    return result;
}

QMatrix4x4 PreviewSelection::modelTransform() const
{
    QMatrix4x4 transform;
    if (!shownModel)
        return transform;
    transform.rotate(shownModel->rotationZ, 0, 0, 1);
    transform.rotate(shownModel->rotationY, 0, 1, 0);
    transform.rotate(shownModel->rotationX, 1, 0, 0);
    transform.scale(shownModel->scale);
    return transform;
}

void PreviewSelection::select(const RecordRef& record)
{
    if (ProjectData::SurfaceData* surface = record.surface()) {
        shownSurface = surface;
        emit layersChanged();
    } else if (ProjectData::ModelData* model = record.model()) {
        if (model == shownModel)
            return;
        shownModel = model;
        emit modelChanged(model->path);
        emit modelTransformChanged();
    }
}

void PreviewSelection::outputChanged(ProjectData::SurfaceData* surface)
{
    if (surface == shownSurface)
        emit layersChanged();
}

void PreviewSelection::recordChanged(const RecordRef& record)
{
    if (record.surface() && record.surface() == shownSurface) {
        emit layersChanged();
    } else if (record.texture() && shownSurface) {
        // A texture's image changed: redraw when the shown surface uses it.
        for (const ProjectData::SurfaceLayer& layer : shownSurface->layers)
            if (layer.texture == record.texture()) {
                emit layersChanged();
                break;
            }
    } else if (record.model() && record.model() == shownModel) {
        emit modelTransformChanged();
    }
}

void PreviewSelection::recordRemoved(const RecordRef& record)
{
    if (record.surface() && record.surface() == shownSurface) {
        shownSurface = nullptr;
        emit layersChanged();
    } else if (record.model() && record.model() == shownModel) {
        shownModel = nullptr;
        emit modelChanged(QString());
        emit modelTransformChanged();
    }
}
