// Web pages by the engine in the module "quenby-webengine", which is loaded with the first page. What main() must do
// for it: nothing.
//
// Threads: the main thread. Views must be gone before this object, and this object before the application.
#pragma once

#include "platform/linux/web/AccountWebFolders.h"

#include <QStringList>

namespace quenby {

struct PluginWebViewsPlaces {
    QString dataRoot;          // accounts' cookies lie in folders below it
    QString cacheRoot;         // and their caches
    QStringList moduleFolders; // where the module is looked for, in this order

    // Below the user's folders for this application, and beside the program. The profile names the account-independent
    // part: "quenby", or "quenby-local".
    static PluginWebViewsPlaces standard(const QString& profile);
};

class PluginWebViews final : public WebViews {
public:
    explicit PluginWebViews(const PluginWebViewsPlaces& places);
    ~PluginWebViews() override;

    Result<std::unique_ptr<WebView>> create(const WebViewProfile& profile) override;
    Result<std::unique_ptr<BrowserView>> createBrowser(const WebViewProfile& profile) override;
    void forget(const QString& account) override;
    // Known after the first page only: looking would cost what is to be saved.
    QString unavailableBecause() const override { return unavailableBecause_; }

private:
    bool load();
    WebProfileFolders foldersOf(const WebViewProfile& profile);
    Error unavailable() const;

    const QStringList moduleFolders_;
    AccountWebFolders folders_;
    std::unique_ptr<WebEngine> engine_;
    QString unavailableBecause_;
};

} // namespace quenby
