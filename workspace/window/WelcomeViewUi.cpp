#include "workspace/window/WelcomeViewUi.h"

#include "widgets/ActivityIndicator.h"
#include "widgets/ElidedLabel.h"
#include "widgets/SecondaryLabel.h"
#include "workspace/window/WelcomeView.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include <initializer_list>

namespace quenby {
namespace {

// Everything stands on a grid of 8 pixels.
constexpr int margin = 24;
constexpr int pictureSide = 96;
constexpr int columnWidth = 432; // beside a scroll bar in the narrowest window
constexpr int buttonWidth = 240;
constexpr int statusPictureSide = 24;
constexpr int statusSpacing = 12;
constexpr int lineSpacing = 2;

QString tr(const char* text) { return WelcomeView::tr(text); }

QPushButton* makeButton(const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setAutoDefault(true); // so that Return presses it, too
    button->setMinimumSize(buttonWidth, 36);
    return button;
}

QLabel* makeTitle(QWidget* parent) {
    auto* title = new QLabel(tr("Welcome to Quenby"), parent);
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.8);
    font.setWeight(QFont::DemiBold);
    title->setFont(font);
    title->setAlignment(Qt::AlignCenter);
    title->setWordWrap(true);
    return title;
}

QLabel* makeSentence(QWidget* parent) {
    auto* sentence = new SecondaryLabel(parent);
    sentence->setText(tr("Sign in to watch your Drive and to upload what you drop here."));
    sentence->setAlignment(Qt::AlignCenter);
    sentence->setWordWrap(true);
    return sentence;
}

// The wheel or the warning, and beside it what is the matter.
void makeStatusLayout(const WelcomeViewUi& ui) {
    auto* layout = new QHBoxLayout(ui.statusRow);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(statusSpacing);
    layout->addStretch(1);
    layout->addWidget(ui.activityIndicator, 0, Qt::AlignVCenter);
    layout->addWidget(ui.troublePicture, 0, Qt::AlignVCenter);
    layout->addWidget(ui.statusText, 0, Qt::AlignVCenter);
    layout->addStretch(1);
}

// What the choice means, below its name and in line with it.
QLayout* explained(QRadioButton* choice, const QString& meaning) {
    auto* line = new SecondaryLabel(choice->parentWidget());
    line->setText(meaning);
    line->setWordWrap(true);
    choice->setAccessibleDescription(meaning);
    const QStyle* style = choice->style();
    auto* below = new QHBoxLayout;
    below->addSpacing(style->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth) +
                      style->pixelMetric(QStyle::PM_RadioButtonLabelSpacing));
    below->addWidget(line, 1);
    auto* layout = new QVBoxLayout;
    layout->setSpacing(lineSpacing);
    layout->addWidget(choice);
    layout->addLayout(below);
    return layout;
}

void makeAccessLayout(const WelcomeViewUi& ui) {
    auto* layout = new QVBoxLayout(ui.access);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addLayout(explained(ui.everything, tr("Quenby shows every change in it and opens all of its files. The "
                                                  "provider allows this to clients that it has verified, and to "
                                                  "yours.")));
    layout->addLayout(explained(ui.ownFiles, tr("This needs no verification by the provider. The list of changes "
                                                "shows these files and no others.")));
}

void makeOwnClientLayout(const WelcomeViewUi& ui) {
    auto* layout = new QVBoxLayout(ui.ownClient);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(lineSpacing);
    layout->addWidget(ui.ownClientButton, 0, Qt::AlignHCenter);
    layout->addWidget(ui.clientInUse);
}

// What is hidden takes no room, its distance to the next one included.
void makeColumn(const WelcomeViewUi& ui) {
    ui.column->setFixedWidth(columnWidth);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(8);
    texts->addWidget(makeTitle(ui.column));
    texts->addWidget(makeSentence(ui.column));
    auto* buttons = new QVBoxLayout;
    buttons->setSpacing(8);
    for (QPushButton* button : {ui.tryAgainButton, ui.signInButton})
        buttons->addWidget(button, 0, Qt::AlignHCenter);
    buttons->addWidget(ui.ownClient);
    buttons->addWidget(ui.localDriveButton, 0, Qt::AlignHCenter);
    auto* layout = new QVBoxLayout(ui.column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(24);
    layout->addWidget(ui.picture, 0, Qt::AlignHCenter);
    layout->addLayout(texts);
    layout->addWidget(ui.access);
    layout->addWidget(ui.statusRow);
    layout->addLayout(buttons);
}

// By stretches: an alignment would lose the height that wrapped text needs.
QScrollArea* centred(QWidget* column, QWidget* view) {
    auto* scroller = new QScrollArea(view);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setWidgetResizable(true);
    scroller->setFocusPolicy(Qt::NoFocus); // its buttons scroll it when they get the keyboard
    auto* room = new QWidget;
    auto* across = new QHBoxLayout;
    across->addStretch(1);
    across->addWidget(column);
    across->addStretch(1);
    auto* down = new QVBoxLayout(room);
    down->setContentsMargins(margin, 0, margin, margin);
    down->addStretch(1);
    down->addLayout(across);
    down->addStretch(1);
    scroller->setWidget(room);
    return scroller;
}

} // namespace

WelcomeViewUi::WelcomeViewUi(QWidget* view)
    : menuButton(new QPushButton(tr("&Menu"), view))
    , column(new QWidget(view))
    , picture(new QLabel(column))
    , access(new QWidget(column))
    , everything(new QRadioButton(tr("&Everything in the Drive"), access))
    , ownFiles(new QRadioButton(tr("&Only files that Quenby uploads"), access))
    , signInButton(makeButton(tr("&Sign In"), column))
    , ownClient(new QWidget(column))
    , ownClientButton(makeButton(tr("Use Your Own &Client…"), ownClient))
    , clientInUse(new SecondaryLabel(ownClient))
    , localDriveButton(makeButton(tr("Try the &Local Drive"), column))
    , statusRow(new QWidget(column))
    , activityIndicator(new ActivityIndicator(statusRow))
    , troublePicture(new QLabel(statusRow))
    , statusText(new ElidedLabel(statusRow))
    , tryAgainButton(makeButton(tr("Try &Again"), column)) {
    menuButton->setMinimumSize(96, 32);
    menuButton->hide();
    picture->setPixmap(QApplication::windowIcon().pixmap(pictureSide, pictureSide));
    picture->setFixedSize(pictureSide, pictureSide);
    everything->setChecked(true);
    access->setAccessibleName(tr("Access"));
    localDriveButton->setToolTip(tr("A Drive on this computer: everything works, and no account is needed"));
    ownClientButton->setToolTip(
        tr("Sign in as a client that you have registered with the provider, within limits of its own"));
    ownClientButton->setAccessibleDescription(ownClientButton->toolTip());
    clientInUse->setAlignment(Qt::AlignCenter);
    clientInUse->hide();
    troublePicture->setPixmap(
        view->style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(statusPictureSide, statusPictureSide));
    troublePicture->setAccessibleName(tr("Warning"));
    statusText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    makeStatusLayout(*this);
    makeAccessLayout(*this);
    makeOwnClientLayout(*this);
    makeColumn(*this);

    auto* layout = new QVBoxLayout(view);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* corner = new QHBoxLayout;
    corner->setContentsMargins(margin, margin, margin, 0);
    corner->addWidget(menuButton, 1, Qt::AlignRight);
    layout->addLayout(corner);
    layout->addWidget(centred(column, view), 1);

    QWidget* previous = everything;
    for (QWidget* next : std::initializer_list<QWidget*>{ownFiles, tryAgainButton, signInButton, ownClientButton,
                                                         localDriveButton, menuButton}) {
        QWidget::setTabOrder(previous, next);
        previous = next;
    }
}

void WelcomeViewUi::setStatus(const QString& text) {
    constexpr int room = columnWidth - statusPictureSide - statusSpacing;
    const bool wraps = statusText->fontMetrics().horizontalAdvance(text) > room;
    statusText->setWordWrap(wraps);
    statusText->setMinimumWidth(wraps ? room : 0);
    statusText->setText(text);
}

} // namespace quenby
