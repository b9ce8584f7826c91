// A button that looks like a link of a page: for what opens in the browser.
#pragma once

#include <QPushButton>

namespace quenby {

class LinkButton : public QPushButton {
    Q_OBJECT

public:
    explicit LinkButton(const QString& text, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quenby
