#pragma once

#include "RecordRef.h"

#include <QWidget>

class Dialogs;
class GenerationController;
class ProjectDocument;
class PropertyForm;
class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;
class SynthesizerPanel;

// The generation part of a surface's or mixed surface's page: output size,
// similarity mode, seam repair, direction and scale maps, the method and its
// parameters, then Clear Output, Generate and Cancel, the progress bar with
// the elapsed and remaining time, and the two save commands. Runs go through
// the GenerationController; while one runs, every control that would change
// what it reads is disabled and only Cancel is usable.
class GenerationPanel : public QWidget
{
    Q_OBJECT
public:
    GenerationPanel(ProjectDocument* document, Dialogs* dialogs, GenerationController* controller,
                    QWidget* parent = nullptr);

    void setSurface(Velmor::ProjectData::SurfaceData* surface);
    void refresh();

    SynthesizerPanel* synthesizerPanel() const { return synthesizer; }
    QPushButton* generateButton() const { return generate; }
    QPushButton* cancelButton() const { return cancel; }
    QPushButton* clearOutputButton() const { return clearOutput; }
    QPushButton* saveButton() const { return save; }
    QPushButton* saveAndLoadButton() const { return saveAndLoad; }
    QProgressBar* progressBar() const { return progress; }
    QLabel* timeLabel() const { return times; }

signals:
    // The views should repaint the generated output.
    void needRedraw();
    // "Save Generated Images and Load as Surface" made this surface.
    void surfaceCreated(const RecordRef& surface);

private:
    // A record choice with a "Disconnect" button and its "Use" check.
    template <class Record>
    void addMapChooser(const QString& label, Record* Velmor::ProjectData::SurfaceData::*map,
                       bool Velmor::ProjectData::SurfaceData::*use);
    void updateStates();
    // The progress bar and the elapsed and remaining time.
    void updateTimes();

    ProjectDocument* document;
    Dialogs* dialogs;
    GenerationController* controller;
    Velmor::ProjectData::SurfaceData* surface = nullptr;
    PropertyForm* form;
    SynthesizerPanel* synthesizer;
    QPushButton* clearOutput;
    QPushButton* generate;
    QPushButton* cancel;
    QProgressBar* progress;
    QLabel* times;
    QPushButton* save;
    QPushButton* saveAndLoad;
    QTimer* clock;
};
