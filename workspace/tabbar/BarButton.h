// A button that is part of the tab bar: the one that adds a tab, and the one that lists them all.
#pragma once

#include "workspace/tabbar/TabPainter.h"

#include <QAbstractButton>

namespace quenby {

class BarButton final : public QAbstractButton {
    Q_OBJECT

public:
    // The words are its tool tip, and what a screen reader says.
    BarButton(BarGlyph glyph, const QString& words, QWidget* bar);

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    BarGlyph glyph_;
};

} // namespace quenby
