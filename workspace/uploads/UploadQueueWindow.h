// The window of the upload queue: every file with its progress, and what can be done with it.
//
// Threads: the main thread. It decides nothing: it tells what the user wants. What it is given outlives it.
#pragma once

#include "workspace/uploads/QueueRows.h"

#include <QByteArray>
#include <QSet>
#include <QWidget>

#include <memory>

namespace quenby {

enum class QueueCommand;
enum class QueueMove;

struct UploadQueueWindowUi;

class UploadQueueWindow : public QWidget {
    Q_OBJECT

public:
    explicit UploadQueueWindow(QueueRows& rows, QWidget* parent = nullptr);
    ~UploadQueueWindow() override;

    // Everything rests until the user wants it.
    void setAllPaused(bool paused);
    // Why everything rests by itself, such as a metered connection, with the way past it ("Upload Anyway"); empty: it
    // does not.
    void setResting(const QString& sentence);
    // Bytes per second for all uploads together; 0: no limit.
    void setRateLimit(qint64 bytesPerSecond);
    // Whether a metered connection makes the uploads rest.
    void setRestsOnMetered(bool rests);
    // Shows it, in front.
    void bringToFront();

Q_SIGNALS:
    void pauseRequested(const QList<qint64>& numbers);
    void resumeRequested(const QList<qint64>& numbers);
    // Failed ones begin anew; of those whose file changed, the new file is meant from now on.
    void retryRequested(const QList<qint64>& numbers);
    // Asked before, where something would be lost.
    void cancelRequested(const QList<qint64>& numbers);
    // The numbers of all that wait, in their new order.
    void orderRequested(const QList<qint64>& numbers);
    // What is done goes from the list.
    void clearRequested();
    void allPausedRequested(bool paused);
    void uploadAnywayRequested();
    void rateLimitRequested(qint64 bytesPerSecond);
    void restsOnMeteredRequested(bool rests);
    // Its file in the desktop's file manager.
    void showSourceRequested(qint64 number);
    // Files of this computer, absolute, in the file system's bytes, which need not be text.
    void filesDropped(const QList<QByteArray>& paths);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void connectRows();
    void connectCommands();
    // Soon, and once for however much changed; not at all while nobody sees it.
    void refreshLater();
    void refresh();
    void refreshCommands();
    void refreshSummary();

    // In the order of the list.
    QList<QueueRow> selectedRows() const;
    QList<qint64> selectedNumbers(QueueCommand command) const;
    QList<qint64> waitingNumbers() const;
    QSet<qint64> selectedWaiting() const;
    void cancelSelected();
    void cancelWhatIsLeft(const QList<qint64>& numbers);
    void moveSelected(QueueMove move);
    void moveSelectedBefore(int row);
    void requestOrder(const QList<qint64>& order);
    void showMenu(const QPoint& place);

    QueueRows& rows_;
    const std::unique_ptr<UploadQueueWindowUi> ui_;
    bool isAllPaused_ = false;
    bool isRefreshDue_ = false;
};

} // namespace quenby
