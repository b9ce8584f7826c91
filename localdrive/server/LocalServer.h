// The whole server: the Drive on disk, the endpoints, and the socket.
#pragma once

#include "core/Result.h"
#include "localdrive/server/ServerOptions.h"

#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>

namespace quenby::localdrive {

class LocalServer {
public:
    // Opens the Drive in the data folder, binds the port and notes the address there; requests wait until serve().
    // `shutdown` is called, on any thread, when the control endpoint is told to end the server. Fails with EWOULDBLOCK
    // in the POSIX domain when another process has the folder. The activity needs this thread's event loop.
    static Result<std::unique_ptr<LocalServer>> open(const ServerOptions& options, std::function<void()> shutdown);
    ~LocalServer();

    // Without a slash at the end.
    const QUrl& url() const;

    // Serves until stop() is called on another thread.
    void serve();
    void stop();
    // How long no request has been in the works. From any thread.
    std::chrono::milliseconds idleTime() const;

private:
    struct Parts;
    explicit LocalServer(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> parts_;
};

} // namespace quenby::localdrive
