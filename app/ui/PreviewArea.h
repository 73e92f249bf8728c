#pragma once

#include "RecordRef.h"

#include <QSplitter>

class PreviewDataLoader;
class PreviewPanel;
class PreviewSelection;
class Preview3D;
class ProjectDocument;

// The 3D preview with its panel beside it. Shows the selected surface on the
// chosen mesh; selecting a model record loads its mesh (off the GUI thread)
// and shows it. Sample meshes and environment maps are read from ./data.
class PreviewArea : public QSplitter
{
    Q_OBJECT
public:
    explicit PreviewArea(ProjectDocument* document, QWidget* parent = nullptr);

    Preview3D* preview() const { return view; }
    PreviewPanel* panel() const { return controls; }
    PreviewSelection* selection() const { return shown; }

public slots:
    void showRecord(const RecordRef& record);
    // One of PreviewSettings::MeshChoice, from the Mesh menu.
    void showMesh(int choice);

private:
    void refreshLayers();
    void updateTransform();

    PreviewSelection* shown;
    PreviewDataLoader* loader;
    Preview3D* view;
    PreviewPanel* controls;
};
