// What a tab has to say about its page, each with what can be done about it.
#pragma once

#include <QHash>
#include <QWidget>

namespace quenby {

class NoticeBar;

enum class TabNotice { windowBlocked, downloadBlocked, refusal, notAnswering };
enum class TabNoticeAction { allowWindows, allowDownloads, openInBrowser, wait, endPage };

// Threads: the main thread. As high as the notices that are seen; a bar is made when it is first needed.
class TabNotices final : public QWidget {
    Q_OBJECT

public:
    explicit TabNotices(QWidget* parent = nullptr);

    void tell(TabNotice notice);
    void withdraw(TabNotice notice);
    void withdrawAll();

Q_SIGNALS:
    // The notice is gone when this is told.
    void chosen(quenby::TabNoticeAction action);

private:
    NoticeBar* makeBar(TabNotice notice);

    QHash<TabNotice, NoticeBar*> bars_;
};

} // namespace quenby
