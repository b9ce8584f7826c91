// A faint line across the popover.
#pragma once

#include <QWidget>

namespace quenby {

class SeparatorLine final : public QWidget {
    Q_OBJECT

public:
    explicit SeparatorLine(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quenby
