#include "tests/faults/storm/StormUploader.h"

#include <QTest>

namespace quenby::testing {
namespace {

constexpr int patience = 60'000; // milliseconds

}

StormUploader::StormUploader(QByteArray orders)
    : orders_(std::move(orders)) {
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&process_, &QProcess::readyReadStandardOutput, this, &StormUploader::listen);
}

StormUploader::~StormUploader() { kill(); }

bool StormUploader::start() {
    left_ = -1;
    process_.start(QStringLiteral(QUENBY_STORM_UPLOADER), {});
    process_.write(orders_ + '\n');
    return process_.waitForStarted(patience);
}

void StormUploader::kill() {
    process_.kill();
    process_.waitForFinished(patience);
    listen();
}

bool StormUploader::keep(const QList<QByteArray>& paths) {
    isKept_ = false;
    if (!QTest::qWaitFor([this] { return left_ >= 0; }, patience)) // until then nothing new is written down
        return false;
    process_.write(paths.join('\n') + "\n\n");
    return QTest::qWaitFor([this] { return isKept_; }, patience);
}

void StormUploader::listen() {
    while (process_.canReadLine()) {
        const QByteArray line = process_.readLine().trimmed();
        if (line == "kept")
            isKept_ = true;
        else if (line.startsWith("left "))
            left_ = line.mid(5).toLongLong();
        else
            failures_.append(QString::fromUtf8(line));
    }
}

} // namespace quenby::testing
