#include "PreviewPanel.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QPushButton>

namespace {

// Combo rows in the order the menu lists them, with their mesh choice.
const struct
{
    const char* text;
    int choice;
} meshRows[] = {{"Cube", PreviewSettings::CubeMesh},     {"Sphere", PreviewSettings::SphereMesh},
                {"Cylinder", PreviewSettings::CylinderMesh}, {"Plane", PreviewSettings::PlaneMesh},
                {"Selected model", PreviewSettings::ModelMesh}, {"Bridge", PreviewSettings::BridgeMesh},
                {"Tree", PreviewSettings::TreeMesh}};

} // namespace

PreviewPanel::PreviewPanel(QWidget* parent)
    : QWidget(parent)
    , mesh(new QComboBox)
    , lighting(new QComboBox)
    , ambient(new QComboBox)
    , environment(new QComboBox)
    , environmentBackground(new QCheckBox(tr("Show as background")))
    , background(new QPushButton)
    , displacement(new QCheckBox(tr("Displacement")))
    , tilingU(new QDoubleSpinBox)
    , tilingV(new QDoubleSpinBox)
{
    auto* form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    for (const auto& row : meshRows)
        mesh->addItem(tr(row.text), row.choice);
    mesh->setCurrentIndex(mesh->findData(current.mesh));
    connect(mesh, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        current.mesh = mesh->currentData().toInt();
        changed();
    });
    form->addRow(tr("Mesh"), mesh);

    lighting->addItems(lightingModeNames());
    lighting->setCurrentIndex(current.lightingMode);
    connect(lighting, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int index) {
        current.lightingMode = index;
        changed();
    });
    form->addRow(tr("Lighting"), lighting);
    addNumber(form, tr("Light strength"), 0.0, 20.0, current.lightStrength, &PreviewSettings::lightStrength);

    ambient->addItems({tr("White"), tr("Background colour"), tr("Environment")});
    ambient->setCurrentIndex(current.ambientMode);
    connect(ambient, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int index) {
        current.ambientMode = index;
        changed();
    });
    form->addRow(tr("Ambient"), ambient);
    addNumber(form, tr("Ambient strength"), 0.0, 10.0, current.ambientStrength, &PreviewSettings::ambientStrength);

    environment->addItems({QStringLiteral("HotelRoom"), QStringLiteral("Venice"), QStringLiteral("Studio")});
    connect(environment, &QComboBox::currentTextChanged, this, &PreviewPanel::environmentChosen);
    form->addRow(tr("Environment"), environment);
    addNumber(form, tr("Environment strength"), 0.0, 10.0, current.environmentStrength,
              &PreviewSettings::environmentStrength);
    environmentBackground->setChecked(current.environmentAsBackground);
    connect(environmentBackground, &QCheckBox::toggled, this, [this](bool on) {
        current.environmentAsBackground = on;
        changed();
    });
    form->addRow(QString(), environmentBackground);

    const QVector3D& b = current.backgroundColor;
    setBackground(QColor::fromRgbF(b.x(), b.y(), b.z()));
    connect(background, &QPushButton::clicked, this, [this] {
        const QVector3D& b = current.backgroundColor;
        const QColor chosen = QColorDialog::getColor(QColor::fromRgbF(b.x(), b.y(), b.z()), this, tr("Background"));
        if (chosen.isValid()) {
            setBackground(chosen);
            changed();
        }
    });
    form->addRow(tr("Background"), background);

    addNumber(form, tr("Roughness"), 0.0, 1.0, current.constRoughness, &PreviewSettings::constRoughness);
    addNumber(form, tr("Metalness"), 0.0, 1.0, current.constMetalness, &PreviewSettings::constMetalness);
    addNumber(form, tr("Normal scale"), 0.0, 10.0, current.normalScale, &PreviewSettings::normalScale);
    displacement->setChecked(current.displacement);
    connect(displacement, &QCheckBox::toggled, this, [this](bool on) {
        current.displacement = on;
        changed();
    });
    form->addRow(QString(), displacement);
    addNumber(form, tr("Displacement strength"), 0.0, 5.0, current.displacementStrength,
              &PreviewSettings::displacementStrength);

    auto* tiling = new QHBoxLayout;
    for (QDoubleSpinBox* box : {tilingU, tilingV}) {
        box->setRange(0.01, 64.0);
        box->setDecimals(2);
        box->setSingleStep(0.5);
        box->setValue(1.0);
        connect(box, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this] {
            current.uvTiling = QVector2D(float(tilingU->value()), float(tilingV->value()));
            changed();
        });
        tiling->addWidget(box);
    }
    form->addRow(tr("UV tiling"), tiling);

    auto* reset = new QPushButton(tr("Reset camera"));
    connect(reset, &QPushButton::clicked, this, &PreviewPanel::resetCameraRequested);
    form->addRow(QString(), reset);
}

QDoubleSpinBox* PreviewPanel::addNumber(QFormLayout* form, const QString& label, double low, double high,
                                        double value, float PreviewSettings::*field)
{
    auto* box = new QDoubleSpinBox;
    box->setRange(low, high);
    box->setDecimals(2);
    box->setSingleStep(high <= 1.0 ? 0.05 : 0.1);
    box->setValue(value);
    connect(box, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this, field](double v) {
        current.*field = float(v);
        changed();
    });
    form->addRow(label, box);
    return box;
}

QString PreviewPanel::environmentName() const
{
    return environment->currentText();
}

void PreviewPanel::setMeshChoice(int choice)
{
    const int row = mesh->findData(choice);
    if (row >= 0)
        mesh->setCurrentIndex(row);
}

void PreviewPanel::setBackground(const QColor& colour)
{
    current.backgroundColor = QVector3D(float(colour.redF()), float(colour.greenF()), float(colour.blueF()));
    background->setText(colour.name());
    background->setStyleSheet(QStringLiteral("QPushButton { background: %1; color: %2; }")
                                  .arg(colour.name(), colour.lightnessF() > 0.5 ? "black" : "white"));
}

void PreviewPanel::changed()
{
    emit settingsChanged(current);
}
