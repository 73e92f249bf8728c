#pragma once

#include "PaintContext.h"
#include "PaintTool.h"
#include "RecordRef.h"

#include <QObject>

class DirectionBrush;
class FillTool;
class ProjectDocument;
class SmoothBrush;
class ValueBrush;

// The painting tools of the generated view, the surface whose maps they
// paint, the settings they share and the tool in use. The view paints with
// whatever toolChanged last handed it; the tool bar changes the tool and
// the settings through the slots here.
class PaintToolBox : public QObject
{
    Q_OBJECT
public:
    enum Tool
    {
        NoTool,
        Direction,
        Scale,
        Mask,
        Fill,
        Smooth
    };
    Q_ENUM(Tool)

    explicit PaintToolBox(ProjectDocument* document, QObject* parent = nullptr);
    ~PaintToolBox() override;

    ProjectDocument* document() const { return context.document; }
    Tool activeTool() const { return active; }
    // The tool of `tool`; null for NoTool.
    PaintTool* tool(Tool tool) const;
    PaintTool* currentTool() const { return tool(active); }
    Velmor::ProjectData::SurfaceData* surface() const { return context.surface; }
    const BrushSettings& settings() const { return context.settings; }

public slots:
    void setActiveTool(Tool tool);
    void setSurface(Velmor::ProjectData::SurfaceData* surface);
    // A surface selected in the browser becomes the painted one; other
    // records leave it as it is.
    void showRecord(const RecordRef& record);

    void setRadius(double radius);
    void setStrength(double strength);
    void setHardness(double hardness);
    void setScaleValue(double value);
    void setDirectionDegrees(double degrees);
    void setMaskMode(MaskMode mode);
    void setFillMode(FillMode mode);
    void setTargetMap(PaintMap map);

signals:
    void toolChanged(PaintTool* tool);
    void surfaceChanged(Velmor::ProjectData::SurfaceData* surface);
    // A setting changed; the brush outline may have another size.
    void settingsChanged();

private:
    template <class T>
    void change(T BrushSettings::*field, T value);

    PaintContext context;
    DirectionBrush* directionBrush;
    ValueBrush* scaleBrush;
    ValueBrush* maskBrush;
    FillTool* fillTool;
    SmoothBrush* smoothBrush;
    Tool active = NoTool;
};
