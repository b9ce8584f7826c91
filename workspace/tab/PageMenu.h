// The context menu of a page.
#pragma once

#include "platform/BrowserView.h"

#include <functional>
#include <memory>

class QMenu;

namespace quenby {

// What the menu can't do with the page alone.
struct PageMenuActions {
    std::function<void(const QUrl& url)> openInNewTab;
    std::function<void(WebCommand command)> download; // downloadLink or downloadImage
};

// The page must outlive the menu's actions: an action on a page that is gone does nothing.
std::unique_ptr<QMenu> makePageMenu(const WebContext& context, BrowserView& page, const PageMenuActions& actions);

} // namespace quenby
