// Screens of the test's own. Points and pixels differ by the scale that a test gives them.
#pragma once

#include "platform/Displays.h"

#include <QGuiApplication>
#include <QScreen>

namespace quenby::testing {

class FakeDisplays final : public Displays {
public:
    // One of 1280 x 800.
    FakeDisplays() { set({display(1, {0, 0, 1280, 800})}); }

    static Display display(quint32 identifier, const QRect& frame, qreal scale = 1) {
        return {identifier, QStringLiteral("FAKE-%1").arg(identifier), frame,
                QRect(frame.topLeft(), (QSizeF(frame.size()) * scale).toSize()), scale};
    }

    // The first is the main one.
    void set(const QList<Display>& displays) {
        displays_ = displays;
        Q_EMIT changed();
    }
    void setComposited(bool isComposited) { isComposited_ = isComposited; }

    QList<Display> all() const override { return displays_; }
    Display main() const override { return displays_.value(0); }
    QScreen* screen(const Display&) const override { return QGuiApplication::primaryScreen(); }
    bool isComposited() const override { return isComposited_; }
    QImage picture(const Display& display) const override {
        QImage picture(display.pixels.size(), QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        return picture;
    }

private:
    QList<Display> displays_;
    bool isComposited_ = false;
};

} // namespace quenby::testing
