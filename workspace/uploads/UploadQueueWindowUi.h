// The upload queue window's widgets, its commands, and where they stand. Owned by the window that they are made for.
#pragma once

#include <QList>

class QAction;
class QCheckBox;
class QStackedWidget;
class QWidget;

namespace quenby {

class DropFrame;
class EmptyQueueView;
class QueueList;
class RateLimitBox;
class RestBar;
class SecondaryLabel;

struct UploadQueueWindowUi {
    explicit UploadQueueWindowUi(QWidget* window);

    void showList(bool hasRows);
    // The row commands in their order; null parts them.
    QList<QAction*> rowCommands() const;

    QAction* pause;
    QAction* resume;
    QAction* retry;
    QAction* cancel;
    QAction* moveUp;
    QAction* moveDown;
    QAction* moveToTop;
    QAction* moveToBottom;
    QAction* showSource;
    QAction* clearFinished;
    QAction* pauseAll; // checkable

    // In the order in which the Tab key goes through them.
    QWidget* toolBar;
    RestBar* restBar;
    QStackedWidget* pages; // the list, or that there is none
    QueueList* list;
    EmptyQueueView* empty;
    DropFrame* dropFrame;
    SecondaryLabel* summary;
    RateLimitBox* rateLimit;
    QCheckBox* restsOnMetered;
};

} // namespace quenby
