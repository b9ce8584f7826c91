#include "app/account/LocalSignInPage.h"

#include "app/account/SignInForm.h"
#include "http/GTMHTTPFetcherService.h"
#include "oauth2/OAuth2Error.h"

namespace quenby {
namespace {

Error pageError(const QString& reason) { return oauth2::makeError(oauth2::ErrorCode::authorizationFailed, reason); }

} // namespace

LocalSignInPage::LocalSignInPage(std::shared_ptr<GTMOAuth2Authentication> authentication,
                                 std::shared_ptr<GTMHTTPFetcherService> fetcherService, const Endpoints& endpoints,
                                 std::shared_ptr<TimeSource> timeSource)
    : fetcherService_(std::move(fetcherService))
    , signIn_(
          std::move(authentication), endpoints.authorizationURL, this,
          [this](GTMOAuth2SignIn&, const std::optional<URLRequest>& request) {
              if (request)
                  load(*request);
              else if (const auto page = std::exchange(page_, nullptr))
                  page->stopFetching();
          },
          [this](GTMOAuth2SignIn&, const std::shared_ptr<GTMOAuth2Authentication>&, const MaybeError& error) {
              finish(error);
          },
          SignInEnvironment{endpoints, std::move(timeSource), nullptr}) {
    // Nobody waits in front of a window, and the Drive is on this computer: no network can be lost.
    signIn_.setNetworkLossTimeoutInterval(std::chrono::milliseconds(0));
    signIn_.setUsesPKCE(true);
}

LocalSignInPage::~LocalSignInPage() {
    if (page_)
        page_->stopFetching();
}

void LocalSignInPage::signIn(QObject* context, Finished finished) {
    finished_ = {context, std::move(finished)};
    if (!signIn_.startSigningIn())
        finish(pageError(QStringLiteral("the sign-in could not begin; report this")));
}

void LocalSignInPage::load(const URLRequest& request) {
    page_ = fetcherService_->fetcherWithRequest(request);
    page_->setComment(QStringLiteral("sign-in page"));
    page_->beginFetchWithCompletionHandler(
        this, [this](const QByteArray& page, const MaybeError& error) { loaded(page, error); });
}

void LocalSignInPage::loaded(const QByteArray& page, const MaybeError& error) {
    if (error)
        return finish(error);
    // The first page asks, the second one answers in its title.
    if (signIn_.titleChanged(titleOfPage(page)))
        return;
    if (hasPressed_)
        return finish(pageError(QStringLiteral("the local Drive's sign-in page gave no answer; report this")));
    press(page);
}

void LocalSignInPage::press(const QByteArray& page) {
    const QUrl pageURL = page_ ? page_->request().url : QUrl();
    const auto form = SignInForm::inPage(page, pageURL);
    if (!form || form->action.host() != signIn_.authorizationURL().host() ||
        form->action.port() != signIn_.authorizationURL().port())
        return finish(pageError(QStringLiteral("the local Drive's sign-in page can't be understood; report this")));
    hasPressed_ = true;
    URLRequest request(form->action);
    request.httpMethod = "POST";
    request.headers.set("Content-Type", "application/x-www-form-urlencoded");
    request.body = form->encoded();
    load(request);
}

void LocalSignInPage::finish(const MaybeError& error) { finished_.deliver(error); }

} // namespace quenby
