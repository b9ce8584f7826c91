#include "preferences/account/AccountPaneUi.h"

#include "preferences/account/AccountFace.h"
#include "preferences/account/AccountPane.h"
#include "preferences/account/ServiceUsageBar.h"
#include "widgets/SecondaryLabel.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace quenby {
namespace {

// Everything stands on a grid of 4 pixels.
constexpr int margin = 16;
constexpr int spacing = 12;
constexpr int lineSpacing = 2;
constexpr qreal nameSize = 1.25; // of the usual

void enlarge(QLabel& label) {
    QFont font = label.font();
    font.setPointSizeF(font.pointSizeF() * nameSize);
    font.setWeight(QFont::DemiBold);
    label.setFont(font);
}

QLayout* makeHeader(const AccountPaneUi& ui) {
    auto* lines = new QVBoxLayout;
    lines->setSpacing(lineSpacing);
    lines->addStretch(1);
    for (QLabel* line : {ui.user_name, ui.account_name, ui.quota, ui.access})
        lines->addWidget(line);
    lines->addStretch(1);
    auto* header = new QHBoxLayout;
    header->setSpacing(margin);
    header->addWidget(ui.face, 0, Qt::AlignTop);
    header->addLayout(lines, 1);
    return header;
}

QLayout* makeButtons(const AccountPaneUi& ui) {
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing);
    buttons->addWidget(ui.ownClientButton);
    buttons->addStretch(1);
    buttons->addWidget(ui.signInButton);
    buttons->addWidget(ui.signInAgainButton);
    buttons->addWidget(ui.logoutButton);
    return buttons;
}

} // namespace

AccountPaneUi::AccountPaneUi(QWidget* pane)
    : face(new AccountFace(pane))
    , user_name(new ElidedLabel(pane))
    , account_name(new SecondaryLabel(pane))
    , quota(new SecondaryLabel(pane))
    , access(new SecondaryLabel(pane))
    , usage(new ServiceUsageBar(pane))
    , ownClientButton(new QPushButton(AccountPane::tr("Use Own &Client…"), pane))
    , signInButton(new QPushButton(AccountPane::tr("Sign &In"), pane))
    , signInAgainButton(new QPushButton(AccountPane::tr("Sign In &Again…"), pane))
    , logoutButton(new QPushButton(AccountPane::tr("Sign &Out"), pane)) {
    enlarge(*user_name);
    user_name->setObjectName(QStringLiteral("user_name"));
    account_name->setObjectName(QStringLiteral("account_name"));
    quota->setObjectName(QStringLiteral("quota"));
    access->setObjectName(QStringLiteral("access"));
    signInAgainButton->setToolTip(AccountPane::tr("Signs out; then another access can be chosen"));
    signInAgainButton->setAccessibleDescription(signInAgainButton->toolTip());
    for (QLabel* label : {user_name, account_name})
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    logoutButton->setObjectName(QStringLiteral("logoutButton"));
    for (QPushButton* button : {ownClientButton, signInButton, signInAgainButton, logoutButton})
        button->setAutoDefault(true); // so that Return presses it, too

    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacing);
    layout->addLayout(makeHeader(*this));
    layout->addWidget(usage);
    layout->addStretch(1);
    layout->addLayout(makeButtons(*this));
    QWidget::setTabOrder(ownClientButton, signInButton);
    QWidget::setTabOrder(signInButton, signInAgainButton);
    QWidget::setTabOrder(signInAgainButton, logoutButton);
}

} // namespace quenby
