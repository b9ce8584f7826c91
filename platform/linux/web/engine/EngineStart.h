// What holds while the engine starts, which it does with its first profile: pages on a dark desktop are told so, and
// the engine keeps its account of itself to itself. What the user has set goes first, and the environment is as it was
// afterwards, for programs that are started from this one.
//
// Threads: the main thread.
#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace quenby {

class EngineStart {
public:
    EngineStart();
    ~EngineStart();
    Q_DISABLE_COPY_MOVE(EngineStart)

private:
    const bool hadFlags_;
    const QByteArray flags_;
};

} // namespace quenby
