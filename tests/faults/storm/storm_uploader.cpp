// The desktop program's uploads without its windows, to be killed: the pipeline, its queue and its journal against a
// Drive.
//
// Standard input, a line each: first {"drive", "road", "grant", "journal"} as JSON, then paths of files to upload, with
// an empty line where they are to be kept. Standard output: "left N" when what an earlier run left was read, and when
// something changed; "kept" when the files are; "failed REASON" for what has ended without being in the Drive.

#include "app/account/ClientIdentity.h"
#include "app/uploads/UploadPipeline.h"
#include "app/uploads/journal/UploadJournal.h"
#include "core/Endpoints.h"
#include "driveapi/GTLServiceDrive.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/GTMOAuth2SignIn.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeNotifications.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakePasteboard.h"
#include "tests/support/HastyTimeSource.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <cstdio>

#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

// Pauses pass in a hurry, but the date is the real one: the next run has to find a location valid that this one got.
class StormTimeSource final : public TimeSource {
public:
    QDateTime now() const override { return QDateTime::currentDateTimeUtc(); }
    std::chrono::milliseconds elapsed() const override { return hasty_.elapsed(); }
    std::unique_ptr<Timer> startTimer(std::chrono::milliseconds delay, std::function<void()> function) override {
        return hasty_.startTimer(delay, std::move(function));
    }

private:
    HastyTimeSource hasty_;
};

void tell(const QByteArray& line) {
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

class Uploader : public QObject {
public:
    explicit Uploader(const QJsonObject& orders)
        : journal_(QFile::encodeName(orders[QLatin1String("journal")].toString())) {
        Endpoints endpoints = Endpoints::localDrive(QUrl(orders[QLatin1String("drive")].toString()));
        if (orders[QLatin1String("road")] == QLatin1String("rest"))
            endpoints.road = APIRoad::rest;
        authentication_ = GTMOAuth2SignIn::standardGoogleAuthenticationForScope(
            endpoints.driveScope, QStringLiteral("test"), ClientIdentity::ofTheProgram().clientSecret, endpoints);
        authentication_->setShouldAuthorizeAllRequests(true);
        authentication_->setKeysForResponseDictionary(orders[QLatin1String("grant")].toObject().toVariantMap());
        authentication_->setFetcherService(accountFetcherService_);
        service_ = std::make_shared<GTLServiceDrive>(endpoints, fetcherService());
        service_->setAuthorizer(authentication_);
        service_->ticketSettings().retryEnabled = true;
        service_->settings().serviceUploadChunkSize = restUploadChunkUnit;

        pipeline_ = std::make_unique<UploadPipeline>(
            UploadServices{[this] { return service_; }, time_, defaults_, notifications_, alerts_, panels_, pasteboard_,
                           opener_},
            [] { return nullptr; }, UploadLimits{.comesBack = true});
        UploadQueue& queue = pipeline_->queue();
        connect(&journal_, &UploadJournal::troubled, this,
                [](const Error& error) { tell("failed journal: " + error.description().toUtf8()); });
        connect(&queue, &UploadQueue::finished, this, [](const UploadRequest& request, const auto& outcome) {
            if (!outcome)
                tell("failed " + request.path + ": " + outcome.error().description().toUtf8());
        });
        connect(&queue, &UploadQueue::leftOut, this, [](const UploadRequest& request, const Error& error) {
            tell("failed " + request.path + ": " + error.description().toUtf8());
        });
        connect(&queue, &UploadQueue::sourceChanged, this,
                [](const UploadRequest& request) { tell("failed " + request.path + ": looks like another file"); });
        connect(&queue, &UploadQueue::over, this, &Uploader::tellLeft);
        connect(&queue, &UploadQueue::wasRead, this, &Uploader::tellLeft);
        queue.setMaxSendSpeed(orders[QLatin1String("speed")].toInteger());
        queue.setAccount(QStringLiteral("storm"));
        queue.setJournal(journal_);
    }

    void keep(const QList<QByteArray>& paths) {
        pipeline_->UploadFilesToServer(paths);
        journal_.flush();
        tellLeft();
        tell("kept");
    }

private:
    std::shared_ptr<GTMHTTPFetcherService> fetcherService() const {
        const auto service = GTMHTTPFetcherService::create(time_);
        service->setAllowLocalhostRequest(true);
        service->setTimeout(5s); // of real time: a connection that is stalled by then is given up
        return service;
    }
    void tellLeft() { tell("left " + QByteArray::number(pipeline_->queue().numbers().size())); }

    const std::shared_ptr<TimeSource> time_ = std::make_shared<StormTimeSource>();
    FakeAlerts alerts_;
    FakeDefaults defaults_;
    FakeFilePanels panels_;
    FakeNotifications notifications_;
    FakeOpener opener_;
    FakePasteboard pasteboard_;
    UploadJournal journal_;
    const std::shared_ptr<GTMHTTPFetcherService> accountFetcherService_ = fetcherService();
    std::shared_ptr<GTMOAuth2Authentication> authentication_;
    std::shared_ptr<GTLServiceDrive> service_;
    std::unique_ptr<UploadPipeline> pipeline_;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("quenby.*=false")); // QT_LOGGING_RULES brings them back
    std::unique_ptr<Uploader> uploader;
    QList<QByteArray> paths;
    QByteArray read;
    const auto take = [&](const QByteArray& line) {
        if (!uploader)
            uploader = std::make_unique<Uploader>(QJsonDocument::fromJson(line).object());
        else if (line.isEmpty())
            uploader->keep(std::exchange(paths, {}));
        else
            paths.append(line);
    };
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
        char piece[65536];
        const ssize_t count = ::read(STDIN_FILENO, piece, sizeof piece);
        if (count <= 0)
            return QCoreApplication::quit();
        read.append(piece, count);
        for (qsizetype end = read.indexOf('\n'); end >= 0; end = read.indexOf('\n')) {
            take(read.first(end));
            read.remove(0, end + 1);
        }
    });
    const int result = QCoreApplication::exec();
    uploader.reset();
    return result;
}
