#include "app/uploads/transfer/FileKinds.h"

#include <atomic>
#include <cerrno>
#include <system_error>
#include <thread>
#include <vector>

#include <sys/stat.h>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 30s;

FileKind kindOf(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? FileKind::missing : FileKind::other;
    return S_ISREG(status.st_mode) ? FileKind::regular : FileKind::other;
}

// Filled by the thread, and read as far as it came.
class Findings {
public:
    explicit Findings(qsizetype count)
        : kinds_(static_cast<size_t>(count)) {}

    void set(qsizetype index, FileKind kind) { kinds_[static_cast<size_t>(index)] = kind; }
    QList<FileKind> soFar() const { return {kinds_.begin(), kinds_.end()}; }

private:
    std::vector<std::atomic<FileKind>> kinds_; // all notTold
};

} // namespace

void lookAtFiles(const std::shared_ptr<TimeSource>& timeSource, const QList<QByteArray>& paths, QObject* context,
                 FileKindsTold told) {
    // The timer lasts as long as the function: until it was called, or the context died.
    const auto timeout = std::make_shared<std::unique_ptr<Timer>>();
    const CompletionGate<QList<FileKind>> gate(
        context, [timeout, told = std::move(told)](const QList<FileKind>& kinds) { told(kinds); });
    const auto findings = std::make_shared<Findings>(paths.size());
    *timeout = timeSource->startTimer(patience, [gate, findings] { gate.deliver(findings->soFar()); });
    try {
        std::thread([gate, findings, paths] {
            for (qsizetype i = 0; i < paths.size() && gate.ticket().isPending(); ++i)
                findings->set(i, kindOf(paths.at(i)));
            gate.deliver(findings->soFar());
        }).detach();
    } catch (const std::system_error&) { // no more threads
        gate.deliver(findings->soFar());
    }
}

} // namespace quenby
