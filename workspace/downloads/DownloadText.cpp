#include "workspace/downloads/DownloadText.h"

#include <QLocale>

#include <algorithm>

namespace quenby {
namespace {

QString byteText(qint64 bytes) { return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat); }

QString counted(qint64 count, const char* unit) {
    return QStringLiteral("%1 %2%3 left")
        .arg(count)
        .arg(QString::fromLatin1(unit), count == 1 ? QString() : QStringLiteral("s"));
}

QString timeLeft(qint64 seconds) {
    if (seconds < 60)
        return counted(std::max<qint64>(seconds, 1), "second");
    if (seconds < 3600)
        return counted((seconds + 30) / 60, "minute");
    return counted((seconds + 1800) / 3600, "hour");
}

} // namespace

QString downloadText(const DownloadProgress& progress) {
    const bool isTotalKnown = progress.total >= progress.received && progress.total > 0;
    QString text = byteText(progress.received);
    if (isTotalKnown)
        text += QStringLiteral(" of ") + byteText(progress.total);
    switch (progress.state) {
    case Arrival::State::finished:
        return byteText(progress.received);
    case Arrival::State::failed:
        return progress.reason.isEmpty() ? QStringLiteral("Failed") : progress.reason;
    case Arrival::State::cancelled:
        return QStringLiteral("Canceled");
    case Arrival::State::paused:
        return text + QStringLiteral(", paused");
    case Arrival::State::running:
        break;
    }
    if (isTotalKnown && progress.bytesPerSecond && *progress.bytesPerSecond > 0)
        text += QStringLiteral(", ") + timeLeft((progress.total - progress.received) / *progress.bytesPerSecond);
    return text;
}

int downloadPercent(const DownloadProgress& progress) {
    return progress.total > 0 ? int(std::clamp<qint64>(progress.received * 100 / progress.total, 0, 100)) : -1;
}

} // namespace quenby
