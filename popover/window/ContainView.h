// What the popover contains: its header and its list. When it reaches down to the window's round corners, it leaves
// them free: the list fills its place to the last pixel otherwise.
#pragma once

#include <QWidget>

namespace quenby {

class ContainView final : public QWidget {
    Q_OBJECT

public:
    explicit ContainView(QWidget* parent);

    void setAtBottom(bool isAtBottom);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void shape();

    bool isAtBottom_ = false;
};

} // namespace quenby
