// The scrolling list of changes: one TableRow a record, in one TableView, under an RFOverlayScroller.
//
// Threads: the main thread. Sizes in logical pixels.
#pragma once

#include "core/ChangeRecord.h"
#include "core/Endpoints.h"
#include "core/PageOpenRecord.h"
#include "core/TimeSource.h"

#include <QList>
#include <QScrollArea>

#include <memory>

namespace quenby {

class RFOverlayScroller;
class RowPictures;
class TableView;

class ScrollView : public QScrollArea {
    Q_OBJECT

public:
    // The pictures outlive the view.
    ScrollView(RowPictures& pictures, const Endpoints& endpoints, std::shared_ptr<TimeSource> timeSource,
               QWidget* parent = nullptr);
    ~ScrollView() override;

    // Newest first, at most 16. Equal records repaint nothing; others slide and fade to their places.
    void setRecords(const QList<ChangeRecord>& records);
    TableView& tableView() { return *tableView_; }

Q_SIGNALS:
    // A row was clicked, or Enter pressed on it: the file's page.
    void openRequested(const quenby::PageOpenRecord& page);
    // The row's share button, or Shift+Enter: the file's identifier and the row's title text. The record's link may
    // have lost its validity by now.
    void shareRequested(const QString& identifier, const QString& title);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    TableView* tableView_;
    RFOverlayScroller* scroller_;
};

} // namespace quenby
