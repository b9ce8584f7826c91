// The desktop's clipboard.
#pragma once

#include "platform/Pasteboard.h"

namespace quenby {

class ClipboardPasteboard final : public Pasteboard {
public:
    void setText(const QString& text) override;
    QString text() const override;
};

} // namespace quenby
