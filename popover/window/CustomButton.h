// A small button with nothing but a picture, whose ground shows only under the pointer, the finger or a menu of its
// own. It keeps the arrow as its cursor.
#pragma once

#include <QPainterPath>
#include <QPointer>
#include <QToolButton>

namespace quenby {

class CustomButton final : public QToolButton {
    Q_OBJECT

public:
    // The glyph is on the grid of widgets/Glyphs.h.
    CustomButton(QPainterPath glyph, const QString& name, QWidget* parent = nullptr);

    // Looks pressed until that menu, which is open, closes. A press on the button then closes the menu and no more.
    void stayDownWhileOpen(QWidget& menu);

    QSize sizeHint() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const QPainterPath glyph_;
    QPointer<QWidget> menu_;
};

} // namespace quenby
