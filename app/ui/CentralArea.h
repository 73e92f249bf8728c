#pragma once

#include "RecordRef.h"

#include <QSplitter>

class GeneratedViewPane;
class InputViewPane;
class Preview2D;
class Preview2DExtended;
class PreviewArea;
class ProjectDocument;

// The middle of the main window: the input view and the generated view side
// by side above the 3D preview.
class CentralArea : public QSplitter
{
    Q_OBJECT
public:
    explicit CentralArea(ProjectDocument* document, QWidget* parent = nullptr);

    Preview2D* inputView() const;
    Preview2DExtended* generatedView() const;
    InputViewPane* inputPane() const { return input; }
    GeneratedViewPane* generatedPane() const { return generated; }
    PreviewArea* previewArea() const { return preview; }

public slots:
    // The browser's selection: the input view shows it, the generated view
    // the output of the last selected surface.
    void showRecord(const RecordRef& record);
    // Finds every shown image in the records again and re-uploads it: after
    // a run's progress, painting, or any edit the views do not hear of.
    void refreshViews();

signals:
    // Position and value under the cursor in either view; empty when it leaves.
    void readoutChanged(const QString& text);

private:
    InputViewPane* input;
    GeneratedViewPane* generated;
    PreviewArea* preview;
};
