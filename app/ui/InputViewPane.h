#pragma once

#include "RecordRef.h"
#include "ViewSources.h"

#include <QWidget>

class Preview2D;
class ProjectDocument;
class QCheckBox;
class QComboBox;
class QLabel;

// The input view with its bar: what is selected in the project browser (a
// texture, a map, one of a surface's layers or maps, or the project mask,
// chosen in the bar), the 1:1 and fit buttons and the normalise switch.
class InputViewPane : public QWidget
{
    Q_OBJECT
public:
    explicit InputViewPane(ProjectDocument* document, QWidget* parent = nullptr);

    Preview2D* view() const { return preview; }
    QComboBox* sourceChooser() const { return chooser; }

public slots:
    // Models change nothing; everything else becomes the shown record.
    void showRecord(const RecordRef& record);
    // Finds the images again and re-uploads the shown one.
    void refresh();

signals:
    // Position and value under the cursor; empty when it leaves.
    void readoutChanged(const QString& text);

private:
    void showChoice(int index);
    void forget();

    ProjectDocument* document;
    RecordRef record;
    std::vector<ViewSources::InputChoice> choices;
    Preview2D* preview;
    QComboBox* chooser;
    QCheckBox* normalise;
    QLabel* sizeLabel;
};
