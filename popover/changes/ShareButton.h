// The row's share button: a symbol without a border, pressed in while the mouse button is down. Its symbol is painted,
// because not every icon theme has one.
#pragma once

#include <QAbstractButton>

namespace quenby {

class ShareButton final : public QAbstractButton {
    Q_OBJECT

public:
    explicit ShareButton(QWidget* parent = nullptr);

    void setColour(const QColor& colour);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor colour_;
};

} // namespace quenby
