// What the fetcher's tests share: a fetcher on connections that go nowhere, with time that the test moves.
#pragma once

#include "http/GTMHTTPFetcher.h"
#include "tests/support/FakeAuthorizer.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QLoggingCategory>

namespace quenby::testing {

inline HeaderFields fields(const std::vector<HeaderFields::Field>& list) {
    HeaderFields headers;
    for (const auto& [name, value] : list)
        headers.append(name, value);
    return headers;
}

// Errors are what these tests are about; nobody wants to read of each.
inline void silenceExpectedErrors() { QLoggingCategory::setFilterRules(QStringLiteral("quenby.http.info=false")); }

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
    // What the network's answer leads to, until time would have to pass.
    void answer(int status, const QByteArray& body = {}, const HeaderFields& headers = {}) {
        network.last().answer(status, body, headers);
        settle();
    }
    void fetch(int status, const QByteArray& body = {}, const HeaderFields& headers = {}) {
        begin();
        answer(status, body, headers);
    }
    size_t attempts() const { return network.exchanges.size(); }
};

} // namespace quenby::testing
