#pragma once

#include "PreviewSettings.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QPushButton;

// The 3D preview's controls: mesh, lighting, ambient, environment,
// background and material constants. Emits the whole settings record on any
// change; the preview draws from it.
class PreviewPanel : public QWidget
{
    Q_OBJECT
public:
    explicit PreviewPanel(QWidget* parent = nullptr);

    PreviewSettings settings() const { return current; }
    QString environmentName() const;
    // Selects a mesh choice (PreviewSettings::MeshChoice) as if picked.
    void setMeshChoice(int choice);

    QComboBox* meshBox() const { return mesh; }
    QComboBox* lightingBox() const { return lighting; }
    QComboBox* environmentBox() const { return environment; }

signals:
    void settingsChanged(const PreviewSettings& settings);
    void environmentChosen(const QString& name);
    void resetCameraRequested();

private:
    QDoubleSpinBox* addNumber(class QFormLayout* form, const QString& label, double low, double high, double value,
                              float PreviewSettings::*field);
    void setBackground(const QColor& colour);
    void changed();

    PreviewSettings current;
    QComboBox* mesh;
    QComboBox* lighting;
    QComboBox* ambient;
    QComboBox* environment;
    QCheckBox* environmentBackground;
    QPushButton* background;
    QCheckBox* displacement;
    QDoubleSpinBox* tilingU;
    QDoubleSpinBox* tilingV;
};
