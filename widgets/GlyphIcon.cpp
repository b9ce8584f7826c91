#include "widgets/Glyphs.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

namespace quenby {
namespace {

constexpr float inkStrength = 0.82F;
constexpr float disabledStrength = 0.32F;
constexpr QPointF markPlace(13.6, 2.6);
constexpr qreal markRadius = 2.6;
constexpr qreal markDistance = 1.4; // from the glyph, which gives way

QPainterPath dot(qreal radius) {
    QPainterPath path;
    path.addEllipse(markPlace, radius, radius);
    return path;
}

QColor paletteColour(QPalette::ColorRole role) { return QGuiApplication::palette().color(QPalette::Active, role); }

class GlyphIconEngine final : public QIconEngine {
public:
    GlyphIconEngine(QPainterPath glyph, QPainterPath mark, bool pointsSomewhere)
        : glyph_(std::move(glyph))
        , mark_(std::move(mark))
        , pointsSomewhere_(pointsSomewhere) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        QColor ink = paletteColour(QPalette::WindowText);
        ink.setAlphaF(mode == QIcon::Disabled ? disabledStrength : inkStrength);
        const qreal scale = std::min(rect.width(), rect.height()) / glyphGrid;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(rect).center());
        const bool isMirrored = pointsSomewhere_ && QGuiApplication::isRightToLeft();
        painter->scale(isMirrored ? -scale : scale, scale);
        painter->translate(-glyphGrid / 2, -glyphGrid / 2);
        painter->fillPath(glyph_, ink);
        painter->fillPath(mark_, paletteColour(QPalette::Highlight));
        painter->restore();
    }
    // Painted anew each time: the palette may have changed.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new GlyphIconEngine(*this); }

private:
    QPainterPath glyph_;
    QPainterPath mark_;
    bool pointsSomewhere_;
};

} // namespace

QIcon glyphIcon(const QPainterPath& glyph, bool pointsSomewhere) {
    return QIcon(new GlyphIconEngine(glyph, {}, pointsSomewhere));
}

QIcon markedGlyphIcon(const QPainterPath& glyph) {
    return QIcon(new GlyphIconEngine(glyph.subtracted(dot(markRadius + markDistance)), dot(markRadius), false));
}

} // namespace quenby
