// The share windows that are open. They live here until they say that they are done with.
#pragma once

#include "core/TimeSource.h"
#include "platform/WebView.h"

#include <QObject>
#include <QString>

#include <memory>
#include <vector>

namespace quenby {

class ShareWindow;

// Threads: the main thread. The views' maker must outlive it.
class ShareWindows final : public QObject {
    Q_OBJECT

public:
    ShareWindows(WebViews& webViews, std::shared_ptr<TimeSource> timeSource, QObject* parent = nullptr);
    ~ShareWindows() override;

    // Whose cookies the pages of windows to come use; empty: nobody's.
    void setAccount(const QString& account) { profile_.account = account; }

    // Opens a window in front of everything. `address` is the sharing page's whole address with the file's id, which is
    // a secret; `name` is the file's name, which becomes the title.
    void shareThisFile(const QString& address, const QString& name);
    // Drops the window when it is in the list.
    void removeMe(ShareWindow* shareWindow);
    // Closes all of them, as if by hand.
    void closeAll();

    const std::vector<std::unique_ptr<ShareWindow>>& shareFileList() const { return shareFileList_; }

private:
    WebViews& webViews_;
    const std::shared_ptr<TimeSource> timeSource_;
    WebViewProfile profile_;
    std::vector<std::unique_ptr<ShareWindow>> shareFileList_;
};

} // namespace quenby
