#include "workspace/uploads/UploadQueueWindow.h"

#include "core/LocalPaths.h"
#include "widgets/SecondaryLabel.h"
#include "workspace/uploads/CancelQuestion.h"
#include "workspace/uploads/DropFrame.h"
#include "workspace/uploads/QueueCommands.h"
#include "workspace/uploads/QueueList.h"
#include "workspace/uploads/QueueText.h"
#include "workspace/uploads/RateLimitBox.h"
#include "workspace/uploads/RestBar.h"
#include "workspace/uploads/UploadQueueWindowUi.h"

#include <QAction>
#include <QCheckBox>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>

#include <algorithm>
#include <utility>
#include <vector>

namespace quenby {
namespace {

constexpr QSize usualSize(640, 480);

QList<QByteArray> droppedPaths(const QMimeData& data) {
    QList<QByteArray> paths;
    for (const QUrl& url : data.urls()) {
        if (const QByteArray path = localPath(url); !path.isEmpty())
            paths.append(path);
    }
    return paths;
}

QList<qint64> numbersOf(const QList<QueueRow>& rows) {
    QList<qint64> numbers;
    numbers.reserve(rows.size());
    for (const QueueRow& row : rows)
        numbers.append(row.number);
    return numbers;
}

bool anyPossible(QueueCommand command, const QList<QueueRow>& rows) {
    return std::any_of(rows.begin(), rows.end(),
                       [command](const QueueRow& row) { return isPossible(command, row.state); });
}

} // namespace

UploadQueueWindow::UploadQueueWindow(QueueRows& rows, QWidget* parent)
    : QWidget(parent)
    , rows_(rows)
    , ui_(std::make_unique<UploadQueueWindowUi>(this)) {
    setWindowTitle(tr("Uploads"));
    setAcceptDrops(true);
    resize(usualSize);
    connectRows();
    connectCommands();
    refresh();
}

UploadQueueWindow::~UploadQueueWindow() = default;

void UploadQueueWindow::connectRows() {
    ui_->list->setModel(&rows_);
    const auto later = [this] { refreshLater(); };
    connect(&rows_, &QAbstractItemModel::dataChanged, this, later);
    connect(&rows_, &QAbstractItemModel::rowsInserted, this, later);
    connect(&rows_, &QAbstractItemModel::rowsRemoved, this, later);
    connect(&rows_, &QAbstractItemModel::layoutChanged, this, later);
    // At once: the next key may already mean what is chosen now.
    connect(ui_->list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &UploadQueueWindow::refreshCommands);
}

void UploadQueueWindow::connectCommands() {
    const auto whenTriggered = [this](QAction* action, auto&& what) {
        connect(action, &QAction::triggered, this, std::forward<decltype(what)>(what));
    };
    whenTriggered(ui_->pause, [this] {
        if (const QList<qint64> numbers = selectedNumbers(QueueCommand::pause); !numbers.isEmpty())
            Q_EMIT pauseRequested(numbers);
    });
    whenTriggered(ui_->resume, [this] {
        if (const QList<qint64> numbers = selectedNumbers(QueueCommand::resume); !numbers.isEmpty())
            Q_EMIT resumeRequested(numbers);
    });
    whenTriggered(ui_->retry, [this] {
        if (const QList<qint64> numbers = selectedNumbers(QueueCommand::retry); !numbers.isEmpty())
            Q_EMIT retryRequested(numbers);
    });
    whenTriggered(ui_->cancel, [this] { cancelSelected(); });
    whenTriggered(ui_->moveUp, [this] { moveSelected(QueueMove::up); });
    whenTriggered(ui_->moveDown, [this] { moveSelected(QueueMove::down); });
    whenTriggered(ui_->moveToTop, [this] { moveSelected(QueueMove::toTop); });
    whenTriggered(ui_->moveToBottom, [this] { moveSelected(QueueMove::toBottom); });
    whenTriggered(ui_->showSource, [this] {
        if (const QList<QueueRow> rows = selectedRows(); !rows.isEmpty())
            Q_EMIT showSourceRequested(rows.first().number);
    });
    whenTriggered(ui_->clearFinished, [this] { Q_EMIT clearRequested(); });
    whenTriggered(ui_->pauseAll, [this](bool isPaused) { Q_EMIT allPausedRequested(isPaused); });

    connect(ui_->list, &QueueList::rowsDropped, this, &UploadQueueWindow::moveSelectedBefore);
    connect(ui_->list, &QueueList::escapePressed, this, &QWidget::close);
    // Not activated(), which one click is on some desktops: here it chooses a row.
    connect(ui_->list, &QAbstractItemView::doubleClicked, this,
            [this](const QModelIndex& index) { Q_EMIT showSourceRequested(rows_.rows()[index.row()].number); });
    connect(ui_->list, &QWidget::customContextMenuRequested, this, &UploadQueueWindow::showMenu);
    connect(ui_->restBar, &RestBar::uploadAnywayRequested, this, &UploadQueueWindow::uploadAnywayRequested);
    connect(ui_->rateLimit, &RateLimitBox::limitRequested, this, &UploadQueueWindow::rateLimitRequested);
    connect(ui_->restsOnMetered, &QCheckBox::clicked, this, &UploadQueueWindow::restsOnMeteredRequested);
}

// --- What it is told ------------------------------------------------------------------------------------------------

void UploadQueueWindow::setAllPaused(bool paused) {
    isAllPaused_ = paused;
    ui_->pauseAll->setChecked(paused);
    refreshLater();
}

void UploadQueueWindow::setResting(const QString& sentence) { ui_->restBar->tell(sentence); }

void UploadQueueWindow::setRateLimit(qint64 bytesPerSecond) { ui_->rateLimit->setLimit(bytesPerSecond); }

void UploadQueueWindow::setRestsOnMetered(bool rests) { ui_->restsOnMetered->setChecked(rests); }

void UploadQueueWindow::bringToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

// --- What is shown --------------------------------------------------------------------------------------------------

void UploadQueueWindow::refreshLater() {
    if (!isVisible() || std::exchange(isRefreshDue_, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            isRefreshDue_ = false;
            refresh();
        },
        Qt::QueuedConnection);
}

void UploadQueueWindow::refresh() {
    ui_->showList(rows_.rowCount() > 0);
    refreshCommands();
    refreshSummary();
}

void UploadQueueWindow::refreshCommands() {
    const QList<QueueRow> selected = selectedRows();
    const bool canPause = anyPossible(QueueCommand::pause, selected);
    ui_->pause->setEnabled(canPause);
    ui_->resume->setEnabled(anyPossible(QueueCommand::resume, selected));
    ui_->resume->setShortcut(canPause ? QKeySequence() : QKeySequence(Qt::Key_Space)); // the pause's, then
    ui_->retry->setEnabled(anyPossible(QueueCommand::retry, selected));
    ui_->cancel->setEnabled(anyPossible(QueueCommand::cancel, selected));
    ui_->showSource->setEnabled(selected.size() == 1);

    const QList<qint64> waiting = waitingNumbers();
    const QSet<qint64> chosen = selectedWaiting();
    const bool canRise = !chosen.isEmpty() && movedOrder(waiting, chosen, QueueMove::toTop) != waiting;
    const bool canSink = !chosen.isEmpty() && movedOrder(waiting, chosen, QueueMove::toBottom) != waiting;
    for (QAction* action : {ui_->moveUp, ui_->moveToTop})
        action->setEnabled(canRise);
    for (QAction* action : {ui_->moveDown, ui_->moveToBottom})
        action->setEnabled(canSink);
    ui_->clearFinished->setEnabled(std::any_of(rows_.rows().begin(), rows_.rows().end(),
                                               [](const QueueRow& row) { return row.state == QueueRow::State::done; }));
}

void UploadQueueWindow::refreshSummary() {
    const QString summary = queueSummary(rows_.rows(), isAllPaused_);
    ui_->summary->setText(summary);
    ui_->summary->setVisible(!summary.isEmpty());
}

void UploadQueueWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    refresh();
    if (!focusWidget())
        ui_->list->setFocus(Qt::OtherFocusReason);
}

// --- What is chosen -------------------------------------------------------------------------------------------------

QList<QueueRow> UploadQueueWindow::selectedRows() const {
    std::vector<std::pair<int, int>> ranges; // as the list keeps them: there may be thousands of rows
    for (const QItemSelectionRange& range : ui_->list->selectionModel()->selection())
        ranges.emplace_back(range.top(), range.bottom());
    std::sort(ranges.begin(), ranges.end());
    QList<QueueRow> selected;
    for (const auto& [first, last] : ranges) {
        for (int row = first; row <= last; ++row)
            selected.append(rows_.rows()[row]);
    }
    return selected;
}

QList<qint64> UploadQueueWindow::selectedNumbers(QueueCommand command) const {
    QList<QueueRow> rows = selectedRows();
    rows.removeIf([command](const QueueRow& row) { return !isPossible(command, row.state); });
    return numbersOf(rows);
}

QList<qint64> UploadQueueWindow::waitingNumbers() const {
    QList<qint64> waiting;
    for (const QueueRow& row : rows_.rows()) {
        if (row.state == QueueRow::State::waiting)
            waiting.append(row.number);
    }
    return waiting;
}

QSet<qint64> UploadQueueWindow::selectedWaiting() const {
    QSet<qint64> chosen;
    for (const QueueRow& row : selectedRows()) {
        if (row.state == QueueRow::State::waiting)
            chosen.insert(row.number);
    }
    return chosen;
}

// --- What the user wants --------------------------------------------------------------------------------------------

void UploadQueueWindow::cancelSelected() {
    QList<QueueRow> rows = selectedRows();
    rows.removeIf([](const QueueRow& row) { return !isPossible(QueueCommand::cancel, row.state); });
    if (rows.isEmpty())
        return;
    const QList<qint64> numbers = numbersOf(rows);
    if (losesSomething(rows))
        askWhetherToCancel(this, rows, [this, numbers] { cancelWhatIsLeft(numbers); });
    else
        Q_EMIT cancelRequested(numbers);
}

// Some may be done or gone since they were asked about.
void UploadQueueWindow::cancelWhatIsLeft(const QList<qint64>& numbers) {
    const QSet<qint64> meant(numbers.begin(), numbers.end());
    QList<qint64> left;
    for (const QueueRow& row : rows_.rows()) {
        if (meant.contains(row.number) && isPossible(QueueCommand::cancel, row.state))
            left.append(row.number);
    }
    if (!left.isEmpty())
        Q_EMIT cancelRequested(left);
}

void UploadQueueWindow::moveSelected(QueueMove move) {
    requestOrder(movedOrder(waitingNumbers(), selectedWaiting(), move));
}

void UploadQueueWindow::moveSelectedBefore(int row) {
    const auto& rows = rows_.rows();
    const auto next = std::find_if(rows.begin() + std::min<qsizetype>(row, rows.size()), rows.end(),
                                   [](const QueueRow& one) { return one.state == QueueRow::State::waiting; });
    const std::optional<qint64> before = next == rows.end() ? std::nullopt : std::optional(next->number);
    requestOrder(gatheredOrder(waitingNumbers(), selectedWaiting(), before));
}

void UploadQueueWindow::requestOrder(const QList<qint64>& order) {
    if (order != waitingNumbers())
        Q_EMIT orderRequested(order);
}

void UploadQueueWindow::showMenu(const QPoint& place) {
    if (!ui_->list->selectionModel()->hasSelection())
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction* action : ui_->rowCommands()) {
        if (action)
            menu->addAction(action);
        else
            menu->addSeparator();
    }
    menu->popup(ui_->list->viewport()->mapToGlobal(place));
}

void UploadQueueWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape || event->matches(QKeySequence::Close))
        close();
    else
        QWidget::keyPressEvent(event);
}

// --- Files from outside ---------------------------------------------------------------------------------------------

void UploadQueueWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (droppedPaths(*event->mimeData()).isEmpty())
        return;
    event->acceptProposedAction();
    ui_->dropFrame->show();
}

void UploadQueueWindow::dragLeaveEvent(QDragLeaveEvent*) { ui_->dropFrame->hide(); }

void UploadQueueWindow::dropEvent(QDropEvent* event) {
    ui_->dropFrame->hide();
    const QList<QByteArray> paths = droppedPaths(*event->mimeData());
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    Q_EMIT filesDropped(paths);
}

} // namespace quenby
