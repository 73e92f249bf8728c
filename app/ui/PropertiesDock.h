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
class QScrollArea;
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

protected:
    // A wheel over a field that has no focus scrolls the dock instead of
    // changing the field's value behind the user's back.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void refresh();
    // Wraps a panel in a titled box; the box is shown only with its panel.
    QGroupBox* box(const QString& title, QWidget* panel);

    ProjectDocument* document;
    RecordRef record;
    QWidget* panels;
    QScrollArea* scroll = nullptr;
    QLabel* emptyNote;
    SurfacePanel* surface;
    GenerationPanel* generation;
    MixedSurfacePanel* mixed;
    TexturePanel* texture;
    ModelPanel* model;
    MapPanel* map;
    QGroupBox *surfaceBox, *generationBox, *mixedBox, *textureBox, *modelBox, *mapBox;
};
