// What it costs to start and finish fetchers that queue for one host, beyond the network itself.

#include "http/GTMHTTPFetcherService.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>

using namespace quenby;

namespace {

// Answers every request with an empty 200 in the next turn of the event loop.
class InstantConnection final : public URLConnection {
public:
    InstantConnection(const URLRequest& request, URLConnectionClient& client)
        : url_(request.url)
        , client_(client) {}

    void start() override {
        QTimer::singleShot(0, &context_, [this] {
            HTTPResponse response;
            response.url = url_;
            response.statusCode = 200;
            URLConnectionClient& client = client_;
            QPointer<QObject> alive(&context_);
            client.connectionDidReceiveResponse(response);
            if (alive)
                client.connectionDidFinishLoading();
        });
    }
    void cancel() override { context_.disconnect(); }

private:
    QObject context_;
    QUrl url_;
    URLConnectionClient& client_;
};

void startAndFinishQueuedFetchers(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        const auto service = GTMHTTPFetcherService::create();
        service->setConnectionClass([](const URLRequest& request, URLConnectionClient& client) {
            return std::make_unique<InstantConnection>(request, client);
        });
        QEventLoop loop;
        int finished = 0;
        for (int i = 0; i < count; ++i) {
            const auto fetcher =
                service->fetcherWithRequest(URLRequest(QUrl(QStringLiteral("https://drive.example/"))));
            fetcher->setServicePriority(i % 7);
            fetcher->beginFetchWithCompletionHandler(&loop, [&](const QByteArray&, const MaybeError& error) {
                if (error)
                    state.SkipWithError(qPrintable(error->description()));
                if (++finished == count)
                    loop.quit();
            });
        }
        loop.exec();
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(startAndFinishQueuedFetchers)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
