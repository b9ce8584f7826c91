// A button that is nothing but its picture, or with Qt::ToolButtonTextUnderIcon its picture above its name: what the
// pointer, a press, a switch and the keyboard's focus do to it shows on the ground below. A menu behind it shows no
// arrow.
//
// Threads: the main thread.
#pragma once

#include <QToolButton>

namespace quenby {

class GlyphButton final : public QToolButton {
    Q_OBJECT

public:
    // The side of the picture, in logical pixels. A click leaves the keyboard where it is.
    explicit GlyphButton(int glyphSide, QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    float groundStrength() const;
    bool showsText() const { return toolButtonStyle() == Qt::ToolButtonTextUnderIcon; }
    QSize textSize() const;
};

} // namespace quenby
