#include "workspace/share/ctmWindow.h"

#include "workspace/share/MeasuringScript.h"
#include "workspace/share/ShareFrame.h"
#include "workspace/share/ShareLog.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QScreen>
#include <QWindow>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto animationDuration = 250ms;
constexpr qreal cornerRadius = 8;

// Held down for something else; by itself such a key is none.
bool isModifier(int key) {
    return (key >= Qt::Key_Shift && key <= Qt::Key_ScrollLock) || key == Qt::Key_AltGr || key == Qt::Key_Super_L ||
           key == Qt::Key_Super_R;
}

// Round at the top only: below, the page fills the window into its corners.
QPainterPath outlineIn(const QRectF& area) {
    QPainterPath round;
    round.addRoundedRect(area, cornerRadius, cornerRadius);
    QPainterPath lower;
    lower.addRect(area.adjusted(0, area.height() / 2, 0, 0));
    return round.united(lower).simplified();
}

QPropertyAnimation* animationOf(QWidget* window, const char* property) {
    auto* animation = new QPropertyAnimation(window, property, window);
    animation->setDuration(static_cast<int>(animationDuration.count()));
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    return animation;
}

} // namespace

ctmWindow::ctmWindow(std::shared_ptr<TimeSource> timeSource)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint)
    , timeSource_(std::move(timeSource))
    , moving_(animationOf(this, "geometry"))
    , fading_(animationOf(this, "windowOpacity")) {
    setAttribute(Qt::WA_QuitOnClose, false);
}

ctmWindow::~ctmWindow() = default;

void ctmWindow::setWebView(WebView* webView) { webView_ = webView; }

void ctmWindow::setProgressIndicator(QWidget* progressIndicator) { progressIndicator_ = progressIndicator; }

bool ctmWindow::isPageLoading() const { return progressIndicator_ && progressIndicator_->isVisible(); }

void ctmWindow::measure() {
    if (!webView_)
        return;
    webView_->evaluate(measuringScript(), this, [this](const QVariant& height) {
        // A page that is being replaced has no dialog for another reason.
        if (!isPageLoading())
            selfClosesizeChange(webView_, height.toString());
    });
}

void ctmWindow::selfClosesizeChange(WebView* webView, const QString& andheight) {
    if (isDismissed_)
        return;
    setWebView(webView);
    const int height = static_cast<int>(andheight.toDouble());
    if (height > 0)
        return fitHeight(height);
    qCInfo(shareLog, "close now");
    dismiss();
}

void ctmWindow::fitHeight(int dialogHeight) {
    if (dialogHeight <= 0 || isDismissed_)
        return;
    const QRect wanted =
        keptInside(shareFrame(geometry(), screen()->geometry(), dialogHeight), screen()->availableGeometry());
    const bool isOnItsWay = moving_->state() == QAbstractAnimation::Running && moving_->endValue().toRect() == wanted;
    if (isOnItsWay || geometry() == wanted)
        return;
    moving_->stop();
    moving_->setStartValue(geometry());
    moving_->setEndValue(wanted);
    moving_->start();
}

void ctmWindow::dismiss() {
    if (std::exchange(isDismissed_, true))
        return;
    fading_->setStartValue(windowOpacity());
    fading_->setEndValue(0.0);
    fading_->start();
    orderingOut_ = timeSource_->startTimer(animationDuration + 100ms, [this] { hide(); });
    emptying_ = timeSource_->startTimer(5s, [this] {
        if (webView_)
            webView_->load(QUrl(QStringLiteral("about:blank")));
        removing_ = timeSource_->startTimer(1s, [this] { Q_EMIT removeShareWindow(); });
    });
}

bool ctmWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowTitleChange || event->type() == QEvent::ActivationChange)
        update(); // the title is painted by a child
    return QWidget::event(event);
}

// Keys arrive here first, and only then at whatever has the focus: the page's widget need not pass on any of them.
bool ctmWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == windowHandle() && event->type() == QEvent::KeyPress)
        handleKey(static_cast<QKeyEvent*>(event)->key());
    return QWidget::eventFilter(watched, event);
}

void ctmWindow::handleKey(int key) {
    if (isDismissed_ || isPageLoading() || isModifier(key))
        return;
    if (key == Qt::Key_Escape)
        return selfClosesizeChange(webView_, {});
    // Where a problem is told instead of the page, keys are for its buttons.
    if (webView_ && webView_->widget()->isVisible())
        measure();
}

void ctmWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // Only once, however often it is installed.
    windowHandle()->installEventFilter(this);
}

void ctmWindow::closeEvent(QCloseEvent* event) {
    if (!isDismissed_) {
        qCInfo(shareLog, "close now");
        dismiss();
    }
    // A window that refused to be closed would keep the program from ending.
    event->accept();
}

void ctmWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    setMask(outlineIn(rect()).toFillPolygon().toPolygon());
}

void ctmWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.35F);
    painter.setPen(line);
    painter.setBrush(palette().window());
    painter.drawPath(outlineIn(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5)));
}

} // namespace quenby
