// The program storm_uploader, killed and started again by a test.
#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QProcess>
#include <QStringList>

namespace quenby::testing {

// Threads: the one that made it, which runs an event loop.
class StormUploader : public QObject {
public:
    // What every run is told first; see storm_uploader.cpp.
    explicit StormUploader(QByteArray orders);
    ~StormUploader() override;

    bool start();
    // SIGKILL, and waits for the end.
    void kill();
    // Returns when the files are written down. They must be handed over while nothing kills the program.
    bool keep(const QList<QByteArray>& paths);

    // As this run of the program told it last; -1: not yet.
    qsizetype left() const { return left_; }
    const QStringList& failures() const { return failures_; }

private:
    void listen();

    const QByteArray orders_;
    QProcess process_;
    qsizetype left_ = -1;
    bool isKept_ = false;
    QStringList failures_;
};

} // namespace quenby::testing
