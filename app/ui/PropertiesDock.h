#pragma once

#include "RecordRef.h"

#include <QDockWidget>

class Dialogs;
class GenerationController;
class GenerationPanel;
class MapPanel;
class MixedSurfacePanel;
class ModelPanel;
class ProjectDocument;
class QGroupBox;
class QLabel;
class SurfacePanel;
class SynthesizerPanel;
class TexturePanel;

// The "Properties" dock: the panel of the selected record (a surface or mixed
// surface shows its generation panel below its own). Panels redraw when the
// document reports a change and are disabled while the project is read-only,
// except the generation panel, which keeps Cancel usable during a run.
class PropertiesDock : public QDockWidget
{
    Q_OBJECT
public:
    PropertiesDock(ProjectDocument* document, Dialogs* dialogs, GenerationController* controller,
                   QWidget* parent = nullptr);

    RecordRef shownRecord() const { return record; }

    SurfacePanel* surfacePanel() const { return surface; }
    SynthesizerPanel* synthesizerPanel() const;
    GenerationPanel* generationPanel() const { return generation; }
    MixedSurfacePanel* mixedSurfacePanel() const { return mixed; }
    TexturePanel* texturePanel() const { return texture; }
    ModelPanel* modelPanel() const { return model; }
    MapPanel* mapPanel() const { return map; }

public slots:
    void showRecord(const RecordRef& record);

private:
    void refresh();
    // Wraps a panel in a titled box; the box is shown only with its panel.
    QGroupBox* box(const QString& title, QWidget* panel);

    ProjectDocument* document;
    RecordRef record;
    QWidget* panels;
    QLabel* emptyNote;
    SurfacePanel* surface;
    GenerationPanel* generation;
    MixedSurfacePanel* mixed;
    TexturePanel* texture;
    ModelPanel* model;
    MapPanel* map;
    QGroupBox *surfaceBox, *generationBox, *mixedBox, *textureBox, *modelBox, *mapBox;
};
