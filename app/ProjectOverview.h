#pragma once

#include <QImage>
#include <QSplitter>

class Image;
class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace Velmor {
class ProjectData;
}

// Read-only view of the open project: its records as a tree (textures, maps,
// surfaces with their layers and references) and a picture of the image
// behind the selected row. Holds no pointers beyond the store it was last
// shown, which the main window keeps alive until it calls showProject again.
class ProjectOverview : public QSplitter
{
    Q_OBJECT
public:
    explicit ProjectOverview(QWidget* parent = nullptr);

    // Rebuilds the tree from `project` (null clears it) and selects the
    // first texture, if any.
    void showProject(const Velmor::ProjectData* project);

    QTreeWidget* recordTree() const { return tree; }
    QLabel* imagePreview() const { return preview; }
    // The selected row's image at full size (null when the row has none); the
    // preview shows it scaled to fit.
    QImage previewImage() const { return picture; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void onCurrentItemChanged(QTreeWidgetItem* current);

private:
    QTreeWidgetItem* addRow(QTreeWidgetItem* parent, const QString& name, const QString& detail,
                            const Image* image = nullptr);

    void fitPicture();

    QTreeWidget* tree = nullptr;
    QLabel* preview = nullptr;
    QImage picture;
};
