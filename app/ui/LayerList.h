#pragma once

#include "ProjectData.h"

#include <QWidget>

class Dialogs;
class ProjectDocument;
class QComboBox;
class QLineEdit;
class QListWidget;
class QToolButton;

// A surface's layer list with add, remove, move up and down, and the editor
// of the selected layer (name, texture, mode). Every change replaces the
// layer list through one undo command.
class LayerList : public QWidget
{
    Q_OBJECT
public:
    LayerList(ProjectDocument* document, Dialogs* dialogs, QWidget* parent = nullptr);

    void setSurface(Velmor::ProjectData::SurfaceData* surface);
    void refresh();

    QListWidget* list() const { return rows; }
    QLineEdit* nameEdit() const { return name; }
    QComboBox* textureChoice() const { return texture; }
    QComboBox* modeChoice() const { return mode; }

private:
    using Layers = std::vector<Velmor::ProjectData::SurfaceLayer>;

    int currentLayer() const;
    void change(const Layers& layers, const QString& text, int select);
    void addLayer();
    void removeLayer();
    void moveLayer(int step);
    void refreshEditor();

    ProjectDocument* document;
    Dialogs* dialogs;
    Velmor::ProjectData::SurfaceData* surface = nullptr;
    QListWidget* rows;
    QLineEdit* name;
    QComboBox* texture;
    QComboBox* mode;
    QToolButton* removeButton;
    QToolButton* upButton;
    QToolButton* downButton;
};
