// Ten thousand executions in random order of answers, retries, pages, cancellations from two threads, dying contexts
// and dying services. Each must call back exactly once or, when it was cancelled, never; and nothing may be left over.
// Run it under the address and the thread sanitizer. QUENBY_TEST_SEED repeats a run's choices (the threads' timing is
// their own).
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "tests/support/DelegateQueue.h"
#include "tests/support/FakeNetwork.h"
#include "tests/support/ManualTimeSource.h"

#include <QLoggingCategory>
#include <QTest>
#include <QThreadPool>

#include <array>
#include <atomic>
#include <condition_variable>
#include <random>
#include <thread>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int executionsInAll = 10000;
constexpr int executionsPerRound = 4;

// Cancels what it is given, as soon as it gets to it.
class CancellingThread {
public:
    ~CancellingThread() {
        post(nullptr);
        thread_.join();
    }
    void post(GTLServiceTicketPtr ticket) {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(ticket));
        changed_.notify_all();
    }
    void waitUntilIdle() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return posted_.empty() && !isBusy_; });
    }

private:
    void run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return !posted_.empty(); });
            GTLServiceTicketPtr ticket = posted_.front();
            posted_.erase(posted_.begin());
            if (!ticket)
                return;
            isBusy_ = true;
            lock.unlock();
            ticket->cancelTicket();
            ticket.reset();
            lock.lock();
            isBusy_ = false;
            changed_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<GTLServiceTicketPtr> posted_;
    bool isBusy_ = false;
    std::thread thread_{[this] { run(); }};
};

struct Execution {
    std::unique_ptr<QObject> context = std::make_unique<QObject>();
    GTLServiceTicketPtr ticket;
    std::atomic<int> calls = 0;
    std::shared_ptr<int> held = std::make_shared<int>(); // by the blocks
    bool mustBeCancelled = false;
};

class Round {
public:
    Round(std::mt19937_64& random, QThreadPool& parseQueue, CancellingThread& canceller, DelegateQueue& delegateQueue)
        : random_(random)
        , parseQueue_(parseQueue)
        , canceller_(canceller)
        , delegateQueue_(delegateQueue) {
        network_.isHolding = true;
        network_.handler = [this](const URLRequest&) { return randomReply(); };
        service_ = std::make_unique<GTLServiceDrive>(Endpoints::provider(), network_.makeFetcherService(time_));
        service_->setParseQueue(&parseQueue_);
        service_->ticketSettings().shouldFetchNextPages = true;
        service_->ticketSettings().retryEnabled = true;
        if (oneIn(3))
            service_->setDelegateQueue(delegateQueue_.object());
        for (Execution& execution : executions_)
            begin(execution);
    }

    void play() {
        const int steps = number(40);
        for (int i = 0; i < steps; ++i)
            step();
    }

    // Lets everything end that still can.
    void finish() {
        for (int i = 0; i < 500 && isAnythingRunning(); ++i) {
            time_->advance(std::chrono::seconds(100));
            while (network_.waitingCount() > 0)
                network_.answerWaiting();
            waitForThreads();
        }
        waitForThreads();
    }

    // Null when all is well.
    const char* verdict() {
        for (Execution& execution : executions_) {
            const bool isCancelled = execution.ticket->isCancelled();
            if (execution.calls > 1)
                return "called back more than once";
            if (isCancelled && execution.calls != 0)
                return "called back although it was cancelled";
            if (!isCancelled && execution.calls != 1)
                return "neither cancelled nor called back";
            if (execution.mustBeCancelled && !isCancelled)
                return "a cancellation in time was ignored";
        }
        service_.reset();
        waitForThreads();
        for (Execution& execution : executions_) {
            const std::weak_ptr<GTLServiceTicket> weak = std::exchange(execution.ticket, nullptr);
            if (!weak.expired())
                return "a ticket is left over";
            if (execution.held.use_count() != 1)
                return "a block is left over";
        }
        return network_.waitingCount() == 0 ? nullptr : "a connection is left over";
    }

private:
    int number(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }
    bool oneIn(int count) { return number(count) == 0; }

    void begin(Execution& execution) {
        const auto query = GTLQueryDrive::queryForFilesList();
        query->setCompletionBlock([held = execution.held](const auto&...) {});
        execution.ticket =
            service_->executeQuery(query, execution.context.get(),
                                   [&calls = execution.calls, held = execution.held](const auto&...) { ++calls; });
        execution.ticket->setRetryBlock(
            [held = execution.held](const auto&, bool suggestedWillRetry, const auto&) { return suggestedWillRetry; });
    }

    FakeReply randomReply() {
        switch (number(8)) {
        case 0:
        case 1:
            return {200, R"({"id":"x","result":{"items":[{"id":"1"}],"nextPageToken":"more"}})"};
        case 2:
            return {503}; // tried again
        case 3:
            return {404, R"({"id":"x","error":{"code":404,"message":"gone"}})"};
        case 4:
            return {200, R"({"id":"x","result":)"};
        default:
            return {200, R"({"id":"x","result":{"items":[{"id":"1"},{"id":"2"}]}})"};
        }
    }

    void step() {
        Execution& execution = executions_[static_cast<size_t>(number(executionsPerRound))];
        switch (number(14)) {
        case 0:
            cancelHere(execution);
            break;
        case 1:
            canceller_.post(execution.ticket);
            break;
        case 2:
            execution.context.reset();
            break;
        case 3:
            if (oneIn(8))
                service_.reset();
            break;
        case 4:
        case 5:
            time_->advance(std::chrono::seconds(2));
            break;
        case 6:
            parseQueue_.waitForDone();
            break;
        case 7:
        case 8:
        case 9:
            if (network_.waitingCount() > 0)
                network_.answerWaiting(static_cast<size_t>(number(static_cast<int>(network_.waitingCount()))));
            break;
        default:
            QCoreApplication::processEvents();
        }
    }

    // On the callbacks' own thread a cancellation before the callback cannot come too late.
    void cancelHere(Execution& execution) {
        if (service_ && !service_->delegateQueue() && execution.calls == 0)
            execution.mustBeCancelled = true;
        execution.ticket->cancelTicket();
    }

    bool isAnythingRunning() const {
        return std::any_of(executions_.begin(), executions_.end(), [](const Execution& execution) {
            return !execution.ticket->hasCalledCallback() && !execution.ticket->isCancelled();
        });
    }

    void waitForThreads() {
        canceller_.waitUntilIdle();
        settle();
        parseQueue_.waitForDone();
        settle();
        delegateQueue_.waitUntilIdle();
    }

    std::mt19937_64& random_;
    QThreadPool& parseQueue_;
    CancellingThread& canceller_;
    DelegateQueue& delegateQueue_;
    FakeNetwork network_;
    std::shared_ptr<ManualTimeSource> time_ = std::make_shared<ManualTimeSource>();
    std::array<Execution, executionsPerRound> executions_;
    std::unique_ptr<GTLServiceDrive> service_;
};

} // namespace

class TestTicketInterleavings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void callBackOnceOrNever() {
        QLoggingCategory::setFilterRules(u"quenby.*=false"_s);
        bool isGiven = false;
        quint64 seed = qEnvironmentVariable("QUENBY_TEST_SEED").toULongLong(&isGiven);
        if (!isGiven)
            seed = std::random_device()();
        qInfo("QUENBY_TEST_SEED=%llu", seed);
        std::mt19937_64 random(seed);

        QThreadPool parseQueue;
        parseQueue.setMaxThreadCount(2);
        CancellingThread canceller;
        DelegateQueue delegateQueue;
        for (int i = 0; i < executionsInAll / executionsPerRound; ++i) {
            Round round(random, parseQueue, canceller, delegateQueue);
            round.play();
            round.finish();
            const char* const complaint = round.verdict();
            QVERIFY2(!complaint, complaint);
        }
    }
};

QTEST_GUILESS_MAIN(TestTicketInterleavings)
#include "tst_ticketinterleavings.moc"
