#include "platform/linux/web/engine/EngineWebView.h"

#include <QWebEngineFullScreenRequest>
#include <QWebEngineNewWindowRequest>

namespace quenby {

void EngineWebView::windowWanted(const QWebEngineNewWindowRequest& request) {
    later([this, url = request.requestedUrl()] { Q_EMIT newWindowRequested(url); });
}

void EngineWebView::fullScreenWanted(QWebEngineFullScreenRequest& request) { request.reject(); }

} // namespace quenby
