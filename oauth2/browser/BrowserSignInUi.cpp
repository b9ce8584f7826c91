#include "oauth2/browser/BrowserSignInUi.h"

#include "oauth2/window/LoadingLine.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quenby {
namespace {

constexpr int margin = 20;
constexpr int textWidth = 400;
constexpr int buttonHeight = 32;
constexpr int buttonMargins = 16; // of both sides, besides the style's

QLabel* makeWrappedLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(textWidth);
    return label;
}

} // namespace

BrowserSignInWindow::BrowserSignInWindow(QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(tr("Sign In"));
    progress_ = new LoadingLine(this);
    progress_->hide();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(progress_);
    layout->addWidget(makeTexts(), 1);
    layout->addWidget(makeButtons());
    layout->setSizeConstraint(QLayout::SetFixedSize);
    connect(cancelButton_, &QPushButton::clicked, this, &QDialog::reject);
}

QWidget* BrowserSignInWindow::makeTexts() {
    auto* texts = new QWidget(this);
    title_ = makeWrappedLabel(texts);
    QFont font = title_->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    title_->setFont(font);
    text_ = makeWrappedLabel(texts);
    text_->setAlignment(Qt::AlignTop | Qt::AlignLeading);
    notice_ = makeWrappedLabel(texts);
    notice_->hide();

    openAgainButton_ = new QPushButton(tr("&Open the Page Again"), texts);
    copyButton_ = new QPushButton(tr("Copy the &Address"), texts);
    copyButton_->setToolTip(tr("To open it in another browser on this computer. It is good for this sign-in only; "
                               "give it to nobody."));
    for (QPushButton* button : {openAgainButton_, copyButton_}) {
        button->setAutoDefault(false);
        button->setMinimumSize(button->sizeHint().width() + buttonMargins, buttonHeight);
    }
    auto* row = new QHBoxLayout;
    row->setSpacing(10);
    row->addWidget(openAgainButton_);
    row->addWidget(copyButton_);
    row->addStretch();

    auto* layout = new QVBoxLayout(texts);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(12);
    layout->addWidget(title_);
    layout->addWidget(text_);
    layout->addLayout(row);
    layout->addWidget(notice_);
    return texts;
}

QWidget* BrowserSignInWindow::makeButtons() {
    auto* buttons = new QWidget(this);
    keychainCheckbox_ = new QCheckBox(tr("&Keep me signed in"), buttons);
    keychainCheckbox_->setToolTip(tr("Stores the sign-in in this computer's keyring, so that the next start does not "
                                     "ask for it."));
    keychainCheckbox_->setChecked(true);
    cancelButton_ = new QPushButton(tr("&Cancel"), buttons);
    cancelButton_->setAutoDefault(false);
    cancelButton_->setMinimumSize(88, buttonHeight);
    auto* layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(margin, 0, margin, margin);
    layout->addWidget(keychainCheckbox_);
    layout->addStretch();
    layout->addWidget(cancelButton_);
    return buttons;
}

void BrowserSignInWindow::showWaiting(const QString& host) {
    progress_->hide();
    title_->setText(tr("Continue in your browser"));
    // Isolated, so that the host reads the same among words that are written from the right.
    text_->setText(tr("The sign-in page of %1 is open there. Sign in and allow Quenby to use your Drive; this window "
                      "closes by itself.")
                       .arg(QChar(0x2068) + host + QChar(0x2069)));
    setAccessibleDescription(text_->text());
}

void BrowserSignInWindow::showFinishing() {
    text_->setMinimumHeight(text_->height()); // whichever text it shows, the window keeps its size
    title_->setText(tr("Finishing the sign-in"));
    text_->setText(tr("The browser has answered. You can close its page."));
    setAccessibleDescription(text_->text());
    openAgainButton_->setEnabled(false);
    copyButton_->setEnabled(false);
    setNotice({});
    progress_->show();
}

void BrowserSignInWindow::setNotice(const QString& text) {
    notice_->setText(text);
    notice_->setVisible(!text.isEmpty());
}

QString BrowserSignInWindow::notice() const { return notice_->text(); }
QString BrowserSignInWindow::text() const { return text_->text(); }
bool BrowserSignInWindow::isFinishing() const { return !progress_->isHidden(); }

void BrowserSignInWindow::dismiss() { QDialog::reject(); }

void BrowserSignInWindow::reject() {
    QDialog::reject();
    Q_EMIT closedByUser();
}

} // namespace quenby
