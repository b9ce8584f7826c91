// How full the Drive is, in the look of the window's other bars. Hidden when it is not known, it keeps its room.
#pragma once

#include <QProgressBar>

namespace quenby {

class QuotaBar final : public QProgressBar {
    Q_OBJECT

public:
    explicit QuotaBar(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quenby
