#include "preferences/account/OwnClientUi.h"

#include "preferences/account/OwnClientDialog.h"
#include "preferences/account/StepView.h"
#include "widgets/SecondaryLabel.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace quenby {
namespace {

// Everything stands on a grid of 4 pixels.
constexpr int margin = 16;
constexpr int betweenSteps = 4;
constexpr int buttonSpacing = 8;
constexpr int charactersAcross = 76;
constexpr double mostOfScreen = 0.85;

QString tr(const char* text) { return OwnClientDialog::tr(text); }

QString howToRegister() {
    return QStringList{
        tr("In the provider's console:"),
        tr("•  Choose a project, or make one."),
        tr("•  Enable the Google Drive API for it."),
        tr("•  On its consent screen, add your own address as a test user."),
        tr("•  Create an OAuth client ID of the kind “Desktop app”, and download its JSON file."),
    }
        .join(QLatin1Char('\n'));
}

QLayout* makeButtonRow(const OwnClientUi& ui) {
    auto* row = new QHBoxLayout;
    row->setContentsMargins(margin, 0, margin, margin);
    row->setSpacing(buttonSpacing);
    row->addWidget(ui.formerButton);
    row->addStretch(1);
    row->addWidget(ui.cancelButton);
    row->addWidget(ui.useButton);
    return row;
}

void makeLayout(const OwnClientUi& ui, QDialog& dialog) {
    auto* column = new QVBoxLayout(ui.steps);
    constexpr int beside = margin - StepView::inset;
    column->setContentsMargins(beside, margin, beside, beside);
    column->setSpacing(betweenSteps);
    column->addWidget(ui.inUse);
    for (StepView* step : {ui.registerStep, ui.fileStep, ui.trialStep, ui.useStep})
        column->addWidget(step);
    column->addStretch(1);
    ui.scroller->setWidget(ui.steps);
    auto* layout = new QVBoxLayout(&dialog);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(ui.scroller, 1);
    layout->addLayout(makeButtonRow(ui));
}

} // namespace

OwnClientUi::OwnClientUi(QDialog& dialog)
    : inUse(new SecondaryLabel(&dialog))
    , scroller(new QScrollArea(&dialog))
    , steps(new QWidget)
    , registerStep(new StepView(1, tr("Register a client"), howToRegister(), steps))
    , fileStep(new StepView(2, tr("Give its file to Quenby"),
                            tr("Drop the file on this window, paste the file or its text (Ctrl+V), or choose it."),
                            steps))
    , trialStep(new StepView(3, tr("Try it"),
                             tr("Quenby asks the provider whether it knows the client. This signs nobody in."), steps))
    , useStep(new StepView(4, tr("Use it"), {}, steps))
    , consoleButton(registerStep->addButton(tr("&Open Console")))
    , chooseButton(fileStep->addButton(tr("Choose &File…")))
    , pasteButton(fileStep->addButton(tr("&Paste")))
    , tryButton(trialStep->addButton(tr("&Try Again")))
    , formerButton(new QPushButton(tr("Use &Quenby's Own Client Again"), &dialog))
    , cancelButton(new QPushButton(tr("Cancel"), &dialog))
    , useButton(new QPushButton(tr("&Use This Client"), &dialog)) {
    inUse->setWordWrap(true);
    inUse->setContentsMargins(StepView::inset, 0, StepView::inset, 0);
    useButton->setDefault(true);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setWidgetResizable(true);
    scroller->setFocusPolicy(Qt::NoFocus); // its buttons scroll it when they get the keyboard
    makeLayout(*this, dialog);

    QWidget* previous = consoleButton;
    for (QWidget* next : {chooseButton, pasteButton, tryButton, formerButton, cancelButton, useButton}) {
        QWidget::setTabOrder(previous, next);
        previous = next;
    }
    consoleButton->setFocus();
}

void OwnClientUi::fit(QDialog& dialog) const {
    // What was just said has not come up to the dialog's layout yet.
    for (StepView* step : {registerStep, fileStep, trialStep, useStep}) {
        step->layout()->invalidate();
        step->updateGeometry();
    }
    steps->layout()->invalidate();
    const QSize room = dialog.screen()->availableSize() * mostOfScreen;
    const int wished = dialog.fontMetrics().averageCharWidth() * charactersAcross + 2 * margin;
    const int width = std::min(std::max({wished, dialog.width(), dialog.minimumSizeHint().width()}), room.width());
    const int below = dialog.layout()->minimumSize().height() - scroller->minimumSizeHint().height();
    const int height = steps->layout()->totalHeightForWidth(width) + below;
    dialog.setMinimumWidth(std::min(wished, room.width()));
    dialog.resize(width, std::min(std::max(height, dialog.isVisible() ? dialog.height() : 0), room.height()));
}

void OwnClientUi::showDrop(bool mayDrop) const { fileStep->setHighlighted(mayDrop); }

} // namespace quenby
