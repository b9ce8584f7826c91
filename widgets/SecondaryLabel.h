// Text of lesser weight, in a softer tone of the window's own text colour, on light and dark desktops alike.
#pragma once

#include "widgets/ElidedLabel.h"

namespace quenby {

class SecondaryLabel : public ElidedLabel {
    Q_OBJECT

public:
    explicit SecondaryLabel(QWidget* parent = nullptr);

protected:
    void changeEvent(QEvent* event) override;

private:
    void soften();
};

} // namespace quenby
