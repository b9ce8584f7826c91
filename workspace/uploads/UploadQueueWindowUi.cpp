#include "workspace/uploads/UploadQueueWindowUi.h"

#include "widgets/GlyphButton.h"
#include "widgets/Glyphs.h"
#include "widgets/SecondaryLabel.h"
#include "workspace/uploads/DropFrame.h"
#include "workspace/uploads/EmptyQueueView.h"
#include "workspace/uploads/QueueGlyphs.h"
#include "workspace/uploads/QueueList.h"
#include "workspace/uploads/RateLimitBox.h"
#include "workspace/uploads/RestBar.h"
#include "workspace/uploads/UploadQueueWindow.h"
#include "workspace/uploads/WrappingPair.h"

#include <QAction>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QStackedWidget>
#include <QToolButton>

namespace quenby {
namespace {

constexpr int margin = 12;
constexpr int iconSide = 20;
constexpr QSize smallestList(420, 160);
constexpr int groupGap = 10; // between buttons of different kinds

QString tr(const char* text) { return UploadQueueWindow::tr(text); }

// Keys count while the list has the focus: elsewhere they have other meanings, such as pressing a button.
QAction* makeAction(QWidget* window, const QString& text, const QPainterPath& glyph, const QKeySequence& keys = {}) {
    auto* action = new QAction(glyphIcon(glyph), text, window);
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setToolTip(keys.isEmpty() ? text : tr("%1 (%2)").arg(text, keys.toString(QKeySequence::NativeText)));
    return action;
}

QToolButton* makeButton(QWidget* parent, QAction* action) {
    auto* button = new GlyphButton(iconSide, parent);
    button->setDefaultAction(action);
    button->setAccessibleName(action->text());
    return button;
}

QToolButton* makePauseAllButton(QWidget* parent, QAction* action) {
    auto* button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(action->text());
    return button;
}

QWidget* makeToolBar(const UploadQueueWindowUi& ui, QWidget* window) {
    auto* bar = new QWidget(window);
    bar->setAccessibleName(tr("Commands"));
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(margin - 4, 6, margin - 4, 6);
    layout->setSpacing(0);
    for (QAction* action : {ui.pause, ui.resume, ui.retry, ui.cancel})
        layout->addWidget(makeButton(bar, action));
    layout->addSpacing(groupGap);
    for (QAction* action : {ui.moveUp, ui.moveDown, ui.moveToTop, ui.moveToBottom})
        layout->addWidget(makeButton(bar, action));
    layout->addSpacing(groupGap);
    layout->addWidget(makeButton(bar, ui.clearFinished));
    layout->addStretch(1);
    layout->addWidget(makePauseAllButton(bar, ui.pauseAll));
    return bar;
}

QWidget* makeLimitLine(const UploadQueueWindowUi& ui, QWidget* parent) {
    auto* line = new QWidget(parent);
    auto* caption = new QLabel(tr("Speed &limit:"), line);
    caption->setBuddy(ui.rateLimit);
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(caption);
    layout->addWidget(ui.rateLimit);
    layout->addStretch(1);
    return line;
}

QWidget* makeFoot(const UploadQueueWindowUi& ui, QWidget* window) {
    auto* foot = new QWidget(window);
    auto* layout = new QVBoxLayout(foot);
    layout->setContentsMargins(margin, 8, margin, 10);
    layout->setSpacing(8);
    layout->addWidget(ui.summary);
    layout->addWidget(new WrappingPair(makeLimitLine(ui, foot), ui.restsOnMetered, foot));
    return foot;
}

} // namespace

UploadQueueWindowUi::UploadQueueWindowUi(QWidget* window)
    : pause(makeAction(window, tr("Pause"), pauseGlyph(), Qt::Key_Space))
    , resume(makeAction(window, tr("Resume"), resumeGlyph(), Qt::Key_Space))
    , retry(makeAction(window, tr("Retry"), reloadGlyph()))
    , cancel(makeAction(window, tr("Cancel"), crossGlyph(), Qt::Key_Delete))
    , moveUp(makeAction(window, tr("Move Up"), upGlyph(), Qt::ALT | Qt::Key_Up))
    , moveDown(makeAction(window, tr("Move Down"), downGlyph(), Qt::ALT | Qt::Key_Down))
    , moveToTop(makeAction(window, tr("Move to Top"), toTopGlyph(), Qt::ALT | Qt::Key_Home))
    , moveToBottom(makeAction(window, tr("Move to Bottom"), toBottomGlyph(), Qt::ALT | Qt::Key_End))
    , showSource(makeAction(window, tr("Show in Folder"), folderGlyph()))
    , clearFinished(makeAction(window, tr("Clear Finished"), clearFinishedGlyph()))
    , pauseAll(makeAction(window, tr("Pause All"), pauseGlyph()))
    , toolBar(makeToolBar(*this, window))
    , restBar(new RestBar(window))
    , pages(new QStackedWidget(window))
    , list(new QueueList(pages))
    , empty(new EmptyQueueView(pages))
    , dropFrame(new DropFrame(pages))
    , summary(new SecondaryLabel(window))
    , rateLimit(new RateLimitBox(window))
    , restsOnMetered(new QCheckBox(tr("Pause on &metered connections"), window)) {
    showSource->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    for (QAction* action : {pause, resume, cancel, showSource})
        action->setAutoRepeat(false);
    restsOnMetered->setAccessibleName(tr("Pause on metered connections"));
    pauseAll->setCheckable(true);
    pages->setMinimumSize(smallestList);
    pages->addWidget(list);
    pages->addWidget(empty);
    for (QAction* action : rowCommands()) {
        if (action)
            list->addAction(action);
    }
    auto* layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(toolBar);
    layout->addWidget(restBar);
    layout->addWidget(pages, 1);
    layout->addWidget(makeFoot(*this, window));
}

void UploadQueueWindowUi::showList(bool hasRows) { pages->setCurrentIndex(hasRows ? 0 : 1); }

QList<QAction*> UploadQueueWindowUi::rowCommands() const {
    return {pause, resume, retry, cancel, nullptr, moveUp, moveDown, moveToTop, moveToBottom, nullptr, showSource};
}

} // namespace quenby
