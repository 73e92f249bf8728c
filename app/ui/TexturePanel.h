#pragma once

#include "ProjectData.h"

#include <QWidget>

class Dialogs;
class ProjectDocument;
class PropertyForm;
class QLabel;
class QPushButton;

// Properties of a texture: name, file, size, format, sample type and the
// normal-map flags, with "Convert to Normal Map", "Fix Normal Map Slope" and
// reloading from a file. A texture whose file did not load says why.
class TexturePanel : public QWidget
{
    Q_OBJECT
public:
    TexturePanel(ProjectDocument* document, Dialogs* dialogs, QWidget* parent = nullptr);

    void setTexture(Velmor::ProjectData::TextureData* texture);
    void refresh();

    QLabel* statusLabel() const { return status; }

private:
    void convertToNormalMap();
    void fixSlope();
    void reload(bool chooseFile);

    ProjectDocument* document;
    Dialogs* dialogs;
    Velmor::ProjectData::TextureData* texture = nullptr;
    PropertyForm* form;
    QLabel* status;
    QLabel* details;
    QPushButton* convertButton;
    QPushButton* slopeButton;
};
