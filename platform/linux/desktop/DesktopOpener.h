// Opens addresses in the program that the desktop has for them.
#pragma once

#include "platform/Opener.h"

namespace quenby {

class DesktopOpener final : public Opener {
public:
    bool openURL(const QUrl& url) override;
};

} // namespace quenby
