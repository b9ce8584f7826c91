// A face for the hosts to show: a gauge and a text, both of which a test sets.
#pragma once

#include "platform/StatusItemHost.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>

namespace quenby::testing {

class PaintedFace final : public StatusItemFace {
public:
    QString text = QStringLiteral("3.2 GB");
    int percent = 30;
    bool isHighlighted = false;
    bool takesFiles = true;
    mutable int iconPaints = 0;
    mutable int paints = 0;

    QSize size() const override { return {17 + 12 + QFontMetrics(font()).horizontalAdvance(text), 17}; }

    void paint(QPainter& painter, const QRect& rect, bool isDarkSurrounding) const override {
        ++paints;
        if (isHighlighted)
            painter.fillRect(rect, QColor(72, 90, 255));
        const QColor colour = isDarkSurrounding || isHighlighted ? Qt::white : Qt::black;
        gauge(painter, QRectF(rect.left(), rect.top(), 17, 17), colour);
        painter.setPen(colour);
        painter.setFont(font());
        painter.drawText(rect.adjusted(24, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, text);
    }
    void paintIcon(QPainter& painter, const QRect& square, bool isDarkSurrounding) const override {
        ++iconPaints;
        gauge(painter, square, isDarkSurrounding ? Qt::white : Qt::black);
    }
    QString title() const override { return QStringLiteral("Quenby"); }
    QString toolTip() const override { return text % QStringLiteral(" <used>"); }
    bool acceptsFiles(const QList<QByteArray>& paths) const override { return takesFiles && !paths.isEmpty(); }

private:
    static QFont font() {
        QFont font;
        font.setPixelSize(14);
        return font;
    }
    void gauge(QPainter& painter, const QRectF& square, const QColor& colour) const {
        const qreal line = square.width() * 1.3 / 17;
        painter.setPen(QPen(colour, line));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(square.adjusted(line, line, -line, -line));
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawPie(square.adjusted(line, line, -line, -line), -90 * 16, percent * -360 * 16 / 100);
    }
};

} // namespace quenby::testing
