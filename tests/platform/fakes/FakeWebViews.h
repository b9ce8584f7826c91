// Web views without an engine; see FakeWebView.h and FakeBrowserView.h for what a test can do with each.
//
// Threads: the main thread.
#pragma once

#include "tests/platform/fakes/FakeBrowserView.h"

namespace quenby::testing {

class FakeWebViews final : public WebViews {
public:
    // Addresses that play by themselves, in all views.
    QHash<QUrl, FakePage>& pages() { return *pages_; }

    QStringList forgotten;                           // accounts
    QString unavailable;                             // why there is no engine; empty: there is one
    std::vector<QPointer<FakeWebView>> views;        // every view that was made; null when it is gone
    std::vector<QPointer<FakeBrowserView>> browsers; // and every one to browse with

    // The newest, which must still be there.
    FakeWebView& last() {
        Q_ASSERT(!views.empty() && views.back());
        return *views.back();
    }
    FakeBrowserView& lastBrowser() {
        Q_ASSERT(!browsers.empty() && browsers.back());
        return *browsers.back();
    }

    Result<std::unique_ptr<WebView>> create(const WebViewProfile& profile) override {
        return make<WebView>(profile, views);
    }
    Result<std::unique_ptr<BrowserView>> createBrowser(const WebViewProfile& profile) override {
        return make<BrowserView>(profile, browsers);
    }
    void forget(const QString& account) override { forgotten.append(account); }
    QString unavailableBecause() const override { return unavailable; }

private:
    template <typename Interface, typename Fake>
    Result<std::unique_ptr<Interface>> make(const WebViewProfile& profile, std::vector<QPointer<Fake>>& made) {
        if (!unavailable.isEmpty())
            return Error(URLErrorCode::unknown, {{errorKey::reason, unavailable}});
        auto view = std::make_unique<Fake>(profile, pages_);
        made.emplace_back(view.get());
        return std::unique_ptr<Interface>(std::move(view));
    }

    FakePages pages_ = std::make_shared<QHash<QUrl, FakePage>>();
};

} // namespace quenby::testing
