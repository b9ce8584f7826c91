#include "core/CompletionGate.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QTest>
#include <QThread>

#include <atomic>
#include <future>
#include <thread>

using quenby::CompletionGate;
using quenby::CompletionTicket;
using quenby::Mailbox;

namespace {

void drainEvents() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// An event loop on a thread of its own, ended and joined by the destructor.
class LoopThread {
public:
    LoopThread() { thread_.start(); }
    ~LoopThread() {
        thread_.quit();
        thread_.wait();
    }
    // A context that lives on the thread.
    QObject* makeContext() {
        auto* context = new QObject;
        context->moveToThread(&thread_);
        return context;
    }
    QThread* thread() { return &thread_; }
    // Returns when everything posted to the thread before has run.
    void drain() {
        QObject* context = makeContext();
        std::promise<void> reached;
        Mailbox::forContext(context)->post([&reached] { reached.set_value(); });
        reached.get_future().wait();
        context->deleteLater();
    }

private:
    QThread thread_;
};

} // namespace

class CompletionGateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void deliversOnceThroughTheEventLoop() {
        QObject context;
        std::vector<int> seen;
        const CompletionGate<int> gate(&context, [&seen](int value) { seen.push_back(value); });
        gate.deliver(1);
        gate.deliver(2);
        QVERIFY(seen.empty()); // never from inside deliver()
        QVERIFY(gate.ticket().isPending());
        drainEvents();
        QCOMPARE(seen, std::vector<int>{1});
        QVERIFY(!gate.ticket().isPending());
        QVERIFY(!gate.ticket().cancel());
    }

    void neverAfterCancelOrDeath_data() {
        QTest::addColumn<bool>("delivered"); // before it was cancelled
        QTest::addColumn<bool>("byDeath");
        QTest::newRow("cancel, then deliver") << false << false;
        QTest::newRow("deliver, then cancel") << true << false;
        QTest::newRow("death, then deliver") << false << true;
        QTest::newRow("deliver, then death") << true << true;
    }
    void neverAfterCancelOrDeath() {
        QFETCH(bool, delivered);
        QFETCH(bool, byDeath);
        auto context = std::make_unique<QObject>();
        const auto captured = std::make_shared<int>(0);
        const CompletionGate<> gate(context.get(), [captured] { ++*captured; });
        if (delivered)
            gate.deliver();
        if (byDeath)
            context.reset();
        else
            QVERIFY(gate.ticket().cancel());
        QCOMPARE(captured.use_count(), 1L); // what the function held is let go at once
        gate.deliver();
        drainEvents();
        QCOMPARE(*captured, 0);
    }

    // Whoever posts need not keep the box.
    void aTemporaryBoxRunsWhatWasPosted() {
        auto context = std::make_unique<QObject>();
        const auto captured = std::make_shared<int>(0);
        Mailbox::forContext(context.get())->post([captured] { ++*captured; });
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        drainEvents();
        QCOMPARE(*captured, 1);
        QCOMPARE(captured.use_count(), 1L);

        std::weak_ptr<Mailbox> box;
        {
            const auto made = Mailbox::forContext(context.get());
            box = made;
            made->post([captured] { ++*captured; });
        }
        QVERIFY(!box.expired());
        context.reset(); // its death lets go of the box and of what was posted
        QVERIFY(box.expired());
        drainEvents();
        QCOMPARE(*captured, 1);
        QCOMPARE(captured.use_count(), 1L);
    }

    void runsOnTheContextsThread() {
        LoopThread other;
        QObject* context = other.makeContext();
        std::atomic<QThread*> ranOn = nullptr;
        const CompletionGate<> gate(context, [&ranOn] { ranOn = QThread::currentThread(); });
        gate.deliver();
        other.drain();
        QCOMPARE(ranOn.load(), other.thread());
        context->deleteLater();
    }

    // Deliveries from one thread, cancellations from a second, contexts that die on a third: each function runs at
    // most once, never when its cancellation came in time, always when nothing kept it, and lets go of its captures.
    void randomInterleavings() {
        enum Plan : quint32 { cancelThere = 1, die = 2, deliverElsewhere = 4, deliverAgain = 8, cancelHere = 16 };
        struct Call {
            quint32 plan = 0;
            std::atomic<bool> cancelled = false;
            std::atomic<int> runs = 0;
        };
        LoopThread home;
        std::vector<std::shared_ptr<Call>> calls;
        const auto alive = std::make_shared<int>(0);
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        for (int round = 0; round < 10000; ++round) {
            const auto call = std::make_shared<Call>();
            call->plan = random.bounded(32U);
            calls.push_back(call);
            QObject* context = home.makeContext();
            const CompletionGate<> gate(context, [call, alive] { ++call->runs; });
            const auto cancel = [ticket = gate.ticket(), call] {
                if (ticket.cancel())
                    call->cancelled = true;
            };
            if (call->plan & cancelThere)
                Mailbox::forContext(context)->post(cancel);
            if (call->plan & die)
                context->deleteLater();
            std::thread deliverer;
            if (call->plan & deliverElsewhere)
                deliverer = std::thread([gate] { gate.deliver(); });
            else
                gate.deliver();
            if (call->plan & deliverAgain)
                gate.deliver();
            if (call->plan & cancelHere)
                cancel();
            if (deliverer.joinable())
                deliverer.join();
            if (!(call->plan & die))
                context->deleteLater();
        }
        home.drain();
        for (const auto& call : calls) {
            QVERIFY(call->runs <= 1);
            QVERIFY(!call->cancelled || call->runs == 0);
            if (!(call->plan & (cancelThere | die | cancelHere)))
                QCOMPARE(call->runs.load(), 1);
        }
        QTRY_COMPARE(alive.use_count(), 1L);
    }
};

QTEST_GUILESS_MAIN(CompletionGateTest)
#include "tst_completiongate.moc"
