#pragma once

#include <QSplitter>

class QLabel;

// The middle of the main window: the input view and the generated view side
// by side above the 3D preview. Plain placeholders until the views exist.
class CentralArea : public QSplitter
{
    Q_OBJECT
public:
    explicit CentralArea(QWidget* parent = nullptr);

    QWidget* inputView() const { return input; }
    QWidget* generatedView() const { return generated; }
    QWidget* preview3D() const { return preview; }

private:
    QWidget* input;
    QWidget* generated;
    QWidget* preview;
};
