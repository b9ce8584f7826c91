// Opens addresses and files in the programs that the desktop has for them.
#pragma once

#include "platform/Opener.h"

namespace quenby {

class DesktopOpener final : public Opener {
public:
    bool openURL(const QUrl& url) override;
    bool openFile(const QByteArray& path) override;
};

} // namespace quenby
