#include "app/session/SecondChanceAuthorizer.h"

#include "oauth2/GTMOAuth2Authentication.h"

#include <QThread>

namespace quenby {

std::shared_ptr<SecondChanceAuthorizer>
SecondChanceAuthorizer::create(std::shared_ptr<GTMOAuth2Authentication> authentication) {
    // The last reference may fall on a fetcher's thread.
    return {new SecondChanceAuthorizer(std::move(authentication)), [](SecondChanceAuthorizer* ended) {
                if (ended->thread() == QThread::currentThread())
                    delete ended;
                else
                    ended->deleteLater();
            }};
}

SecondChanceAuthorizer::SecondChanceAuthorizer(std::shared_ptr<GTMOAuth2Authentication> authentication)
    : authentication_(std::move(authentication)) {}

bool SecondChanceAuthorizer::isAuthorizedRequest(const URLRequest& request) const {
    return authentication_->isAuthorizedRequest(request);
}

bool SecondChanceAuthorizer::primeForRefresh(const URLRequest& refusedRequest) {
    return authentication_->primeForRefresh(refusedRequest);
}

QString SecondChanceAuthorizer::userEmail() const { return authentication_->userEmail(); }

CompletionTicket SecondChanceAuthorizer::authorizeRequest(const URLRequest& request, QObject* context,
                                                          AuthorizeHandler handler) {
    const Answer answer(context, std::move(handler));
    ask(request, answer);
    return answer.ticket();
}

void SecondChanceAuthorizer::ask(const URLRequest& request, const Answer& answer) {
    authentication_->authorizeRequest(
        request, this,
        [this, answer](const URLRequest& authorized, const MaybeError& error) { answered(authorized, error, answer); });
}

void SecondChanceAuthorizer::answered(const URLRequest& request, const MaybeError& error, const Answer& answer) {
    if (!error || isOver_ || authentication_->lastRefreshFailure() != RefreshFailure::refused)
        return answer.deliver(request, error);
    waiting_.push_back({request, *error, answer});
    if (waiting_.size() == 1)
        Q_EMIT refused();
}

void SecondChanceAuthorizer::tryAgain() {
    for (const Waiting& one : std::exchange(waiting_, {})) {
        if (one.answer.ticket().isPending())
            ask(one.request, one.answer);
    }
}

void SecondChanceAuthorizer::giveUp() {
    isOver_ = true;
    for (const Waiting& one : std::exchange(waiting_, {}))
        one.answer.deliver(one.request, one.error);
}

} // namespace quenby
