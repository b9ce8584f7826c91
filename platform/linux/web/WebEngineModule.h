// What the module that holds the web engine offers to the program that loads it.
//
// Threads: the main thread. Everything that the module made must be gone before the application object is.
#pragma once

#include "platform/BrowserView.h"

#include <QtPlugin>

#include <memory>

namespace quenby {

// The folders of one account's pages; both empty for a private session.
struct WebProfileFolders {
    QString data;  // cookies and what pages store
    QString cache; // may be removed at any time

    friend bool operator==(const WebProfileFolders&, const WebProfileFolders&) = default;
};

// The running engine.
class WebEngine {
public:
    virtual ~WebEngine() = default;

    // Views with the same folders share their cookies, and the first user agent that is not empty.
    virtual std::unique_ptr<WebView> createView(const WebProfileFolders& folders, const QString& userAgent) = 0;
    virtual std::unique_ptr<BrowserView> createBrowserView(const WebProfileFolders& folders,
                                                           const QString& userAgent) = 0;
    // Removes cookies and cache from under the views that are shown. The folders are not used by later views.
    virtual void forget(const WebProfileFolders& folders) = 0;
};

class WebEngineModule {
public:
    virtual ~WebEngineModule() = default;

    // Once. Fails with a sentence for people.
    virtual Result<std::unique_ptr<WebEngine>> start() = 0;
};

} // namespace quenby

Q_DECLARE_INTERFACE(quenby::WebEngineModule, "org.quenby.WebEngineModule/2")
