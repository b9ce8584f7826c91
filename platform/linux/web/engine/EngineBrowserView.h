// The view on a page that is browsed with.
//
// Threads: the main thread.
#pragma once

#include "platform/linux/web/engine/EngineView.h"

class QWebEngineDownloadRequest;
class QWebEngineFindTextResult;

namespace quenby {

class PagePrinting;

class EngineBrowserView final : public EngineView<BrowserView> {
public:
    explicit EngineBrowserView(std::shared_ptr<QWebEngineProfile> profile);

    void perform(WebCommand command) override;
    bool canPerform(WebCommand command) const override;
    void find(const QString& text, bool backward) override;
    qreal zoomFactor() const override { return zoomFactor_; }
    void setZoomFactor(qreal factor) override;
    void setLifecycle(WebLifecycle lifecycle) override;
    WebLifecycle lifecycle() const override;
    void print() override;
    void endProcess() override;
    void setDownloadHandler(DownloadHandler handler) override;
    void download(const QUrl& url) override;

private:
    struct Place {
        QUrl url;
        bool hasBefore = false;
        bool hasAfter = false;
        friend bool operator==(const Place&, const Place&) = default;
    };

    void windowWanted(const QWebEngineNewWindowRequest& request) override;
    void fullScreenWanted(QWebEngineFullScreenRequest& request) override;
    void setUpPage();
    void connectBrowsing();
    void tellPlace();
    void tellContextMenu();

    QPointer<PagePrinting> printing_; // made when it is first needed
    qreal zoomFactor_ = 1;
    Place toldPlace_;
};

} // namespace quenby
