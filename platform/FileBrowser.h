// The desktop's own window on files. Threads: the main thread; it never blocks.
#pragma once

#include "core/CompletionGate.h"
#include "platform/Service.h"

#include <QByteArray>

#include <functional>

namespace quenby {

class FileBrowser : public PlatformService {
public:
    using Done = std::function<void(bool isShown)>;

    // Shows the folder of a file with the file selected (the freedesktop.org File Manager D-Bus Interface); where no
    // file manager speaks that, the folder is opened. The path is absolute, as bytes.
    virtual void reveal(const QByteArray& path, QObject* context, Done done) = 0;
};

} // namespace quenby
