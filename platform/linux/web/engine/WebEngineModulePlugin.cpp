#include "platform/linux/web/engine/WebEngineModulePlugin.h"

#include "platform/linux/web/engine/EngineBrowserView.h"
#include "platform/linux/web/engine/EngineProfile.h"
#include "platform/linux/web/engine/EngineStart.h"
#include "platform/linux/web/engine/EngineWebView.h"

#include <QWebEngineCookieStore>

#include <vector>

#include <unistd.h>

namespace quenby {
namespace {

class Engine final : public WebEngine {
public:
    std::unique_ptr<WebView> createView(const WebProfileFolders& folders, const QString& userAgent) override {
        const EngineStart start;
        return std::make_unique<EngineWebView>(profileFor(folders, userAgent));
    }
    std::unique_ptr<BrowserView> createBrowserView(const WebProfileFolders& folders,
                                                   const QString& userAgent) override {
        const EngineStart start;
        if (!folders.data.isEmpty())
            return std::make_unique<EngineBrowserView>(profileFor(folders, userAgent));
        auto session = privateBrowsing_.lock();
        if (!session) {
            session = profileFor(folders, userAgent);
            privateBrowsing_ = session;
        }
        return std::make_unique<EngineBrowserView>(std::move(session));
    }

    void forget(const WebProfileFolders& folders) override {
        const auto found = std::find_if(accounts_.begin(), accounts_.end(),
                                        [&folders](const Account& account) { return account.folders == folders; });
        if (found == accounts_.end())
            return;
        found->profile->cookieStore()->deleteAllCookies();
        found->profile->clearHttpCache();
        found->profile->clearAllVisitedLinks();
        accounts_.erase(found); // the views that show it hold it
    }

private:
    struct Account {
        WebProfileFolders folders;
        std::shared_ptr<QWebEngineProfile> profile;
        bool hasUserAgent = false;
    };

    std::shared_ptr<QWebEngineProfile> profileFor(const WebProfileFolders& folders, const QString& userAgent) {
        if (folders.data.isEmpty()) {
            Account session{folders, makeEngineProfile(folders)};
            return profileOf(session, userAgent);
        }
        for (Account& account : accounts_) {
            if (account.folders == folders)
                return profileOf(account, userAgent);
        }
        accounts_.push_back({folders, makeEngineProfile(folders)});
        return profileOf(accounts_.back(), userAgent);
    }
    static std::shared_ptr<QWebEngineProfile> profileOf(Account& account, const QString& userAgent) {
        if (!userAgent.isEmpty() && !std::exchange(account.hasUserAgent, true))
            account.profile->setHttpUserAgent(userAgent);
        return account.profile;
    }

    std::vector<Account> accounts_;
    std::weak_ptr<QWebEngineProfile> privateBrowsing_; // of all browser views that have no account
};

} // namespace

Result<std::unique_ptr<WebEngine>> WebEngineModulePlugin::start() {
    // The engine would end the whole program.
    if (geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        return Error(URLErrorCode::unknown,
                     {{errorKey::reason, QStringLiteral("Web pages are not shown to the system administrator, because "
                                                        "they could not be kept apart from the system. Start Quenby "
                                                        "as an ordinary user.")}});
    return std::unique_ptr<WebEngine>(std::make_unique<Engine>());
}

} // namespace quenby
