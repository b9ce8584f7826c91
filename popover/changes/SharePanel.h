// What backs the row's share button: it covers the end of the title, but for a trace, and begins softly.
#pragma once

#include <QWidget>

namespace quenby {

class SharePanel final : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    void setColour(const QColor& colour);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor colour_;
};

} // namespace quenby
