#include "workspace/uploads/QueueText.h"

#include "core/ByteCountText.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <array>
#include <utility>

namespace quenby {
namespace {

using State = QueueRow::State;
using std::chrono::seconds;

constexpr qint64 minute = 60; // seconds
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;
// Up to so many minutes each one is told; above, every fifth; after the last of them, hours.
constexpr qint64 fewMinutes = 10;
constexpr qint64 manyMinutes = 90;
constexpr qint64 minuteStep = 5;
constexpr qint64 manyHours = 48;

struct Words {
    Q_DECLARE_TR_FUNCTIONS(UploadQueue)
};

QString tr(const char* text) { return Words::tr(text); }
QString tr(const char* text, qint64 count) { return Words::tr(text, nullptr, int(count)); }

qint64 rounded(qint64 value, qint64 step) { return (value + step / 2) / step; }

QString joined(const QStringList& parts) { return parts.join(tr(" — ")); }

QString rateText(qint64 bytesPerSecond) { return tr("%1/s").arg(byteCountText(bytesPerSecond)); }

// Empty when nothing is known.
QString sizeText(const QueueRow& row) {
    if (row.total < 0)
        return row.sent > 0 ? byteCountText(row.sent) : QString();
    return row.sent > 0 ? tr("%1 of %2").arg(byteCountText(row.sent), byteCountText(row.total))
                        : byteCountText(row.total);
}

QString withSize(const QString& state, const QueueRow& row) {
    const QString size = sizeText(row);
    return size.isEmpty() ? state : joined({state, size});
}

QString runningText(const QueueRow& row) {
    if (row.sent == 0 && row.bytesPerSecond == 0)
        return withSize(tr("Starting"), row);
    const bool isTotalKnown = row.total >= 0;
    QStringList parts{isTotalKnown ? tr("%1 of %2").arg(byteCountText(row.sent), byteCountText(row.total))
                                   : byteCountText(row.sent)};
    if (row.bytesPerSecond > 0)
        parts += rateText(row.bytesPerSecond);
    if (row.timeLeft)
        parts += timeLeftText(*row.timeLeft);
    return joined(parts);
}

QString stateWord(State state) {
    switch (state) {
    case State::waiting:
        return tr("waiting");
    case State::running:
        return tr("running");
    case State::resting:
        return tr("waits to go on");
    case State::paused:
        return tr("paused");
    case State::changed:
        return tr("changed");
    case State::failed:
        return tr("failed");
    case State::done:
        return tr("done");
    }
    return {};
}

// What is left of all that will be sent without the user's doing.
class Rest {
public:
    void add(const QueueRow& row) {
        if (row.total < 0)
            isKnown_ = false;
        else
            bytes_ += std::max<qint64>(row.total - row.sent, 0);
        bytesPerSecond_ += row.state == State::running ? row.bytesPerSecond : 0;
    }

    void tell(QStringList& parts) const {
        if (bytesPerSecond_ <= 0)
            return;
        parts += rateText(bytesPerSecond_);
        if (isKnown_)
            parts += timeLeftText(seconds(bytes_ / bytesPerSecond_));
    }

private:
    qint64 bytes_ = 0;
    qint64 bytesPerSecond_ = 0;
    bool isKnown_ = true;
};

} // namespace

int queuePercent(const QueueRow& row) {
    if (row.state == State::done)
        return 100;
    return row.total > 0 ? int(std::clamp<qint64>(row.sent * 100 / row.total, 0, 100)) : -1;
}

QString queueStateText(const QueueRow& row) {
    switch (row.state) {
    case State::waiting:
        return withSize(tr("Waiting"), row);
    case State::running:
        return runningText(row);
    case State::resting:
        return row.message.isEmpty() ? tr("Waits to go on") : tr("Waits to go on: %1").arg(row.message.simplified());
    case State::paused:
        return withSize(tr("Paused"), row);
    case State::changed:
        return tr("The file has changed since it was queued. Retry to upload it as it is now.");
    case State::failed:
        return row.message.isEmpty() ? tr("The upload failed.") : row.message.simplified();
    case State::done:
        return row.total < 0 ? tr("Uploaded") : joined({tr("Uploaded"), byteCountText(row.total)});
    }
    return {};
}

QString queueSpokenText(const QueueRow& row) {
    const int percent = queuePercent(row);
    const bool tellsPercent = percent >= 0 && row.state != State::done && (row.sent > 0 || row.state == State::running);
    return tellsPercent ? tr("%1, %2, %3%").arg(row.name, stateWord(row.state), QString::number(percent))
                        : tr("%1, %2").arg(row.name, stateWord(row.state));
}

QString queueTip(const QueueRow& row) {
    QStringList lines{row.name};
    if (!row.place.isEmpty())
        lines += tr("From: %1").arg(row.place);
    if (!row.folder.isEmpty())
        lines += tr("To: %1").arg(row.folder);
    lines += queueStateText(row);
    return lines.join(QLatin1Char('\n'));
}

QString timeLeftText(seconds timeLeft) {
    const qint64 left = timeLeft.count();
    if (left < minute)
        return tr("less than a minute left");
    if (const qint64 minutes = rounded(left, minute); minutes <= manyMinutes) {
        if (minutes == 1)
            return tr("about 1 minute left");
        return tr("about %n minutes left", minutes <= fewMinutes ? minutes : rounded(minutes, minuteStep) * minuteStep);
    }
    if (const qint64 hours = rounded(left, hour); hours < manyHours)
        return tr("about %n hours left", hours);
    return tr("about %n days left", rounded(left, day));
}

QString queueSummary(const QList<QueueRow>& rows, bool isAllPaused) {
    std::array<int, std::size_t(State::done) + 1> counts{};
    Rest rest;
    for (const QueueRow& row : rows) {
        ++counts[std::size_t(row.state == State::resting ? State::waiting : row.state)];
        if (row.state == State::waiting || row.state == State::running || row.state == State::resting)
            rest.add(row);
    }
    constexpr std::array told{std::pair(State::running, QT_TRANSLATE_N_NOOP("UploadQueue", "%n running")),
                              std::pair(State::waiting, QT_TRANSLATE_N_NOOP("UploadQueue", "%n waiting")),
                              std::pair(State::paused, QT_TRANSLATE_N_NOOP("UploadQueue", "%n paused")),
                              std::pair(State::changed, QT_TRANSLATE_N_NOOP("UploadQueue", "%n changed")),
                              std::pair(State::failed, QT_TRANSLATE_N_NOOP("UploadQueue", "%n failed")),
                              std::pair(State::done, QT_TRANSLATE_N_NOOP("UploadQueue", "%n done"))};
    QStringList states;
    for (const auto& [state, text] : told) {
        if (const int count = counts[std::size_t(state)]; count > 0)
            states += tr(text, count);
    }
    if (states.isEmpty())
        return {};
    QStringList parts{states.join(tr(", "))};
    if (isAllPaused)
        parts.prepend(tr("All paused"));
    else
        rest.tell(parts);
    return joined(parts);
}

} // namespace quenby
