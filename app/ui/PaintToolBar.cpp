#include "PaintToolBar.h"

#include "ProjectDocument.h"

#include <QActionGroup>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>

namespace {

QDoubleSpinBox* spinBox(const QString& name, double minimum, double maximum, double step, int decimals,
                        const QString& suffix)
{
    auto* box = new QDoubleSpinBox;
    box->setObjectName(name);
    box->setRange(minimum, maximum);
    box->setSingleStep(step);
    box->setDecimals(decimals);
    box->setSuffix(suffix);
    box->setKeyboardTracking(false);
    return box;
}

QComboBox* comboBox(const QString& name, const QStringList& items)
{
    auto* box = new QComboBox;
    box->setObjectName(name);
    box->addItems(items);
    return box;
}

} // namespace

PaintToolBar::PaintToolBar(PaintToolBox* tools, QWidget* parent)
    : QToolBar(tr("Paint Tools"), parent)
    , tools(tools)
    , toolGroup(new QActionGroup(this))
    , radius(spinBox(QStringLiteral("PaintRadius"), 0.05, 100.0, 0.5, 2, QStringLiteral(" %")))
    , strength(spinBox(QStringLiteral("PaintStrength"), 0.0, 100.0, 5.0, 0, QStringLiteral(" %")))
    , hardness(spinBox(QStringLiteral("PaintHardness"), 0.0, 100.0, 5.0, 0, QStringLiteral(" %")))
    , scale(spinBox(QStringLiteral("PaintScale"), minScaleValue, maxScaleValue, 0.05, 2, QString()))
    , direction(spinBox(QStringLiteral("PaintDirection"), -180.0, 180.0, 15.0, 1, QStringLiteral("\u00b0")))
    , maskMode(comboBox(QStringLiteral("PaintMaskMode"), {tr("Paint Out"), tr("Erase")}))
    , fillMode(comboBox(QStringLiteral("PaintFillMode"), {tr("Whole Map"), tr("Flood")}))
    , targetMap(comboBox(QStringLiteral("PaintTargetMap"), {tr("Direction Map"), tr("Scale Map"), tr("Mask")}))
{
    setObjectName(QStringLiteral("PaintToolBar"));
    const struct
    {
        PaintToolBox::Tool tool;
        QString text;
        QString name;
        QString tip;
    } choices[] = {
        {PaintToolBox::NoTool, tr("View"), QStringLiteral("PaintToolNone"), tr("Look without painting")},
        {PaintToolBox::Direction, tr("Direction"), QStringLiteral("PaintToolDirection"),
         tr("Paint the stroke's direction into the surface's direction map")},
        {PaintToolBox::Scale, tr("Scale"), QStringLiteral("PaintToolScale"),
         tr("Paint a scale into the surface's scale map: 0 copies features three times larger, 1 as they are, 2 a "
            "little smaller")},
        {PaintToolBox::Mask, tr("Mask"), QStringLiteral("PaintToolMask"),
         tr("Paint the output mask out, where synthesis writes nothing, or erase it")},
        {PaintToolBox::Fill, tr("Fill"), QStringLiteral("PaintToolFill"),
         tr("Fill a map, or the area of similar values clicked")},
        {PaintToolBox::Smooth, tr("Smooth"), QStringLiteral("PaintToolSmooth"), tr("Blur a map under the brush")},
    };
    for (const auto& choice : choices) {
        QAction* action = addAction(choice.text);
        action->setObjectName(choice.name);
        action->setToolTip(choice.tip);
        action->setCheckable(true);
        action->setData(int(choice.tool));
        action->setChecked(choice.tool == tools->activeTool());
        toolGroup->addAction(action);
    }
    connect(toolGroup, &QActionGroup::triggered, this,
            [tools](QAction* action) { tools->setActiveTool(PaintToolBox::Tool(action->data().toInt())); });
    addSeparator();

    radiusControl = addControl(tr("Radius"), radius);
    radius->setToolTip(tr("Brush radius, in per cent of the image width"));
    strengthControl = addControl(tr("Strength"), strength);
    hardnessControl = addControl(tr("Hardness"), hardness);
    hardness->setToolTip(tr("The part of the radius painted at full strength; the rest fades out"));
    targetMapControl = addControl(tr("Map"), targetMap);
    fillModeControl = addControl(tr("Fill"), fillMode);
    scaleControl = addControl(tr("Scale"), scale);
    directionControl = addControl(tr("Direction"), direction);
    direction->setToolTip(tr("Fill direction, clockwise from up"));
    maskModeControl = addControl(tr("Mask"), maskMode);

    auto changed = QOverload<double>::of(&QDoubleSpinBox::valueChanged);
    connect(radius, changed, tools, [tools](double v) { tools->setRadius(v / 100.0); });
    connect(strength, changed, tools, [tools](double v) { tools->setStrength(v / 100.0); });
    connect(hardness, changed, tools, [tools](double v) { tools->setHardness(v / 100.0); });
    connect(scale, changed, tools, &PaintToolBox::setScaleValue);
    connect(direction, changed, tools, &PaintToolBox::setDirectionDegrees);
    auto picked = QOverload<int>::of(&QComboBox::currentIndexChanged);
    connect(maskMode, picked, tools, [tools](int i) { tools->setMaskMode(MaskMode(i)); });
    connect(fillMode, picked, tools, [tools](int i) { tools->setFillMode(FillMode(i)); });
    connect(targetMap, picked, tools, [tools](int i) { tools->setTargetMap(PaintMap(i)); });

    connect(tools, &PaintToolBox::settingsChanged, this, &PaintToolBar::showSettings);
    connect(tools, &PaintToolBox::toolChanged, this, [this] {
        if (QAction* action = toolAction(this->tools->activeTool()))
            action->setChecked(true);
        showControlsFor(this->tools->activeTool());
    });
    ProjectDocument* document = tools->document();
    connect(document, &ProjectDocument::readOnlyChanged, this, [this](bool readOnly) { setEnabled(!readOnly); });
    setEnabled(!document->isReadOnly());

    showSettings();
    showControlsFor(tools->activeTool());
}

QAction* PaintToolBar::toolAction(PaintToolBox::Tool tool) const
{
    for (QAction* action : toolGroup->actions())
        if (action->data().toInt() == int(tool))
            return action;
    return nullptr;
}

QAction* PaintToolBar::addControl(const QString& label, QWidget* control)
{
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->addWidget(new QLabel(label));
    layout->addWidget(control);
    return addWidget(row);
}

void PaintToolBar::showSettings()
{
    const BrushSettings& settings = tools->settings();
    const QSignalBlocker blockers[] = {QSignalBlocker(radius),   QSignalBlocker(strength),  QSignalBlocker(hardness),
                                       QSignalBlocker(scale),    QSignalBlocker(direction), QSignalBlocker(maskMode),
                                       QSignalBlocker(fillMode), QSignalBlocker(targetMap)};
    radius->setValue(settings.radius * 100.0);
    strength->setValue(settings.strength * 100.0);
    hardness->setValue(settings.hardness * 100.0);
    scale->setValue(settings.scaleValue);
    direction->setValue(settings.directionDegrees);
    maskMode->setCurrentIndex(int(settings.maskMode));
    fillMode->setCurrentIndex(int(settings.fillMode));
    targetMap->setCurrentIndex(int(settings.targetMap));
    // The fill's value control follows the map it fills.
    showControlsFor(tools->activeTool());
}

void PaintToolBar::showControlsFor(PaintToolBox::Tool tool)
{
    const PaintMap map = tools->settings().targetMap;
    const bool brush = tool == PaintToolBox::Direction || tool == PaintToolBox::Scale || tool == PaintToolBox::Mask
                       || tool == PaintToolBox::Smooth;
    const bool fill = tool == PaintToolBox::Fill;
    radiusControl->setVisible(brush);
    strengthControl->setVisible(brush);
    hardnessControl->setVisible(brush);
    targetMapControl->setVisible(fill || tool == PaintToolBox::Smooth);
    fillModeControl->setVisible(fill);
    scaleControl->setVisible(tool == PaintToolBox::Scale || (fill && map == PaintMap::Scale));
    directionControl->setVisible(fill && map == PaintMap::Direction);
    maskModeControl->setVisible(tool == PaintToolBox::Mask || (fill && map == PaintMap::Mask));
}
