// The rows of the change list, each as high as the other. It keeps them by what they tell of, so that a list that did
// not change is not painted; it knows which row the pointer and the keyboard are on, and keeps the dates true.
//
// Threads: the main thread. Sizes in logical pixels.
#pragma once

#include "core/ChangeRecord.h"
#include "core/PageOpenRecord.h"
#include "core/TimeSource.h"
#include "popover/changes/RowMotion.h"

#include <QList>
#include <QUrl>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

namespace quenby {

class RowPictures;
class TableRow;

class TableView : public QWidget {
    Q_OBJECT

public:
    // The pictures outlive the view. Pages are opened below the web application's address.
    TableView(RowPictures& pictures, const QUrl& webURL, std::shared_ptr<TimeSource> timeSource,
              QWidget* parent = nullptr);
    ~TableView() override;

    void setRecords(const QList<ChangeRecord>& records);
    int numberOfRows() const { return static_cast<int>(rows_.size()); }
    TableRow& row(int index) const { return *rows_.at(index); }
    // The last to have had the keyboard; null while there are no rows.
    TableRow* currentRow() const { return current_; }

Q_SIGNALS:
    void openRequested(const quenby::PageOpenRecord& page);
    void shareRequested(const QString& identifier, const QString& title);
    // The keyboard went to the row that has, or will have, this place.
    void wantsToShow(const QRect& row);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    TableRow* takeRow(QList<TableRow*>& rows, const ChangeRecord& record) const;
    TableRow* makeRow();
    std::vector<RowMotion::Course> placeRows();
    int motionDuration() const;
    void bringPicture(TableRow& row);
    void takePictures(const QString& identifier);
    void refreshDates();
    void followPointer();
    void setCurrent(TableRow* row);
    void goTo(int index);
    void open(TableRow& row);
    void share(TableRow& row);

    RowPictures& pictures_;
    const QUrl webURL_;
    const std::shared_ptr<TimeSource> timeSource_;
    RowMotion* motion_;
    QList<TableRow*> rows_; // without those on their way out
    TableRow* current_ = nullptr;
    TableRow* hovered_ = nullptr;
    std::optional<QPoint> pointer_; // in the parent's coordinates, which stay when the view is scrolled
    std::unique_ptr<Timer> nextDates_;
};

} // namespace quenby
