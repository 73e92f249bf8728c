#include "RecordIcons.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace RecordIcons {

namespace {

enum Glyph
{
    SurfaceGlyph,
    MixedGlyph,
    TextureGlyph,
    DirectionGlyph,
    ScaleGlyph,
    ModelGlyph,
    FolderGlyph
};

constexpr int iconSize = 32;

void paintGlyph(QPainter& p, Glyph glyph)
{
    p.setRenderHint(QPainter::Antialiasing);
    const QPen outline(QColor(30, 30, 30), 1.5);
    p.setPen(outline);
    switch (glyph) {
    case SurfaceGlyph:
        // Three stacked layers.
        for (int i = 2; i >= 0; --i) {
            p.setBrush(QColor::fromHsv(25 + 70 * i, 150, 230));
            p.drawRoundedRect(QRectF(4 + 3 * i, 12 - 4 * i, 20, 14), 3, 3);
        }
        break;
    case MixedGlyph:
        p.setBrush(Qt::white);
        p.drawRoundedRect(QRectF(4, 4, 24, 24), 3, 3);
        p.setBrush(QColor(40, 40, 40));
        {
            QPainterPath half;
            half.moveTo(28, 4);
            half.lineTo(28, 28);
            half.lineTo(4, 28);
            half.closeSubpath();
            p.drawPath(half);
        }
        break;
    case TextureGlyph:
        p.setBrush(QColor(170, 210, 250));
        p.drawRect(QRectF(4, 6, 24, 20));
        p.setBrush(QColor(90, 150, 80));
        p.drawPolygon(QPolygonF({QPointF(5, 25), QPointF(13, 14), QPointF(19, 21), QPointF(22, 17), QPointF(27, 25)}));
        p.setBrush(QColor(250, 210, 60));
        p.drawEllipse(QPointF(22, 11), 2.5, 2.5);
        break;
    case DirectionGlyph:
        p.setBrush(QColor(120, 200, 120));
        p.drawPolygon(QPolygonF({QPointF(16, 3), QPointF(26, 14), QPointF(20, 14), QPointF(20, 29), QPointF(12, 29),
                                 QPointF(12, 14), QPointF(6, 14)}));
        break;
    case ScaleGlyph:
        p.setBrush(QColor(230, 160, 90));
        p.drawRect(QRectF(4, 16, 12, 12));
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRectF(4, 4, 24, 24));
        p.drawLine(QPointF(16, 16), QPointF(26, 6));
        break;
    case ModelGlyph:
        p.setBrush(QColor(200, 200, 215));
        p.drawPolygon(QPolygonF({QPointF(16, 3), QPointF(28, 9), QPointF(28, 23), QPointF(16, 29), QPointF(4, 23),
                                 QPointF(4, 9)}));
        p.drawLine(QPointF(4, 9), QPointF(16, 15));
        p.drawLine(QPointF(28, 9), QPointF(16, 15));
        p.drawLine(QPointF(16, 15), QPointF(16, 29));
        break;
    case FolderGlyph:
        p.setBrush(QColor(235, 200, 110));
        p.drawPolygon(QPolygonF({QPointF(3, 7), QPointF(12, 7), QPointF(15, 10), QPointF(29, 10), QPointF(29, 26),
                                 QPointF(3, 26)}));
        break;
    }
}

const QIcon& glyphIcon(Glyph glyph)
{
    static QHash<int, QIcon> icons;
    auto found = icons.find(glyph);
    if (found == icons.end()) {
        QPixmap pixmap(iconSize, iconSize);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paintGlyph(painter, glyph);
        painter.end();
        found = icons.insert(glyph, QIcon(pixmap));
    }
    return *found;
}

} // namespace

QIcon forRecord(const RecordRef& record)
{
    switch (record.kind) {
    case RecordKind::Surface: return glyphIcon(record.mixedSurface() ? MixedGlyph : SurfaceGlyph);
    case RecordKind::Texture: return glyphIcon(TextureGlyph);
    case RecordKind::DirectionMap: return glyphIcon(DirectionGlyph);
    case RecordKind::ScaleMap: return glyphIcon(ScaleGlyph);
    case RecordKind::Model: return glyphIcon(ModelGlyph);
    case RecordKind::ProjectMask:
    case RecordKind::None: break;
    }
    return QIcon();
}

QIcon forGroup(int)
{
    return glyphIcon(FolderGlyph);
}

} // namespace RecordIcons
