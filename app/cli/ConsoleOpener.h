// Brings an address to whoever sits at the terminal: it is printed, and a desktop's browser opens it too where there
// is a desktop.
//
// Threads: the main thread. The console outlives it.
#pragma once

#include "platform/Opener.h"

namespace quenby {

class Console;

class ConsoleOpener final : public Opener {
public:
    explicit ConsoleOpener(Console& console)
        : console_(console) {}

    // Of a sign-in. It is printed as it stands, also with --quiet: nobody could go on without it.
    bool openURL(const QUrl& url) override;
    bool openFile(const QByteArray& path) override;

private:
    Console& console_;
};

} // namespace quenby
