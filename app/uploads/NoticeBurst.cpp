#include "app/uploads/NoticeBurst.h"

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto burstTime = 5s;
constexpr auto replacePause = 1s;

} // namespace

NoticeBurst::NoticeBurst(QString name, size_t mostAlone, std::shared_ptr<TimeSource> timeSource)
    : name_(std::move(name))
    , mostAlone_(mostAlone)
    , timeSource_(std::move(timeSource)) {}

void NoticeBurst::tell(Post post) {
    if (!isBurst()) {
        endBurst();
        return post({}, {});
    }
    latest_ = std::move(post);
    ++sharing_;
    if (!pause_)
        postShared();
}

void NoticeBurst::clear() {
    pause_.reset();
    latest_ = nullptr;
    if (sharing_ > 0)
        ++number_;
    sharing_ = shown_ = 0;
}

bool NoticeBurst::isBurst() {
    const auto now = timeSource_->elapsed();
    recent_.push_back(now);
    if (recent_.size() > mostAlone_ + 1)
        recent_.pop_front();
    return recent_.size() > mostAlone_ && now - recent_.front() < burstTime;
}

void NoticeBurst::postShared() {
    const QString more = sharing_ > 1 ? QStringLiteral("\nand %1 more").arg(sharing_ - 1) : QString();
    latest_(name_ + QLatin1Char('-') + QString::number(number_), more);
    shown_ = sharing_;
    pause_ = timeSource_->startTimer(replacePause, [this] {
        pause_.reset();
        if (shown_ != sharing_)
            postShared();
    });
}

void NoticeBurst::endBurst() {
    if (shown_ != sharing_)
        postShared();
    clear();
}

} // namespace quenby
