// A Drive service on a fake network, and what comes out of its executions.
#pragma once

#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QTest>
#include <QThreadPool>

namespace quenby::testing {

inline QString text(const char* utf8) { return QString::fromUtf8(utf8); }

// How often a callback came, and with what.
struct Outcome {
    int calls = 0;
    GTLServiceTicketPtr ticket;
    GTLObjectPtr object;
    MaybeError error;

    GTLCompletionHandler handler() {
        return [this](const GTLServiceTicketPtr& finished, const GTLObjectPtr& given, const MaybeError& failure) {
            ++calls;
            ticket = finished;
            object = given;
            error = failure;
        };
    }
    template <typename T>
    std::shared_ptr<T> as() const {
        return std::dynamic_pointer_cast<T>(object);
    }
};

struct ServiceFixture {
    FakeNetwork network;
    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    QObject context;
    GTLServiceDrive service{Endpoints::provider(), network.makeFetcherService(time)};

    // Runs everything that is under way to its end, as long as it needs no time to pass.
    void settleAll() {
        settle();
        for (int round = 0; round < 60; ++round) {
            if (service.parseQueue())
                service.parseQueue()->waitForDone();
            settle();
        }
    }
    Outcome run(const std::shared_ptr<GTLQueryProtocol>& query) {
        Outcome outcome;
        service.executeQuery(query, &context, outcome.handler());
        settleAll();
        return outcome;
    }
};

// The query under a request ID that a test knows.
inline std::shared_ptr<GTLQueryDrive> numbered(const std::shared_ptr<GTLQueryDrive>& query, const char* requestID) {
    query->setRequestID(text(requestID));
    return query;
}

// The reply to a call: its result under the call's ID.
inline FakeReply resultReply(const QByteArray& result) {
    return {200, R"({"id":"gtl_1","result":)" + result + '}', "application/json-rpc; charset=utf-8"};
}

} // namespace quenby::testing
