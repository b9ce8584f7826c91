// The user's picture, cut round; without one, a drawn face in the window's own colours.
#pragma once

#include <QImage>
#include <QWidget>

namespace quenby {

class AccountFace final : public QWidget {
    Q_OBJECT

public:
    explicit AccountFace(QWidget* parent);

    // Null: the drawn face. Sharp where it has as many pixels as the screen.
    void setPicture(const QImage& picture);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage picture_;
};

} // namespace quenby
