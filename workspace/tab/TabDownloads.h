// The files that the pages of one tab send.
#pragma once

#include "core/TimeSource.h"
#include "platform/BrowserView.h"
#include "workspace/tab/HeldBack.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

namespace quenby {

// Threads: the main thread. The page outlives it.
class TabDownloads final : public QObject {
    Q_OBJECT

public:
    TabDownloads(BrowserView& page, std::shared_ptr<TimeSource> timeSource);

    // What the context menu offers: downloadLink and downloadImage.
    void perform(WebCommand command);
    // The user let go of the button over the page.
    void userActed() { unasked_.forgive(); }
    // The user's answer to downloadBlocked().
    void allow() { unasked_.allow(); }
    // Whether one runs that this tab began.
    bool isRunning() const;

Q_SIGNALS:
    // From within the page's call: begin() must be called within.
    void downloadBegun(std::shared_ptr<quenby::WebDownload> download);
    void downloadBlocked();
    void runningChanged();

private:
    void downloadDidBegin(const std::shared_ptr<WebDownload>& download);
    void handOver(const std::shared_ptr<WebDownload>& download);

    BrowserView& page_;
    const std::shared_ptr<TimeSource> timeSource_;
    // One by itself: a second one without a click is one too many, as it opens a panel.
    HeldBack unasked_{1};
    int asked_ = 0; // by the user, and not here yet
    std::vector<QPointer<WebDownload>> begun_;
};

} // namespace quenby
