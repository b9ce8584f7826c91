// The desktop's interactive tool for pictures of the screen. It runs as a process of its own and never blocks this one.
// Threads: the main thread.
#pragma once

#include "core/CompletionGate.h"
#include "core/Error.h"
#include "platform/Service.h"

#include <QByteArray>

#include <functional>

namespace quenby {

class ScreenCaptureTool : public PlatformService {
public:
    // Without an error, whether there is a picture says the file: who cancels leaves none.
    using Ended = std::function<void(const MaybeError& trouble)>;

    // Lets the user choose a part of the screen; its picture (PNG) lies at the path then: absolute, as bytes, in a
    // folder that exists. What lay there before is replaced. One at a time. The error's reason says what to do.
    virtual void capture(const QByteArray& path, QObject* context, Ended ended) = 0;
};

} // namespace quenby
