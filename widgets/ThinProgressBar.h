// A progress bar in the look of this program's windows: thin, without text.
#pragma once

#include <QProgressBar>

namespace quenby {

class ThinProgressBar : public QProgressBar {
    Q_OBJECT

public:
    explicit ThinProgressBar(int height, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quenby
