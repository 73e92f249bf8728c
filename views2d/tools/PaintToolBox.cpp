#include "PaintToolBox.h"

#include "DirectionBrush.h"
#include "FillTool.h"
#include "ProjectDocument.h"
#include "SmoothBrush.h"
#include "ValueBrush.h"

#include <algorithm>
#include <cmath>

PaintToolBox::PaintToolBox(ProjectDocument* document, QObject* parent)
    : QObject(parent)
    , context(document)
    , directionBrush(new DirectionBrush(&context, this))
    , scaleBrush(new ValueBrush(&context, PaintMap::Scale, this))
    , maskBrush(new ValueBrush(&context, PaintMap::Mask, this))
    , fillTool(new FillTool(&context, this))
    , smoothBrush(new SmoothBrush(&context, this))
{
    connect(document, &ProjectDocument::recordAboutToBeRemoved, this, [this](const RecordRef& record) {
        if (record.surface() && record.surface() == context.surface)
            setSurface(nullptr);
    });
    connect(document, &ProjectDocument::projectAboutToBeReplaced, this, [this] { setSurface(nullptr); });
}

// The tools are children and go with the QObject; nothing else to free.
PaintToolBox::~PaintToolBox() = default;

PaintTool* PaintToolBox::tool(Tool kind) const
{
    switch (kind) {
    case Direction: return directionBrush;
    case Scale: return scaleBrush;
    case Mask: return maskBrush;
    case Fill: return fillTool;
    case Smooth: return smoothBrush;
    case NoTool: break;
    }
    return nullptr;
}

void PaintToolBox::setActiveTool(Tool kind)
{
    if (kind == active)
        return;
    active = kind;
    emit toolChanged(currentTool());
}

void PaintToolBox::setSurface(Velmor::ProjectData::SurfaceData* surface)
{
    if (surface == context.surface)
        return;
    context.surface = surface;
    emit surfaceChanged(surface);
}

void PaintToolBox::showRecord(const RecordRef& record)
{
    if (record.surface())
        setSurface(record.surface());
}

template <class T>
void PaintToolBox::change(T BrushSettings::*field, T value)
{
    if (context.settings.*field == value)
        return;
    context.settings.*field = value;
    emit settingsChanged();
}

void PaintToolBox::setRadius(double radius)
{
    // From a single pixel of a big map to the whole map.
    if (std::isfinite(radius))
        change(&BrushSettings::radius, std::clamp(radius, 0.0005, 1.0));
}

void PaintToolBox::setStrength(double strength)
{
    if (std::isfinite(strength))
        change(&BrushSettings::strength, std::clamp(strength, 0.0, 1.0));
}

void PaintToolBox::setHardness(double hardness)
{
    if (std::isfinite(hardness))
        change(&BrushSettings::hardness, std::clamp(hardness, 0.0, 1.0));
}

void PaintToolBox::setScaleValue(double value)
{
    if (std::isfinite(value))
        change(&BrushSettings::scaleValue, std::clamp(float(value), minScaleValue, maxScaleValue));
}

void PaintToolBox::setDirectionDegrees(double degrees)
{
    if (std::isfinite(degrees))
        change(&BrushSettings::directionDegrees, std::remainder(degrees, 360.0));
}

void PaintToolBox::setMaskMode(MaskMode mode)
{
    change(&BrushSettings::maskMode, mode);
}

void PaintToolBox::setFillMode(FillMode mode)
{
    change(&BrushSettings::fillMode, mode);
}

void PaintToolBox::setTargetMap(PaintMap map)
{
    change(&BrushSettings::targetMap, map);
}
