#include "workspace/share/ShareWindows.h"

#include "workspace/share/ShareWindow.h"
#include "workspace/share/ctmWindow.h"

#include <algorithm>

namespace quenby {

ShareWindows::ShareWindows(WebViews& webViews, std::shared_ptr<TimeSource> timeSource, QObject* parent)
    : QObject(parent)
    , webViews_(webViews)
    , timeSource_(std::move(timeSource)) {}

ShareWindows::~ShareWindows() = default;

void ShareWindows::shareThisFile(const QString& address, const QString& name) {
    auto shareWindow = std::make_unique<ShareWindow>(webViews_, profile_, timeSource_);
    connect(shareWindow.get(), &ShareWindow::removeShareWindow, this, &ShareWindows::removeMe);
    ctmWindow& window = shareWindow->window();
    centreShareWindow(window);
    shareWindow->setTitle(name);
    shareWindow->loadWebShare(address);
    window.show();
    window.raise();
    window.activateWindow();
    shareFileList_.push_back(std::move(shareWindow));
}

void ShareWindows::removeMe(ShareWindow* shareWindow) {
    const auto found = std::find_if(shareFileList_.begin(), shareFileList_.end(),
                                    [shareWindow](const auto& open) { return open.get() == shareWindow; });
    if (found == shareFileList_.end())
        return;
    // It may be the one that calls.
    found->release()->deleteLater();
    shareFileList_.erase(found);
}

void ShareWindows::closeAll() {
    for (const auto& shareWindow : shareFileList_)
        shareWindow->window().close();
}

} // namespace quenby
