#include "workspace/uploads/RateLimitBox.h"

#include "core/ByteCountText.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <array>

namespace quenby {
namespace {

constexpr qint64 kilobyte = 1024;
constexpr qint64 megabyte = 1024 * kilobyte;
constexpr std::array usualLimits{100 * kilobyte, 250 * kilobyte, 500 * kilobyte, 1 * megabyte,
                                 2 * megabyte,   5 * megabyte,   10 * megabyte};
constexpr qint64 firstOther = 300 * kilobyte; // when there was no limit before
constexpr int mostKilobytes = 10'000'000;
constexpr qint64 otherChoice = -1;

int kilobytes(qint64 bytes) { return int(std::clamp<qint64>((bytes + kilobyte - 1) / kilobyte, 1, mostKilobytes)); }

} // namespace

RateLimitBox::RateLimitBox(QWidget* parent)
    : QWidget(parent)
    , choices_(new QComboBox(this))
    , other_(new QSpinBox(this)) {
    choices_->setAccessibleName(tr("Speed limit"));
    choices_->addItem(tr("No limit"), qint64(0));
    for (const qint64 limit : usualLimits)
        choices_->addItem(tr("%1/s").arg(byteCountText(limit)), limit);
    choices_->addItem(tr("Other…"), otherChoice);
    other_->setRange(1, mostKilobytes);
    other_->setSuffix(tr(" kB/s"));
    other_->setStepType(QSpinBox::AdaptiveDecimalStepType);
    other_->setKeyboardTracking(false); // a number that is half typed is no limit
    other_->setAccessibleName(tr("Speed limit in kilobytes per second"));
    other_->hide();

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(choices_);
    layout->addWidget(other_);
    setFocusProxy(choices_);

    connect(choices_, &QComboBox::activated, this, &RateLimitBox::chosen);
    connect(other_, &QSpinBox::valueChanged, this, [this](int value) { request(value * kilobyte); });
}

void RateLimitBox::setLimit(qint64 bytesPerSecond) {
    if (bytesPerSecond == limit_)
        return; // one of the choices may also have been typed as a number
    limit_ = bytesPerSecond;
    const QSignalBlocker quiet(other_);
    const int choice = choices_->findData(bytesPerSecond);
    choices_->setCurrentIndex(choice >= 0 ? choice : choices_->findData(otherChoice));
    other_->setVisible(choice < 0);
    if (choice < 0)
        other_->setValue(kilobytes(bytesPerSecond));
}

void RateLimitBox::chosen(int choice) {
    const qint64 limit = choices_->itemData(choice).toLongLong();
    other_->setVisible(limit == otherChoice);
    if (limit != otherChoice)
        return request(limit);
    const QSignalBlocker quiet(other_);
    other_->setValue(kilobytes(limit_ > 0 ? limit_ : firstOther));
    other_->setFocus(Qt::OtherFocusReason);
    other_->selectAll();
    request(other_->value() * kilobyte);
}

void RateLimitBox::request(qint64 bytesPerSecond) {
    if (bytesPerSecond == limit_)
        return;
    limit_ = bytesPerSecond;
    Q_EMIT limitRequested(bytesPerSecond);
}

} // namespace quenby
