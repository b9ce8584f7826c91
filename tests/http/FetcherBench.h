// What the fetcher's tests share: a fetcher on connections that go nowhere, with time that the test moves.
#pragma once

#include "core/CompletionGate.h"
#include "http/GTMHTTPFetcher.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/ManualTimeSource.h"

#include <QCoreApplication>
#include <QLoggingCategory>

namespace quenby::testing {

inline HeaderFields fields(const std::vector<HeaderFields::Field>& list) {
    HeaderFields headers;
    for (const auto& [name, value] : list)
        headers.append(name, value);
    return headers;
}

inline void settle() { QCoreApplication::processEvents(); }

// Errors are what these tests are about; nobody wants to read of each.
inline void silenceExpectedErrors() { QLoggingCategory::setFilterRules(QStringLiteral("quenby.http.info=false")); }

// Grants or refuses as the test says, at once or when the test lets it.
class FakeAuthorizer final : public Authorizer {
public:
    bool canRefresh = false;
    MaybeError error;
    bool isHolding = false;
    int primed = 0;
    std::vector<CompletionGate<URLRequest, MaybeError>> held;

    bool isAuthorizedRequest(const URLRequest& request) const override {
        return request.headers.contains("Authorization");
    }
    CompletionTicket authorizeRequest(const URLRequest& request, QObject* context, AuthorizeHandler handler) override {
        CompletionGate<URLRequest, MaybeError> gate(context, std::move(handler));
        URLRequest authorized = request;
        if (!error)
            authorized.headers.set("Authorization", "Bearer token" + QByteArray::number(primed));
        if (isHolding)
            held.push_back(gate);
        else
            gate.deliver(authorized, error);
        return gate.ticket();
    }
    bool primeForRefresh(const URLRequest& refused) override {
        if (!refused.headers.contains("Authorization"))
            qFatal("the refused request carries no token");
        ++primed;
        return canRefresh;
    }
    QString userEmail() const override { return {}; }
};

// A fetcher, its network and its clock, and what it told its caller.
struct FetcherBench {
    FakeNetwork network;
    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    std::shared_ptr<GTMHTTPFetcher> fetcher;
    QObject context;
    QStringList notifications;
    int calls = 0;
    QByteArray data;
    MaybeError error;

    explicit FetcherBench(const QString& url = QStringLiteral("https://host.example/path"),
                          const QByteArray& method = {}) {
        URLRequest request{QUrl(url)};
        request.httpMethod = method;
        fetcher = GTMHTTPFetcher::fetcherWithRequest(request);
        fetcher->setConnectionClass(network.factory());
        fetcher->setTimeSource(time);
        fetcher->setCookieStorageMethod(CookieStorageMethod::none);
        QObject::connect(fetcher.get(), &GTMHTTPFetcher::notification, &context, [this](const QString& name) {
            QString shortened = name;
            notifications.append(
                shortened.remove(QStringLiteral("kGTMHTTPFetcher")).remove(QStringLiteral("Notification")));
        });
    }
    ~FetcherBench() {
        if (fetcher)
            fetcher->stopFetching(); // it would keep itself alive, and its network is going
    }
    FetcherBench(const FetcherBench&) = delete;
    FetcherBench& operator=(const FetcherBench&) = delete;

    bool begin() {
        return fetcher->beginFetchWithCompletionHandler(&context, [this](const QByteArray& body, const MaybeError& e) {
            ++calls;
            data = body;
            error = e;
        });
    }
    size_t attempts() const { return network.exchanges.size(); }
};

} // namespace quenby::testing
