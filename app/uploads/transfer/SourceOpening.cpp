#include "app/uploads/transfer/SourceOpening.h"

#include <QThread>

#include <cerrno>
#include <system_error>
#include <thread>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto longestOpening = 30s;

Error failure(int code, const char* reason) {
    return Error(errorDomain::posix, code, {{errorKey::reason, QString::fromLatin1(reason)}});
}

} // namespace

SourceOpening::SourceOpening(TimeSource& timeSource, const QByteArray& path, QObject* context, Handler handler)
    : gate_(context, std::move(handler)) {
    timeout_ = timeSource.startTimer(longestOpening, [gate = gate_] {
        gate.deliver(failure(ETIMEDOUT, "its disk or network folder does not answer; try again when it does"));
    });
    try {
        // Detached: nothing can end an open() that the kernel holds back, and nobody may have to wait for one.
        std::thread([gate = gate_, path, home = context->thread()] {
            auto source = SourceFile::open(path);
            if (source)
                source->handle()->moveToThread(home);
            gate.deliver(std::move(source));
        }).detach();
    } catch (const std::system_error&) {
        gate_.deliver(failure(EAGAIN, "this computer can start no more threads; close other programs"));
    }
}

SourceOpening::~SourceOpening() { gate_.ticket().cancel(); }

} // namespace quenby
