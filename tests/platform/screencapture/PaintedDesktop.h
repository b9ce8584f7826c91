// A desktop whose every pixel is known: below all windows lies one over all screens, with a pattern in which no
// rectangle looks like another one.
#pragma once

#include "tests/support/Settled.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QWidget>

namespace quenby::testing {

class PaintedDesktop final : public QWidget {
public:
    explicit PaintedDesktop(const QSize& size, bool isAbove = false)
        : QWidget(nullptr, Qt::FramelessWindowHint | Qt::BypassWindowManagerHint)
        , picture_(size, QImage::Format_RGB32) {
        for (int y = 0; y < size.height(); ++y)
            for (int x = 0; x < size.width(); ++x)
                picture_.setPixel(x, y, qRgb(x & 255, y & 255, (x >> 8) << 4 | y >> 8));
        setAttribute(Qt::WA_OpaquePaintEvent);
        setGeometry(QRect(QPoint(), size));
        show();
        if (!isAbove)
            lower();
    }

    const QImage& picture() const { return picture_; }
    // What the display shows there now.
    static QImage seen(const QRect& part) {
        return QGuiApplication::primaryScreen()
            ->grabWindow(0, part.x(), part.y(), part.width(), part.height())
            .toImage()
            .convertToFormat(QImage::Format_RGB32);
    }
    bool isSeen() const {
        return settles([this] { return seen(picture_.rect()) == picture_; });
    }

private:
    void paintEvent(QPaintEvent* event) override {
        QPainter(this).drawImage(event->rect().topLeft(), picture_, event->rect());
    }

    QImage picture_;
};

} // namespace quenby::testing
