#pragma once

#include <QSplitter>

class PreviewArea;
class ProjectDocument;
class QLabel;

// The middle of the main window: the input view and the generated view side
// by side above the 3D preview. The 2D views are placeholders until they exist.
class CentralArea : public QSplitter
{
    Q_OBJECT
public:
    explicit CentralArea(ProjectDocument* document, QWidget* parent = nullptr);

    QWidget* inputView() const { return input; }
    QWidget* generatedView() const { return generated; }
    PreviewArea* previewArea() const { return preview; }

private:
    QWidget* input;
    QWidget* generated;
    PreviewArea* preview;
};
