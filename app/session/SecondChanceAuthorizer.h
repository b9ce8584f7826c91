// Authorizes requests with the sign-in's credentials. When the server refuses those, it says so, and keeps the requests
// back until somebody has looked for better ones: nobody hears of a refusal that was none.
//
// Threads: as every Authorizer. It lives on the authentication's thread, where everything but authorizeRequest() is
// called.
#pragma once

#include "http/Authorizer.h"

#include <QObject>

#include <memory>
#include <vector>

namespace quenby {

class GTMOAuth2Authentication;

class SecondChanceAuthorizer final : public QObject, public Authorizer {
    Q_OBJECT

public:
    static std::shared_ptr<SecondChanceAuthorizer> create(std::shared_ptr<GTMOAuth2Authentication> authentication);

    const std::shared_ptr<GTMOAuth2Authentication>& authentication() const { return authentication_; }

    // The answers to refused().
    void tryAgain();
    // It is final: the requests that wait get their errors, and so do all later ones, at once.
    void giveUp();

    bool isAuthorizedRequest(const URLRequest& request) const override;
    CompletionTicket authorizeRequest(const URLRequest& request, QObject* context, AuthorizeHandler handler) override;
    bool primeForRefresh(const URLRequest& refusedRequest) override;
    QString userEmail() const override;

Q_SIGNALS:
    // Once until it is answered.
    void refused();

private:
    using Answer = CompletionGate<const URLRequest&, const MaybeError&>;

    // A request that was refused.
    struct Waiting {
        URLRequest request;
        Error error;
        Answer answer;
    };

    explicit SecondChanceAuthorizer(std::shared_ptr<GTMOAuth2Authentication> authentication);

    void ask(const URLRequest& request, const Answer& answer);
    void answered(const URLRequest& request, const MaybeError& error, const Answer& answer);

    const std::shared_ptr<GTMOAuth2Authentication> authentication_;
    std::vector<Waiting> waiting_; // in the order in which they came
    bool isOver_ = false;
};

} // namespace quenby
