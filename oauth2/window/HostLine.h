// Whose page is shown, and a closed lock when nobody on the way can read along. Softer than the page, and easy to read.
#pragma once

#include <QWidget>

namespace quenby {

class HostLine final : public QWidget {
    Q_OBJECT

public:
    explicit HostLine(QWidget* parent);

    // An empty host leaves the line empty.
    void setHost(const QString& host, bool isSecure);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString host_;
    bool isSecure_ = false;
};

} // namespace quenby
