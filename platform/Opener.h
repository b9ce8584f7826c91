// Hands addresses and files to the programs that the user has chosen for them. Threads: the main thread.
#pragma once

#include "platform/Service.h"

#include <QByteArray>
#include <QUrl>

namespace quenby {

class Opener : public PlatformService {
public:
    // In the default browser. Only http and https; whether a program took it.
    virtual bool openURL(const QUrl& url) = 0;
    // In the default program for files of its kind: a file of this computer, by its absolute path as bytes. Whether a
    // program was asked to; a file that is not there is given to none.
    virtual bool openFile(const QByteArray& path) = 0;
};

} // namespace quenby
