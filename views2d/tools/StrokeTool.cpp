#include "StrokeTool.h"

#include "ImageEditCommand.h"
#include "LogMessage.h"
#include "MessageSeverity.h"
#include "ProjectDocument.h"

#include <QUndoStack>

#include <algorithm>
#include <cmath>
#include <new>

namespace {

bool isFinite(QPointF p)
{
    return std::isfinite(p.x()) && std::isfinite(p.y());
}

// A pointer dragged far outside the view still paints near the edges, and
// the number of dabs between two positions stays bounded.
QPointF limited(QPointF uv)
{
    return QPointF(std::clamp(uv.x(), -1.0, 2.0), std::clamp(uv.y(), -1.0, 2.0));
}

} // namespace

StrokeTool::StrokeTool(PaintContext* context, QObject* parent)
    : QObject(parent)
    , context(context)
{
    ProjectDocument* document = context->document;
    connect(document, &ProjectDocument::readOnlyChanged, this, [this](bool readOnly) {
        if (readOnly)
            cancel();
    });
    connect(document, &ProjectDocument::recordAboutToBeRemoved, this, &StrokeTool::cancel);
    connect(document, &ProjectDocument::projectAboutToBeReplaced, this, &StrokeTool::cancel);
    // Any other edit or an undo in mid-stroke would interleave with the
    // stroke's own undo step.
    connect(document->undoStack(), &QUndoStack::indexChanged, this, &StrokeTool::cancel);
}

void StrokeTool::press(QPointF uv)
{
    cancel();
    if (!isFinite(uv))
        return;
    if (context->document->isReadOnly()) {
        logMessage(Info, QStringLiteral("Painting waits until the synthesis run has ended."));
        return;
    }
    target = context->target(paintMap());
    if (!target.isValid())
        return;
    // Without the copy the stroke could not be undone.
    before = *target.image;
    try {
        coverage.assign(target.image->pixelCount(), 0.0f);
    } catch (const std::bad_alloc&) {
        before = Image();
    }
    if (before.isEmpty()) {
        logMessage(Error, QStringLiteral("Not enough memory to paint '%1'.")
                              .arg(QString::fromStdString(target.owner.name())));
        return;
    }
    aspect = context->shownAspect();
    const BrushDab probe(*target.image, uv, context->settings.radius, aspect, context->settings.hardness);
    spacing = std::max(0.5, 0.25 * std::min(probe.radiusX, probe.radiusY));
    painting = true;
    lastDab = limited(uv);
    pressDabbed = dabsAtPress();
    if (pressDabbed) {
        paintAt(lastDab, QPointF());
        context->document->notifyChanged(target.owner);
    }
}

void StrokeTool::move(QPointF uv)
{
    if (!painting || !isFinite(uv))
        return;
    uv = limited(uv);
    const Image& map = *target.image;
    const double dx = (uv.x() - lastDab.x()) * map.width;
    const double dy = (uv.y() - lastDab.y()) * map.height;
    const double length = std::hypot(dx, dy);
    if (length < spacing)
        return;
    const QPointF direction = shownDirection(lastDab, uv);
    if (!pressDabbed) {
        paintAt(lastDab, direction);
        pressDabbed = true;
    }
    const int steps = int(length / spacing);
    const QPointF step = (uv - lastDab) * (spacing / length);
    for (int k = 1; k <= steps; ++k)
        paintAt(lastDab + step * k, direction);
    lastDab += step * steps;
    context->document->notifyChanged(target.owner);
}

void StrokeTool::release()
{
    if (!painting)
        return;
    painting = false;
    auto* command = new ImageEditCommand(context->document, target.owner, target.image, before, undoText());
    if (command->isEmpty()) {
        delete command;
    } else if (!context->document->push(command)) {
        before.copyTo(*target.image);
        context->document->notifyChanged(target.owner);
    }
    before = Image();
    coverage = std::vector<float>();
}

void StrokeTool::cancel()
{
    if (!painting)
        return;
    painting = false;
    before.copyTo(*target.image);
    context->document->notifyChanged(target.owner);
    before = Image();
    coverage = std::vector<float>();
}

bool StrokeTool::raiseCoverage(int32_t x, int32_t y, float weight)
{
    float& covered = coverage[size_t(x) + size_t(target.image->width) * size_t(y)];
    if (weight <= 0.0f || weight < covered)
        return false;
    covered = weight;
    return true;
}

void StrokeTool::paintAt(QPointF uv, QPointF direction)
{
    const BrushSettings& settings = context->settings;
    paintDab(BrushDab(*target.image, uv, settings.radius, aspect, settings.hardness), direction);
}

QPointF StrokeTool::shownDirection(QPointF from, QPointF to) const
{
    // Texture coordinates to pixels of the shown image, up to a common factor.
    const double x = (to.x() - from.x()) * aspect;
    const double y = to.y() - from.y();
    const double length = std::hypot(x, y);
    return length > 0.0 ? QPointF(x / length, y / length) : QPointF();
}
