#include "app/cli/ProgressReporter.h"

#include "core/ByteCountText.h"

#include <algorithm>

namespace quenby {

using namespace std::chrono_literals;

namespace {
constexpr auto shortestRedraw = 100ms;
}

ProgressReporter::ProgressReporter(Console& console, std::shared_ptr<TimeSource> timeSource, QString activity)
    : console_(console)
    , timeSource_(std::move(timeSource))
    , activity_(std::move(activity)) {}

void ProgressReporter::setExpected(int transfers, qint64 bytes) {
    expected_ = transfers;
    expectedBytes_ = bytes;
}

ProgressReporter::Id ProgressReporter::begin(const QString& name, qint64 totalBytes) {
    const Id id = ++lastId_;
    running_.emplace(id, Transfer{{name, 0, totalBytes, 0}});
    if (console_.hasStatusLine())
        drawLine();
    else if (console_.showsProgress())
        console_.remark(activity_ + QLatin1Char(' ') + name + QStringLiteral(" (") + byteCountText(totalBytes) +
                        QLatin1Char(')'));
    return id;
}

void ProgressReporter::update(Id id, qint64 doneBytes) {
    const auto found = running_.find(id);
    if (found == running_.end())
        return;
    Progress& progress = found->second.progress;
    progress.done = std::clamp<qint64>(doneBytes, 0, progress.total);
    if (console_.hasStatusLine())
        drawLine();
    else if (console_.showsProgress())
        reportPlainly(found->second);
}

void ProgressReporter::end(Id id) {
    const auto found = running_.find(id);
    if (found == running_.end())
        return;
    endedBytes_ += found->second.progress.total;
    ++ended_;
    running_.erase(found);
    if (running_.empty())
        console_.clearStatus();
    else if (console_.hasStatusLine())
        drawLine();
}

void ProgressReporter::reportPlainly(Transfer& transfer) const {
    const int tenths = transfer.progress.percent() / 10;
    if (tenths <= transfer.reportedTenths || tenths == 10) // the result itself says that it is done
        return;
    transfer.reportedTenths = tenths;
    console_.remark(transfer.progress.name + QStringLiteral(": ") + QString::number(tenths * 10) + QLatin1Char('%'));
}

void ProgressReporter::drawLine() {
    const auto now = timeSource_->elapsed();
    if (wasDrawn_ && now - lastDrawn_ < shortestRedraw)
        return;
    Progress sum{running_.begin()->second.progress.name, endedBytes_, endedBytes_, 0};
    for (const auto& [id, transfer] : running_) {
        sum.done += transfer.progress.done;
        sum.total += transfer.progress.total;
    }
    sum.total = std::max(sum.total, expectedBytes_);
    rate_.add(now, sum.done);
    sum.bytesPerSecond = rate_.bytesPerSecond();
    if (expected_ > 1)
        sum.name = QStringLiteral("%1/%2 ").arg(ended_ + 1).arg(expected_) + sum.name;
    console_.setStatus(progressLine(sum, console_.statusColumns()));
    lastDrawn_ = now;
    wasDrawn_ = true;
}

} // namespace quenby
