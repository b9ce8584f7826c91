// Signs in to the local Drive without a window: an HTTP client plays the person who reads the sign-in page and presses
// its button, and GTMOAuth2SignIn sees what it would see of a web view.
//
// Threads: the main thread. Destroying it cancels the sign-in.
#pragma once

#include "core/CompletionGate.h"
#include "core/Endpoints.h"
#include "oauth2/GTMOAuth2SignIn.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class GTMHTTPFetcherService;

class LocalSignInPage : public QObject {
    Q_OBJECT

public:
    using Finished = std::function<void(const MaybeError& error)>;

    // The authentication is filled; the fetcher service loads the pages.
    LocalSignInPage(std::shared_ptr<GTMOAuth2Authentication> authentication,
                    std::shared_ptr<GTMHTTPFetcherService> fetcherService, const Endpoints& endpoints,
                    std::shared_ptr<TimeSource> timeSource);
    ~LocalSignInPage() override;

    void signIn(QObject* context, Finished finished);

private:
    void load(const URLRequest& request);
    void loaded(const QByteArray& page, const MaybeError& error);
    void press(const QByteArray& page);
    void finish(const MaybeError& error);

    const std::shared_ptr<GTMHTTPFetcherService> fetcherService_;
    CompletionGate<MaybeError> finished_;
    std::shared_ptr<GTMHTTPFetcher> page_;
    bool hasPressed_ = false;
    GTMOAuth2SignIn signIn_;
};

} // namespace quenby
