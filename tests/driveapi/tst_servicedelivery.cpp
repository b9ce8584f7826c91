// When, where and whether the service calls back: threads, cancelling, dying contexts and services, waiting, retrying.
#include "driveapi/GTLDriveAbout.h"
#include "driveapi/GTLQueryDrive.h"
#include "tests/driveapi/ServiceFixture.h"
#include "tests/support/DelegateQueue.h"

using namespace quenby;
using namespace quenby::testing;

namespace {

class Delegate : public QObject {
public:
    int calls = 0;
    void didFinish(const GTLServiceTicketPtr&, const GTLObjectPtr& object, const MaybeError& error) {
        calls += object && !error ? 1 : 100;
    }
};

FakeReply aboutReply(const URLRequest& = {}) { return resultReply(R"({"kind":"drive#about","name":"N"})"); }

// Asks for the account and is told.
struct AboutFixture : ServiceFixture {
    AboutFixture() { network.handler = aboutReply; }
    GTLServiceTicketPtr begin(Outcome& outcome) {
        return service.executeQuery(GTLQueryDrive::queryForAboutGet(), &context, outcome.handler());
    }
};

} // namespace

class TestServiceDelivery : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void callsBackThroughTheEventLoop() {
        AboutFixture fixture;
        Outcome outcome;
        const auto ticket = fixture.begin(outcome);
        QVERIFY(ticket);
        QCOMPARE(outcome.calls, 0);
        QVERIFY(!ticket->hasCalledCallback());
        fixture.settleAll();
        QCOMPARE(outcome.calls, 1);
        QCOMPARE(outcome.ticket, ticket);
        QVERIFY(ticket->hasCalledCallback());
        QCOMPARE(ticket->fetchedObject(), outcome.object);
    }

    void callsBackInOrder() {
        AboutFixture fixture;
        QStringList order;
        const auto query = GTLQueryDrive::queryForAboutGet();
        query->setCompletionBlock([&](const auto&...) { order.append(text("block")); });
        fixture.service.executeQuery(query, &fixture.context, [&](const GTLServiceTicketPtr& ticket, const auto&...) {
            order.append(text("handler"));
            if (!query->completionBlock() && !ticket->hasCalledCallback())
                order.append(text("block dropped before"));
        });
        fixture.settleAll();
        QCOMPARE(order, QStringList({text("block"), text("handler"), text("block dropped before")}));

        // The query's own block is enough.
        query->setCompletionBlock([&](const auto&...) { order.append(text("alone")); });
        fixture.service.executeQuery(query);
        fixture.settleAll();
        QCOMPARE(order.last(), text("alone"));
    }

    void callsDelegates() {
        AboutFixture fixture;
        Delegate delegate;
        fixture.service.executeQueryWithDelegate(GTLQueryDrive::queryForAboutGet(), &delegate, &Delegate::didFinish);
        {
            Delegate dying;
            fixture.service.executeQueryWithDelegate(GTLQueryDrive::queryForAboutGet(), &dying, &Delegate::didFinish);
        }
        fixture.settleAll();
        QCOMPARE(delegate.calls, 1);
    }

    void callsOnTheDelegateQueue() {
        DelegateQueue queue;
        AboutFixture fixture;
        fixture.service.setDelegateQueue(queue.object());
        QThread* calledOn = nullptr;
        const auto ticket = fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet(), &fixture.context,
                                                         [&](const auto&...) { calledOn = QThread::currentThread(); });
        QVERIFY(fixture.service.waitForTicket(ticket, std::chrono::seconds(10)));
        QCOMPARE(calledOn, queue.thread());

        // The context still counts: when it dies, nothing is called.
        auto context = std::make_unique<QObject>();
        Outcome outcome;
        const auto orphan =
            fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet(), context.get(), outcome.handler());
        context.reset();
        fixture.settleAll();
        QVERIFY(orphan->isCancelled());
        queue.waitUntilIdle();
        QCOMPARE(outcome.calls, 0);
    }

    void parsesWhereItIsTold() {
        AboutFixture fixture;
        QCOMPARE(fixture.service.parseQueue()->maxThreadCount(), 1);
        fixture.service.setParseQueue(nullptr);
        Outcome outcome;
        fixture.begin(outcome);
        settle(); // no other thread is waited for
        QCOMPARE(outcome.calls, 1);
        QCOMPARE(outcome.as<GTLDriveAbout>()->name(), text("N"));
    }

    void postsParsingNotifications() {
        AboutFixture fixture;
        QStringList names;
        connect(&fixture.service, &GTLService::notification, &fixture.context,
                [&](const QString& name, const GTLServiceTicketPtr& ticket) {
                    names.append(name);
                    QCOMPARE(ticket->fetchedObject() != nullptr, name == kGTLServiceTicketParsingStoppedNotification);
                });
        const QStringList both{kGTLServiceTicketParsingStartedNotification,
                               kGTLServiceTicketParsingStoppedNotification};
        fixture.run(GTLQueryDrive::queryForAboutGet());
        QCOMPARE(names, both);

        fixture.network.handler = [](const URLRequest&) { return FakeReply{500}; };
        fixture.run(GTLQueryDrive::queryForAboutGet());
        QCOMPARE(names, both); // nothing was parsed
    }

    void cancelledTicketsNeverCallBack_data() {
        QTest::addColumn<QString>("when");
        for (const char* when : {"at once", "when parsing starts", "when parsing has stopped", "from another thread",
                                 "context dies at once", "context dies when parsing starts", "service dies at once",
                                 "service dies when parsing starts"})
            QTest::newRow(when) << text(when);
    }
    void cancelledTicketsNeverCallBack() {
        QFETCH(QString, when);
        FakeNetwork network;
        network.handler = aboutReply;
        auto service = std::make_unique<GTLServiceDrive>(Endpoints::provider(), network.makeFetcherService());
        auto context = std::make_unique<QObject>();
        QThreadPool pool; // outlives the service
        const auto undertaker = Mailbox::forContext(&pool);
        service->setParseQueue(&pool);
        Outcome outcome;
        Outcome block;
        const auto query = GTLQueryDrive::queryForAboutGet();
        query->setCompletionBlock(block.handler());
        const auto ticket = service->executeQuery(query, context.get(), outcome.handler());

        const auto act = [&] {
            if (when.startsWith(text("context")))
                context.reset();
            else if (when.startsWith(text("service")))
                undertaker->post([&] { service.reset(); }); // not from inside its own signal
            else
                ticket->cancelTicket();
        };
        connect(service.get(), &GTLService::notification, this, [&](const QString& name) {
            if (when.endsWith(text("parsing starts")) && name == kGTLServiceTicketParsingStartedNotification)
                act();
            if (when.endsWith(text("has stopped")) && name == kGTLServiceTicketParsingStoppedNotification)
                act();
        });
        if (when.endsWith(text("at once")))
            act();
        if (when == text("from another thread")) {
            QThread* const canceller = QThread::create([ticket] { ticket->cancelTicket(); });
            canceller->start();
            canceller->wait();
            delete canceller;
        }
        for (int round = 0; round < 5; ++round) {
            settle();
            pool.waitForDone();
        }
        QVERIFY(ticket->isCancelled());
        QVERIFY(!ticket->hasCalledCallback());
        QCOMPARE(outcome.calls + block.calls, 0);
        QVERIFY(!query->completionBlock());
    }

    void cancellingReleasesWhatTheBlocksHold() {
        AboutFixture fixture;
        const auto held = std::make_shared<int>();
        const auto query = GTLQueryDrive::queryForAboutGet();
        query->setCompletionBlock([held](const auto&...) {});
        const auto ticket = fixture.service.executeQuery(query, &fixture.context, [held](const auto&...) {});
        ticket->setRetryBlock([held](const auto&...) { return true; });
        ticket->setUploadProgressBlock([held](const auto&...) {});
        QCOMPARE(held.use_count(), 5);
        ticket->cancelTicket();
        QCOMPARE(held.use_count(), 1);
        QVERIFY(!ticket->objectFetcher()->isFetching());
        ticket->cancelTicket(); // again is harmless
    }

    void fetchesNoFurtherPageAfterCancelling() {
        AboutFixture fixture;
        fixture.service.ticketSettings().shouldFetchNextPages = true;
        fixture.network.handler = [](const URLRequest&) { return resultReply(R"({"items":[],"nextPageToken":"t"})"); };
        fixture.network.isHolding = true;
        Outcome outcome;
        const auto ticket =
            fixture.service.executeQuery(GTLQueryDrive::queryForFilesList(), &fixture.context, outcome.handler());
        for (int page = 0; page < 3; ++page) {
            QCOMPARE(fixture.network.waitingCount(), 1u);
            fixture.network.answerWaiting();
            fixture.settleAll();
        }
        QCOMPARE(ticket->pagesFetchedCounter(), 3u);
        ticket->cancelTicket();
        QCOMPARE(fixture.network.waitingCount(), 0u);
        fixture.settleAll();
        QCOMPARE(fixture.network.requests.size(), 4u);
        QCOMPARE(outcome.calls, 0);
    }

    void waits() {
        AboutFixture fixture;
        GTLObjectPtr object;
        MaybeError error;
        auto ticket = fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet());
        QVERIFY(fixture.service.waitForTicket(ticket, std::chrono::seconds(10), &object, &error));
        QVERIFY(std::dynamic_pointer_cast<GTLDriveAbout>(object));
        QVERIFY(!error);

        fixture.network.handler = [](const URLRequest&) { return FakeReply{403}; };
        ticket = fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet());
        QVERIFY(!fixture.service.waitForTicket(ticket, std::chrono::seconds(10), &object, &error));
        QVERIFY(error && error->isHTTPStatus(403));
        QVERIFY(!object);
    }

    void waitsInVain() {
        AboutFixture fixture;
        fixture.network.isHolding = true;
        const auto ticket = fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet());
        const auto cancelled = fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet());
        cancelled->cancelTicket();
        MaybeError error;
        QVERIFY(!fixture.service.waitForTicket(ticket, std::chrono::milliseconds(5), nullptr, &error));
        QVERIFY(error && error->is(errorDomain::service, -3001));
        QVERIFY(!fixture.service.waitForTicket(cancelled, std::chrono::hours(1), nullptr, &error));
        QVERIFY(error && error->is(errorDomain::service, -3001));
        QVERIFY(!fixture.service.waitForTicket(nullptr, std::chrono::hours(1)));
    }

    // Each of three callbacks that are on their way waits for the next from inside.
    void aCallbackMayWaitForAnother() {
        AboutFixture fixture;
        fixture.service.setParseQueue(nullptr); // so that they come together
        std::vector<GTLServiceTicketPtr> tickets;
        std::vector<bool> hasWaited;
        for (size_t next = 1; next <= 3; ++next)
            tickets.push_back(fixture.service.executeQuery(
                GTLQueryDrive::queryForAboutGet(), &fixture.context, [&, next](const auto&...) {
                    if (next < tickets.size())
                        hasWaited.push_back(fixture.service.waitForTicket(tickets[next], std::chrono::seconds(20)));
                }));
        QTRY_COMPARE_WITH_TIMEOUT(hasWaited.size(), 2u, 60'000);
        QCOMPARE(hasWaited, std::vector<bool>({true, true}));
    }

    // The reply lies in the event queue behind the one who waits for it.
    void whatIsPostedAlreadyIsWaitedFor() {
        AboutFixture fixture;
        std::optional<bool> hasWaited;
        GTLServiceTicketPtr ticket;
        const auto wait = [&] { hasWaited = fixture.service.waitForTicket(ticket, std::chrono::seconds(20)); };
        QMetaObject::invokeMethod(&fixture.context, wait, Qt::QueuedConnection);
        ticket = fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet());
        QTRY_VERIFY_WITH_TIMEOUT(hasWaited, 60'000);
        QVERIFY(*hasWaited);
    }

    void reportsFetchesThatCannotBegin() {
        AboutFixture fixture;
        fixture.service.settings().rpcURL = QUrl(text("http://host.example/rpc"));
        Outcome outcome;
        QTest::ignoreMessage(QtWarningMsg, "Fetch disallowed for http://host.example/rpc");
        QVERIFY(!fixture.begin(outcome));
        QCOMPARE(outcome.calls, 0);
        fixture.settleAll();
        QCOMPARE(outcome.calls, 1);
        QVERIFY(outcome.error && outcome.error->is(FetcherErrorCode::fetchCouldNotBegin));

        fixture.service.settings().allowInsecureQueries = true;
        QVERIFY(!fixture.run(GTLQueryDrive::queryForAboutGet()).error);
        fixture.service.settings().rpcURL = QUrl(text("http://127.0.0.1:1/rpc"));
        QVERIFY(!fixture.run(GTLQueryDrive::queryForAboutGet()).error);
    }

    void simulatesReplies() {
        AboutFixture fixture;
        GTLTestResponse later;
        const auto query = GTLQueryDrive::queryForAboutGet();
        query->setTestBlock([&](const GTLServiceTicketPtr&, const GTLTestResponse& response) { later = response; });
        Outcome outcome;
        QVERIFY(fixture.service.executeQuery(query, &fixture.context, outcome.handler()));
        fixture.settleAll();
        QCOMPARE(outcome.calls, 0);

        const auto about = GTLDriveAbout::object();
        QThread* const responder = QThread::create([&] {
            later(about, std::nullopt);
            later(nullptr, std::nullopt); // too late
        });
        responder->start();
        responder->wait();
        delete responder;
        QCOMPARE(outcome.calls, 0);
        fixture.settleAll();
        QCOMPARE(outcome.calls, 1);
        QCOMPARE(outcome.object, about);
        QVERIFY(fixture.network.requests.empty());
        QVERIFY(!query->testBlock());
    }

    void simulatesThroughTheServicesTestBlock() {
        AboutFixture fixture;
        fixture.service.settings().testBlock = [](const GTLServiceTicketPtr&, const GTLTestResponse& response) {
            response(nullptr, Error(errorDomain::jsonRPC, 401));
        };
        const auto query = GTLQueryDrive::queryForAboutGet();
        query->setTestBlock([](const GTLServiceTicketPtr&, const GTLTestResponse& response) { response(nullptr, {}); });
        QVERIFY(!fixture.run(query).error); // the query's own goes first
        QVERIFY(fixture.run(GTLQueryDrive::queryForAboutGet()).error->is(errorDomain::jsonRPC, 401));
        QVERIFY(fixture.network.requests.empty());
    }

    void retries_data() {
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<QVariant>("answer"); // of the retry block; invalid: no block
        QTest::addColumn<bool>("isRetried");

        QTest::newRow("off") << false << QVariant() << false;
        QTest::newRow("on") << true << QVariant() << true;
        QTest::newRow("the block says no") << true << QVariant(false) << false;
        QTest::newRow("off, and the block says yes") << false << QVariant(true) << false;
    }
    void retries() {
        QFETCH(bool, enabled);
        QFETCH(QVariant, answer);
        QFETCH(bool, isRetried);
        AboutFixture fixture;
        fixture.network.handler = [&](const URLRequest&) {
            return fixture.network.requests.size() == 1 ? FakeReply{503} : aboutReply();
        };
        GTLTicketSettings& settings = fixture.service.ticketSettings();
        settings.retryEnabled = enabled;
        bool suggested = false;
        if (answer.isValid()) {
            settings.retryBlock = [&](const GTLServiceTicketPtr&, bool suggestedWillRetry, const Error& error) {
                suggested = suggestedWillRetry && error.isHTTPStatus(503);
                return answer.toBool();
            };
        }
        Outcome outcome;
        fixture.begin(outcome);
        fixture.settleAll();
        fixture.time->advance(std::chrono::seconds(3));
        fixture.settleAll();
        QCOMPARE(outcome.calls, 1);
        QCOMPARE(outcome.error.has_value(), !isRetried);
        QCOMPARE(fixture.network.requests.size(), isRetried ? 2u : 1u);
        QCOMPARE(suggested, answer.isValid() && enabled);
    }

    void ticketsTakeTheirSettingsFromTheService() {
        AboutFixture fixture;
        fixture.network.isHolding = true;
        fixture.service.ticketSettings().properties = {{text("a"), 1}, {text("b"), 2}};
        fixture.service.ticketSettings().maxRetryInterval = 30;
        const auto ticket = fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet());
        fixture.service.ticketSettings().properties.clear();
        ticket->setProperty(QVariant(), text("a"));
        QCOMPARE(ticket->properties(), QVariantMap({{text("b"), 2}}));
        QCOMPARE(ticket->maxRetryInterval(), 30.0);
        QCOMPARE(ticket->service(), &fixture.service);
        QVERIFY(ticket->description().startsWith(text("GTLServiceTicket 0x")));
    }
};

QTEST_GUILESS_MAIN(TestServiceDelivery)
#include "tst_servicedelivery.moc"
