#include "app/uploads/queue/SourceLook.h"

#include "core/CompletionGate.h"

#include <system_error>
#include <thread>

namespace quenby {

void lookAtSources(const QList<QByteArray>& paths, QObject* context, SourcesLookedAt told) {
    const CompletionGate<QList<std::optional<SourceFacts>>> gate(context, std::move(told));
    try {
        std::thread([paths, gate] {
            QList<std::optional<SourceFacts>> sources;
            sources.reserve(paths.size());
            for (const QByteArray& path : paths) {
                const auto facts = SourceFacts::of(path);
                sources.append(facts ? std::optional(*facts) : std::nullopt);
            }
            gate.deliver(sources);
        }).detach();
    } catch (const std::system_error&) {
        // No more threads at this moment: then the files are looked at when their turn comes.
    }
}

} // namespace quenby
