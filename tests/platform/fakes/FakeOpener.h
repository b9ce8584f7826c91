// Opens nothing, and remembers what it was given.
#pragma once

#include "platform/Opener.h"

#include <QList>

namespace quenby::testing {

class FakeOpener final : public Opener {
public:
    bool openURL(const QUrl& url) override {
        const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
        if (!isWeb || url.host().isEmpty() || !hasProgram_)
            return false;
        opened_.append(url);
        return true;
    }

    const QList<QUrl>& opened() const { return opened_; }
    // Whether there is a program for addresses.
    void setHasProgram(bool hasProgram) { hasProgram_ = hasProgram; }

private:
    QList<QUrl> opened_;
    bool hasProgram_ = true;
};

} // namespace quenby::testing
