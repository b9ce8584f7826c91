// The view on a page that is only looked at: no windows, no downloads, no menu.
//
// Threads: the main thread.
#pragma once

#include "platform/linux/web/engine/EngineView.h"

namespace quenby {

class EngineWebView final : public EngineView<WebView> {
public:
    using EngineView::EngineView;

private:
    void windowWanted(const QWebEngineNewWindowRequest& request) override;
    void fullScreenWanted(QWebEngineFullScreenRequest& request) override;
};

} // namespace quenby
