#include "workspace/window/WelcomeViewUi.h"

#include "widgets/ActivityIndicator.h"
#include "widgets/ElidedLabel.h"
#include "widgets/SecondaryLabel.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace quenby {
namespace {

// Everything stands on a grid of 8 pixels.
constexpr int margin = 24;
constexpr int pictureSide = 96;
constexpr int columnWidth = 440;
constexpr int buttonWidth = 240;
constexpr int statusPictureSide = 24;
constexpr int statusSpacing = 12;

QPushButton* makeButton(const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setAutoDefault(true); // so that Return presses it, too
    button->setMinimumSize(buttonWidth, 36);
    return button;
}

QLabel* makeTitle(QWidget* parent) {
    auto* title = new QLabel(QStringLiteral("Welcome to Quenby"), parent);
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.8);
    font.setWeight(QFont::DemiBold);
    title->setFont(font);
    title->setAlignment(Qt::AlignCenter);
    return title;
}

QLabel* makeSentence(QWidget* parent) {
    auto* sentence = new SecondaryLabel(parent);
    sentence->setText(QStringLiteral("Sign in to watch your Drive and to upload what you drop here."));
    sentence->setAlignment(Qt::AlignCenter);
    sentence->setWordWrap(true);
    return sentence;
}

// The wheel or the warning, and beside it what is the matter.
QHBoxLayout* makeStatusLayout(const WelcomeViewUi& ui) {
    auto* layout = new QHBoxLayout(ui.statusRow);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(statusSpacing);
    layout->addStretch(1);
    layout->addWidget(ui.activityIndicator, 0, Qt::AlignVCenter);
    layout->addWidget(ui.troublePicture, 0, Qt::AlignVCenter);
    layout->addWidget(ui.statusText, 0, Qt::AlignVCenter);
    layout->addStretch(1);
    return layout;
}

// What is hidden takes no room, its distance to the next one included.
QWidget* makeColumn(const WelcomeViewUi& ui, QWidget* view) {
    auto* column = new QWidget(view);
    column->setFixedWidth(columnWidth);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(8);
    texts->addWidget(makeTitle(column));
    texts->addWidget(makeSentence(column));
    auto* buttons = new QVBoxLayout;
    buttons->setSpacing(8);
    for (QPushButton* button : {ui.tryAgainButton, ui.signInButton, ui.localDriveButton})
        buttons->addWidget(button, 0, Qt::AlignHCenter);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(24);
    layout->addWidget(ui.picture, 0, Qt::AlignHCenter);
    layout->addLayout(texts);
    layout->addWidget(ui.statusRow);
    layout->addLayout(buttons);
    return column;
}

// By stretches: an alignment would lose the height that wrapped text needs.
QHBoxLayout* centred(QWidget* widget) {
    auto* layout = new QHBoxLayout;
    layout->addStretch(1);
    layout->addWidget(widget);
    layout->addStretch(1);
    return layout;
}

} // namespace

WelcomeViewUi::WelcomeViewUi(QWidget* view)
    : menuButton(new QPushButton(QStringLiteral("&Menu"), view))
    , picture(new QLabel(view))
    , signInButton(makeButton(QStringLiteral("&Sign In"), view))
    , localDriveButton(makeButton(QStringLiteral("Try the &Local Drive"), view))
    , statusRow(new QWidget(view))
    , activityIndicator(new ActivityIndicator(statusRow))
    , troublePicture(new QLabel(statusRow))
    , statusText(new ElidedLabel(statusRow))
    , tryAgainButton(makeButton(QStringLiteral("Try &Again"), view)) {
    menuButton->setMinimumSize(96, 32);
    menuButton->hide();
    picture->setPixmap(QApplication::windowIcon().pixmap(pictureSide, pictureSide));
    picture->setFixedSize(pictureSide, pictureSide);
    localDriveButton->setToolTip(
        QStringLiteral("A Drive on this computer: everything works, and no account is needed"));
    troublePicture->setPixmap(
        view->style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(statusPictureSide, statusPictureSide));
    troublePicture->setAccessibleName(QStringLiteral("Warning"));
    statusText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    makeStatusLayout(*this);

    auto* layout = new QVBoxLayout(view);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->addWidget(menuButton, 0, Qt::AlignRight);
    layout->addStretch(1);
    layout->addLayout(centred(makeColumn(*this, view)));
    layout->addStretch(1);

    QWidget::setTabOrder(tryAgainButton, signInButton);
    QWidget::setTabOrder(signInButton, localDriveButton);
    QWidget::setTabOrder(localDriveButton, menuButton);
}

void WelcomeViewUi::setStatus(const QString& text) {
    constexpr int room = columnWidth - statusPictureSide - statusSpacing;
    const bool wraps = statusText->fontMetrics().horizontalAdvance(text) > room;
    statusText->setWordWrap(wraps);
    statusText->setMinimumWidth(wraps ? room : 0);
    statusText->setText(text);
}

} // namespace quenby
