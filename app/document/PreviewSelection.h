#pragma once

#include "ProjectData.h"
#include "RecordRef.h"

#include <QMatrix4x4>
#include <QObject>
#include <QString>

#include <array>

class ProjectDocument;

// What the 3D preview shows from the project: the layers of the last selected
// surface (its generated output where there is one) and the last selected
// model record with its transform. Follows the document's signals, so the
// preview refreshes when the shown records change or go away.
class PreviewSelection : public QObject
{
    Q_OBJECT
public:
    // Layer images by LayerMode; null where the surface has no such layer.
    using Layers = std::array<const Image*, 6>;

    explicit PreviewSelection(ProjectDocument* document, QObject* parent = nullptr);

    Velmor::ProjectData::SurfaceData* surface() const { return shownSurface; }
    Velmor::ProjectData::ModelData* model() const { return shownModel; }
    Layers layers() const;
    // Rotation about x, then y, then z (degrees), then the uniform scale.
    QMatrix4x4 modelTransform() const;

public slots:
    // Surfaces and models become the shown ones; other records change nothing.
    void select(const RecordRef& record);
    // A run produced new output for `surface`.
    void outputChanged(Velmor::ProjectData::SurfaceData* surface);

signals:
    void layersChanged();
    // Another model (or none) is shown: its mesh file must be loaded.
    void modelChanged(const QString& path);
    void modelTransformChanged();

private:
    void recordChanged(const RecordRef& record);
    void recordRemoved(const RecordRef& record);

    ProjectDocument* document;
    Velmor::ProjectData::SurfaceData* shownSurface = nullptr;
    Velmor::ProjectData::ModelData* shownModel = nullptr;
};
