#include "app/recording/StopItem.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr int side = 17; // points
constexpr QColor red(0xd9, 0x2d, 0x20);
constexpr QColor redOnDark(0xff, 0x5a, 0x4d);

QString twoDigits(qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); }

} // namespace

QString runningTime(std::chrono::seconds time) {
    const qint64 seconds = time.count();
    const QString minutesAndSeconds = twoDigits(seconds / 60 % 60) + QLatin1Char(':') + twoDigits(seconds % 60);
    if (seconds >= 3600)
        return QString::number(seconds / 3600) + QLatin1Char(':') + minutesAndSeconds;
    return QString::number(seconds / 60) + minutesAndSeconds.sliced(2);
}

StopItem::StopItem(MakeHosts makeHosts, std::shared_ptr<TimeSource> timeSource)
    : makeHosts_(std::move(makeHosts))
    , timeSource_(std::move(timeSource)) {
    connect(menu_.addAction(tr("&Stop Recording")), &QAction::triggered, this, &StopItem::press);
}

StopItem::~StopItem() = default;

void StopItem::show() {
    remove();
    hosts_ = makeHosts_();
    connect(hosts_.get(), &StatusItemHosts::hostChanged, this, &StopItem::followHost);
    hosts_->start();
}

void StopItem::followHost() {
    StatusItemHost* host = hosts_->host();
    if (!host)
        return;
    connect(host, &StatusItemHost::clicked, this, &StopItem::press);
    connect(host, &StatusItemHost::middleClicked, this, &StopItem::press);
    connect(host, &StatusItemHost::menuRequested, this, [this](const QPoint& position) { menu_.popup(position); });
    host->show(*this, menu_);
}

// The second half of a double click may be on its way already when the item goes.
void StopItem::press() {
    if (isShown())
        Q_EMIT clicked();
}

void StopItem::startClock() {
    if (!isShown()) // stopped before the first frame
        return;
    began_ = timeSource_->elapsed();
    scheduleTick();
}

// The clicked item is what is removed: the host is still in its own signal.
void StopItem::remove() {
    tick_.reset();
    began_ = std::chrono::milliseconds(-1);
    menu_.hide();
    if (!hosts_)
        return;
    hosts_->disconnect(this);
    hosts_.release()->deleteLater();
}

void StopItem::scheduleTick() {
    using std::chrono::milliseconds;
    const milliseconds intoSecond((timeSource_->elapsed() - began_).count() % 1000);
    tick_ = timeSource_->startTimer(milliseconds(1000) - intoSecond, [this] {
        if (hosts_ && hosts_->host())
            hosts_->host()->update();
        scheduleTick();
    });
}

QSize StopItem::size() const { return {side, side}; }

void StopItem::paint(QPainter& painter, const QRect& rect, bool isDarkSurrounding) const {
    QRect square(0, 0, side, side);
    square.moveCenter(rect.center());
    paintIcon(painter, square, isDarkSurrounding);
}

// A square within a ring.
void StopItem::paintIcon(QPainter& painter, const QRect& square, bool isDarkSurrounding) const {
    const qreal unit = square.width() / qreal(side);
    const QPointF centre = QRectF(square).center();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(isDarkSurrounding ? redOnDark : red, 1.5 * unit));
    painter.drawEllipse(centre, 7.5 * unit, 7.5 * unit);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDarkSurrounding ? redOnDark : red);
    painter.drawRoundedRect(QRectF(centre - QPointF(3.25, 3.25) * unit, QSizeF(6.5, 6.5) * unit), unit, unit);
    painter.restore();
}

QString StopItem::title() const { return tr("Stop Recording"); }

QString StopItem::toolTip() const {
    if (began_.count() < 0)
        return tr("Stop recording");
    const auto time = std::chrono::duration_cast<std::chrono::seconds>(timeSource_->elapsed() - began_);
    return tr("Stop recording (%1)").arg(runningTime(time));
}

} // namespace quenby
