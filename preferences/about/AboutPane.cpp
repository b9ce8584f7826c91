#include "preferences/about/AboutPane.h"

#include "platform/Opener.h"
#include "preferences/about/AboutPaneUi.h"
#include "preferences/about/LicencesDialog.h"
#include "preferences/about/MakerPages.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QUrl>

namespace quenby {
namespace {

constexpr int iconSide = 64;

// Said by screen readers as well; they follow no text that changes by itself.
void say(QLabel& label, const QString& text) {
    label.setText(text);
    label.setVisible(!text.isEmpty());
    if (text.isEmpty())
        return;
    QAccessibleEvent event(&label, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

} // namespace

AboutPane::AboutPane(const ProgramFacts& facts, Opener& opener, QWidget* parent)
    : QWidget(parent)
    , opener_(opener)
    , ui_(std::make_unique<AboutPaneUi>(this)) {
    // Sharp on every screen: that is the largest scale of all.
    ui_->appicon->setPixmap(facts.icon.pixmap(QSize(iconSide, iconSide), qGuiApp->devicePixelRatio()));
    ui_->txtAppName->setText(facts.name);
    ui_->txtVersion->setText(versionText(facts));
    ui_->txtCopyRights->setText(facts.copyright);
    connect(ui_->faq, &QPushButton::clicked, this, &AboutPane::faqPressed);
    connect(ui_->twitter, &QPushButton::clicked, this, &AboutPane::twitterPressed);
    connect(ui_->fanPage, &QPushButton::clicked, this, &AboutPane::fanPagePressed);
    connect(ui_->vantrel, &QPushButton::clicked, this, &AboutPane::vantrelPressed);
    connect(ui_->licencesButton, &QPushButton::clicked, this, [this] { (new LicencesDialog(opener_, this))->open(); });
    connect(ui_->diagnosticsButton, &QPushButton::clicked, this, [this] {
        say(*ui_->trouble, {});
        say(*ui_->confirmation, tr("Looking around…"));
        Q_EMIT copyDiagnosticsRequested();
    });
}

AboutPane::~AboutPane() = default;

QString AboutPane::versionText(const ProgramFacts& facts) {
    return tr("Version %1 (%2)").arg(facts.version, facts.build);
}

void AboutPane::diagnosticsCopied(const QString& trouble) {
    say(*ui_->confirmation, trouble.isEmpty() ? tr("Copied. Paste it into your message.") : QString());
    say(*ui_->trouble, trouble);
}

void AboutPane::faqPressed() { open(makerPages::forum); }

void AboutPane::twitterPressed() { open(makerPages::news); }

void AboutPane::fanPagePressed() { open(makerPages::community); }

void AboutPane::vantrelPressed() { open(makerPages::webSite); }

void AboutPane::open(const QUrl& page) {
    const bool isOpened = opener_.openURL(page);
    say(*ui_->trouble, isOpened ? QString() : unopenedPageText(page));
}

} // namespace quenby
