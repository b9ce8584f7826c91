// How full the Drive is, in the look of the window's other bars. Hidden when it is not known, it keeps its room.
#pragma once

#include "widgets/ThinProgressBar.h"

namespace quenby {

class QuotaBar final : public ThinProgressBar {
    Q_OBJECT

public:
    explicit QuotaBar(QWidget* parent = nullptr);
};

} // namespace quenby
