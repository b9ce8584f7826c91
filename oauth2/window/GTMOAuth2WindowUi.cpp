#include "oauth2/window/GTMOAuth2WindowUi.h"

#include "oauth2/window/HostLine.h"
#include "oauth2/window/LoadingLine.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <QWindow>

namespace quenby {
namespace {

constexpr int margin = 10;
constexpr int buttonHeight = 32;
constexpr QSize smallestSize(360, 360);
constexpr QSize frameAround(16, 48); // what a window manager adds, generously

QLabel* makeWrappedLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QFrame* makeLine(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFrameStyle(QFrame::HLine | QFrame::Plain);
    line->setForegroundRole(QPalette::Mid);
    line->setFixedHeight(1);
    return line;
}

} // namespace

GTMOAuth2Window::GTMOAuth2Window(QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(tr("Sign In"));
    pages_ = new QStackedWidget(this);
    waiting_ = new QWidget(pages_);
    message_ = makeMessage();
    pages_->addWidget(waiting_);
    pages_->addWidget(message_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeHeader());
    layout->addWidget(progress_);
    layout->addWidget(pages_, 1);
    layout->addWidget(makeLine(this));
    layout->addWidget(makeFooter());

    connect(webCloseButton_, &QPushButton::clicked, this, &QDialog::reject);
    setMinimumSize(smallestSize);
    resize(sizeHint().boundedTo(screen()->availableSize() - frameAround));
    showWaiting();
}

QWidget* GTMOAuth2Window::makeHeader() {
    auto* header = new QWidget(this);
    host_ = new HostLine(header);
    notice_ = makeWrappedLabel(header);
    notice_->setAlignment(Qt::AlignCenter);
    auto* layout = new QVBoxLayout(header);
    layout->setContentsMargins(margin, 6, margin, 6);
    layout->setSpacing(2);
    layout->addWidget(host_);
    layout->addWidget(notice_);
    notice_->hide();
    progress_ = new LoadingLine(this);
    return header;
}

QWidget* GTMOAuth2Window::makeMessage() {
    auto* message = new QWidget(pages_);
    messageTitle_ = makeWrappedLabel(message);
    messageTitle_->setAlignment(Qt::AlignCenter);
    QFont font = messageTitle_->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    messageTitle_->setFont(font);
    messageText_ = makeWrappedLabel(message);
    messageText_->setAlignment(Qt::AlignCenter);
    messageText_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    tryAgainButton_ = new QPushButton(tr("&Try Again"), message);
    tryAgainButton_->setMinimumSize(128, buttonHeight);

    auto* layout = new QVBoxLayout(message);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->setSpacing(12);
    layout->addStretch();
    layout->addWidget(messageTitle_);
    layout->addWidget(messageText_);
    layout->addSpacing(4);
    layout->addWidget(tryAgainButton_, 0, Qt::AlignHCenter);
    layout->addStretch();
    return message;
}

QWidget* GTMOAuth2Window::makeFooter() {
    auto* footer = new QWidget(this);
    webBackButton_ = new QPushButton(tr("&Back"), footer);
    webBackButton_->setEnabled(false);
    keychainCheckbox_ = new QCheckBox(tr("&Keep me signed in"), footer);
    keychainCheckbox_->setToolTip(tr("Stores the sign-in in this computer's keyring, so that the next start does not "
                                     "ask for it."));
    keychainCheckbox_->setChecked(true);
    webCloseButton_ = new QPushButton(tr("&Cancel"), footer);
    // Return belongs to the page: no button may take it.
    for (QPushButton* button : {webBackButton_, webCloseButton_}) {
        button->setAutoDefault(false);
        button->setMinimumSize(88, buttonHeight);
    }

    auto* layout = new QHBoxLayout(footer);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(margin);
    layout->addWidget(webBackButton_);
    layout->addWidget(keychainCheckbox_);
    layout->addStretch();
    layout->addWidget(webCloseButton_);
    return footer;
}

void GTMOAuth2Window::setWebWidget(QWidget* widget) {
    web_ = widget;
    web_->setAccessibleName(tr("Sign-in page"));
    pages_->addWidget(web_);
    setTabOrder(web_, webBackButton_);
}

void GTMOAuth2Window::showWeb() {
    if (!web_ || pages_->currentWidget() == web_)
        return;
    pages_->setCurrentWidget(web_);
    web_->setFocus();
}

void GTMOAuth2Window::showWaiting() { pages_->setCurrentWidget(waiting_); }

void GTMOAuth2Window::showMessage(const QString& title, const QString& text) {
    messageTitle_->setText(title);
    messageText_->setText(text);
    message_->setAccessibleName(title);
    message_->setAccessibleDescription(text);
    pages_->setCurrentWidget(message_);
    tryAgainButton_->setDefault(true);
    tryAgainButton_->setFocus();
}

bool GTMOAuth2Window::showsMessage() const { return pages_->currentWidget() == message_; }
QString GTMOAuth2Window::messageText() const { return messageText_->text(); }

void GTMOAuth2Window::setLoading(bool isLoading) { progress_->setVisible(isLoading); }

void GTMOAuth2Window::setHost(const QString& host, bool isSecure) { host_->setHost(host, isSecure); }

void GTMOAuth2Window::setNotice(const QString& text) {
    notice_->setText(text);
    notice_->setVisible(!text.isEmpty());
}

QString GTMOAuth2Window::notice() const { return notice_->text(); }

// A dialog chooses its own place over its parent. While the parent has none yet, as at the program's start, that would
// be a corner of the screen; then the window manager finds a better one.
void GTMOAuth2Window::showEvent(QShowEvent* event) {
    const QWindow* parent = parentWidget() ? parentWidget()->window()->windowHandle() : nullptr;
    const bool isLeftToWindowManager = parent && !parent->isExposed() && !testAttribute(Qt::WA_Moved);
    setAttribute(Qt::WA_Moved, isLeftToWindowManager || testAttribute(Qt::WA_Moved));
    QDialog::showEvent(event);
    if (isLeftToWindowManager)
        setAttribute(Qt::WA_Moved, false);
}

void GTMOAuth2Window::dismiss() { QDialog::reject(); }

void GTMOAuth2Window::reject() {
    QDialog::reject();
    Q_EMIT closedByUser();
}

} // namespace quenby
