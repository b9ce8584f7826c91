#include "popover/changes/TableView.h"

#include "popover/changes/AccessibleRows.h"
#include "popover/changes/RowDates.h"
#include "popover/changes/RowPictures.h"
#include "popover/changes/TableRow.h"

#include <QHoverEvent>
#include <QKeyEvent>
#include <QStyle>

#include <algorithm>

namespace quenby {
namespace {

constexpr int motionMilliseconds = 180;

// A file may be told of twice, for example as added and as deleted; deletions without names are one row.
bool tellOfTheSame(const ChangeRecord& one, const ChangeRecord& other) {
    if (isSummary(one) || isSummary(other))
        return isSummary(one) && isSummary(other);
    return one.identifier == other.identifier && one.status == other.status;
}

} // namespace

TableView::TableView(RowPictures& pictures, const QUrl& webURL, std::shared_ptr<TimeSource> timeSource, QWidget* parent)
    : QWidget(parent)
    , pictures_(pictures)
    , webURL_(webURL)
    , timeSource_(std::move(timeSource))
    , motion_(new RowMotion(this)) {
    setAttribute(Qt::WA_Hover);
    setAccessibleName(QStringLiteral("Latest changes"));
    makeRowsAccessible();
    connect(&pictures_, &RowPictures::arrived, this, &TableView::takePictures);
}

TableView::~TableView() = default;

void TableView::setRecords(const QList<ChangeRecord>& records) {
    QList<TableRow*> before;
    before.swap(rows_);
    const auto currentIndex = before.indexOf(current_);
    for (const ChangeRecord& record : records) {
        TableRow* row = takeRow(before, record);
        const bool isNew = row == nullptr;
        if (isNew)
            row = makeRow();
        if (isNew || row->record() != record) {
            row->setRecord(record);
            bringPicture(*row);
        }
        rows_.append(row);
    }
    refreshDates();
    std::vector<RowMotion::Course> courses = placeRows();
    // After the new rows are there to take the keyboard, and before those that leave lose it.
    if (!rows_.contains(current_))
        setCurrent(rows_.isEmpty() ? nullptr : rows_.at(std::clamp<qsizetype>(currentIndex, 0, rows_.size() - 1)));
    for (TableRow* leaving : std::as_const(before)) {
        leaving->setAttribute(Qt::WA_TransparentForMouseEvents);
        leaving->lower();
        courses.push_back({leaving, leaving->y(), true});
    }
    motion_->start(courses, motionDuration());
    followPointer();
}

// The first of the rows that tells of the same; it is not among them any more.
TableRow* TableView::takeRow(QList<TableRow*>& rows, const ChangeRecord& record) const {
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](TableRow* row) { return tellOfTheSame(row->record(), record); });
    if (found == rows.end())
        return nullptr;
    TableRow* row = *found;
    rows.erase(found);
    return row;
}

TableRow* TableView::makeRow() {
    auto* row = new TableRow(this);
    row->resize(width(), row->height());
    row->setOpacity(0);
    connect(row, &TableRow::tookFocus, this, [this, row] { setCurrent(row); });
    connect(row, &TableRow::clicked, this, [this, row] { open(*row); });
    connect(row, &TableRow::share, this, [this, row] { share(*row); });
    return row;
}

// Who stays slides above who comes, and who comes is above who leaves.
std::vector<RowMotion::Course> TableView::placeRows() {
    std::vector<RowMotion::Course> courses;
    int y = 0;
    for (TableRow* row : std::as_const(rows_)) {
        if (row->isHidden()) { // new
            row->move(0, y);
            row->lower();
            row->show();
        }
        courses.push_back({row, y});
        y += rowHeight;
    }
    setMinimumHeight(y);
    return courses;
}

int TableView::motionDuration() const {
    const bool isAnimated = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    return isAnimated && isVisible() ? motionMilliseconds : 0;
}

void TableView::bringPicture(TableRow& row) {
    if (isSummary(row.record()))
        return;
    const QImage picture = pictures_.picture(row.record());
    if (picture.isNull())
        pictures_.want(row.record());
    else
        row.setIconFile(picture);
}

// Each its own: a file's rows may have different pictures, as before and after its end.
void TableView::takePictures(const QString& identifier) {
    for (TableRow* row : std::as_const(rows_)) {
        if (row->record().identifier != identifier || isSummary(row->record()))
            continue;
        const QImage picture = pictures_.picture(row->record());
        if (!picture.isNull())
            row->setIconFile(picture);
    }
}

// Also waits for the next moment at which any row says something else, as long as somebody can see it.
void TableView::refreshDates() {
    const QDateTime now = timeSource_->now();
    std::optional<std::chrono::milliseconds> wait;
    for (TableRow* row : std::as_const(rows_)) {
        const QDateTime& date = row->record().modifiedDate;
        row->setTimeChanges(rowDateText(date, now));
        if (const auto next = timeToNextRowDateText(date, now))
            wait = std::min(wait.value_or(*next), *next);
    }
    nextDates_ = wait && isVisible() ? timeSource_->startTimer(*wait, [this] { refreshDates(); }) : nullptr;
}

bool TableView::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
        pointer_ = mapToParent(static_cast<QHoverEvent*>(event)->position().toPoint());
        followPointer();
        return true; // the widget would repaint itself and every row
    case QEvent::HoverLeave:
        pointer_.reset();
        followPointer();
        return true;
    case QEvent::WindowActivate:
        refreshDates(); // the computer may have slept
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

// Rows on their way count as being where they go to.
void TableView::followPointer() {
    TableRow* under = nullptr;
    if (pointer_) {
        const QPoint at = mapFromParent(*pointer_);
        if (rect().contains(at) && at.y() / rowHeight < rows_.size())
            under = rows_.at(at.y() / rowHeight);
    }
    if (under == hovered_)
        return;
    if (hovered_ != nullptr)
        hovered_->mouseExited();
    hovered_ = under;
    if (hovered_ != nullptr)
        hovered_->mouseEntered();
}

void TableView::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const auto index = static_cast<int>(rows_.indexOf(current_));
    const int page = std::max(parentWidget()->height() / rowHeight - 1, 1);
    const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
    const bool moves = key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_Home || key == Qt::Key_End ||
                       key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    if (index < 0 || (!isEnter && !moves))
        return QWidget::keyPressEvent(event);
    if (!current_->isMarked()) // nobody knows yet where the keyboard is
        goTo(index);
    else if (isEnter)
        event->modifiers().testFlag(Qt::ShiftModifier) ? share(*current_) : open(*current_);
    else
        goTo(key == Qt::Key_Up         ? index - 1
             : key == Qt::Key_Down     ? index + 1
             : key == Qt::Key_PageUp   ? index - page
             : key == Qt::Key_PageDown ? index + page
             : key == Qt::Key_Home     ? 0
                                       : numberOfRows() - 1);
}

void TableView::goTo(int index) {
    index = std::clamp(index, 0, numberOfRows() - 1);
    setCurrent(rows_.at(index));
    current_->takeKeyboard();
    Q_EMIT wantsToShow(QRect(0, index * rowHeight, width(), rowHeight));
}

// One row alone is reached by Tab. The keyboard goes along when the row that has it gives way to another.
void TableView::setCurrent(TableRow* row) {
    if (row == current_)
        return;
    const bool hadFocus = current_ != nullptr && current_->hasFocus();
    const bool wasMarked = current_ != nullptr && current_->isMarked();
    if (current_ != nullptr)
        current_->setFocusPolicy(Qt::ClickFocus);
    current_ = row;
    setFocusProxy(row);
    if (row == nullptr)
        return;
    row->setFocusPolicy(Qt::StrongFocus);
    if (wasMarked)
        row->takeKeyboard();
    else if (hadFocus)
        row->setFocus(Qt::OtherFocusReason);
}

void TableView::open(TableRow& row) {
    if (row.texts().isOpenable())
        Q_EMIT openRequested(rowPage(row.texts(), webURL_));
}

void TableView::share(TableRow& row) {
    if (row.texts().isOpenable())
        Q_EMIT shareRequested(row.record().identifier, row.NameFile());
}

void TableView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    refreshDates();
}

void TableView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    nextDates_.reset();
    motion_->finish();
    pointer_.reset();
    followPointer();
}

void TableView::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    followPointer(); // the row under a resting pointer is another one now
}

void TableView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    for (QObject* child : children()) {
        if (auto* row = qobject_cast<TableRow*>(child))
            row->resize(width(), rowHeight);
    }
}

} // namespace quenby
