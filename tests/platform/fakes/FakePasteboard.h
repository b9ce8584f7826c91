// A clipboard of the test's own.
#pragma once

#include "platform/Pasteboard.h"

namespace quenby::testing {

class FakePasteboard final : public Pasteboard {
public:
    void setText(const QString& text) override { text_ = text; }
    QString text() const override { return text_; }

private:
    QString text_;
};

} // namespace quenby::testing
