#include "tests/faults/FaultBench.h"

#include "app/account/ClientIdentity.h"
#include "driveapi/GTLDriveFile.h"
#include "oauth2/GTMOAuth2SignIn.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDirIterator>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>

#include <cstdio>

namespace quenby::testing {

using namespace std::chrono_literals;

namespace {

constexpr auto longestOperation = 60s; // of real time; whatever takes longer hangs
constexpr auto stallLimit = 700ms;     // of real time, in place of the minute that people are given

const QString benchDomain = QStringLiteral("org.quenby.FaultBench");

Error hang() { return Error(benchDomain, 1, {{errorKey::reason, QStringLiteral("the operation hangs")}}); }

template <typename Value>
Result<Value> waitFor(std::optional<Result<Value>>& outcome) {
    const QDeadlineTimer deadline(longestOperation);
    while (!outcome && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    return outcome ? *outcome : Result<Value>(hang());
}

} // namespace

QString Expected::differenceTo(const MaybeError& error) const {
    if (!error)
        return domain.isEmpty() ? QString() : QStringLiteral("succeeded instead of failing");
    if (!domain.isEmpty() && error->domain().endsWith(domain) && error->code() == code)
        return {};
    return QStringLiteral("ended with ") + error->domain() + QLatin1Char(' ') + QString::number(error->code()) +
           QStringLiteral(": ") + error->description();
}

FaultBench::FaultBench()
    : fetchLog_(std::make_shared<FetchLog>(folder_.filePath(QStringLiteral("log")), QStringLiteral("faults"),
                                           QStringLiteral("run"))) {}

FaultBench::~FaultBench() = default;

bool FaultBench::prepare() {
    if (!drive_.url().isValid() && !drive_.start())
        return false;
    drive_.clearFaults();
    compose();
    return authentication_->canAuthorize();
}

void FaultBench::compose() {
    const Endpoints endpoints = Endpoints::localDrive(drive_.url());
    // Tokens live by the real clock: in a hurried one they would expire in the middle of every row.
    authentication_ = GTMOAuth2SignIn::standardGoogleAuthenticationForScope(
        endpoints.driveScope, QStringLiteral("test"), ClientIdentity::ofTheProgram().clientSecret, endpoints);
    authentication_->setShouldAuthorizeAllRequests(true);
    authentication_->setKeysForResponseDictionary(drive_.grant().toVariantMap());

    const auto makeFetcherService = [this] {
        const auto service = GTMHTTPFetcherService::create(time_);
        service->setAllowLocalhostRequest(true);
        service->setTimeout(stallLimit);
        service->setLogger(fetchLog_);
        return service;
    };
    accountFetcherService_ = makeFetcherService();
    authentication_->setFetcherService(accountFetcherService_);
    service_ = std::make_shared<GTLServiceDrive>(endpoints, makeFetcherService());
    service_->setAuthorizer(authentication_);
    service_->ticketSettings().shouldFetchNextPages = true;
    service_->ticketSettings().retryEnabled = true;
    service_->settings().serviceUploadChunkSize = 100000;
}

QByteArray FaultBench::makeFile(const QByteArray& name, const QByteArray& content) {
    // Through the C library: the toolkit would mend a name that is not UTF-8.
    const QByteArray path = QFile::encodeName(folder_.path()) + '/' + name;
    std::FILE* file = std::fopen(path.constData(), "wb");
    if (!file)
        return {};
    const auto length = static_cast<size_t>(content.size());
    const bool isWritten = std::fwrite(content.constData(), 1, length, file) == length;
    return std::fclose(file) == 0 && isWritten ? path : QByteArray();
}

Result<UploadRun::Outcome> FaultBench::upload(const QByteArray& path, std::function<void(qint64)> meanwhile) {
    const auto source = SourceFile::open(path);
    if (!source)
        return source.error();
    UploadRun run(service_, time_, *source, {});
    QObject context;
    if (meanwhile)
        QObject::connect(&run, &UploadRun::progressed, &context, std::move(meanwhile));
    QObject::connect(&run, &UploadRun::troubled, &context,
                     [this](const Error& error) { noteText(error.description()); });
    std::optional<Result<UploadRun::Outcome>> outcome;
    run.start(&context, [&outcome](const Result<UploadRun::Outcome>& reported) { outcome.emplace(reported); });
    const auto ended = waitFor(outcome);
    if (!ended)
        noteText(ended.error().description());
    return ended;
}

Result<GTLObjectPtr> FaultBench::call(const std::shared_ptr<GTLQueryProtocol>& query) {
    QObject context;
    std::optional<Result<GTLObjectPtr>> outcome;
    service_->executeQuery(query, &context,
                           [&outcome](const GTLServiceTicketPtr&, const GTLObjectPtr& object, const MaybeError& error) {
                               outcome.emplace(error ? Result<GTLObjectPtr>(*error) : Result<GTLObjectPtr>(object));
                           });
    const auto ended = waitFor(outcome);
    if (!ended)
        noteText(ended.error().description());
    return ended;
}

MaybeError FaultBench::download(const QString& identifier, const QString& destination) {
    const auto file = GTLDriveFile::object();
    file->setIdentifier(identifier);
    const auto fetcher = service_->downloadFetcherForFile(*file, destination);
    fetcher->setRetryEnabled(true);
    QObject context;
    std::optional<Result<bool>> outcome;
    fetcher->beginFetchWithCompletionHandler(&context, [&outcome](const QByteArray&, const MaybeError& error) {
        outcome.emplace(error ? Result<bool>(*error) : Result<bool>(true));
    });
    const auto ended = waitFor(outcome);
    fetcher->stopFetching();
    if (ended)
        return std::nullopt;
    noteText(ended.error().description());
    return ended.error();
}

QStringList FaultBench::copiesOf(const QString& title) {
    drive_.clearFaults();
    const auto query = GTLQueryDrive::queryForFilesList();
    QString quoted = title;
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).replace(QLatin1Char('\''), QStringLiteral("\\'"));
    query->setQ(QStringLiteral("title = '") + quoted + QLatin1Char('\''));
    const auto reply = call(query);
    if (!reply)
        return {reply.error().description()};
    QStringList sums;
    for (const auto& file : *std::dynamic_pointer_cast<GTLDriveFileList>(*reply))
        sums.append(std::dynamic_pointer_cast<GTLDriveFile>(file)->md5Checksum());
    return sums;
}

qint64 FaultBench::duplicateBytes() {
    qint64 bytes = 0;
    for (const QJsonValue session : drive_.state().value(QLatin1String("uploads")).toArray())
        bytes += session[QLatin1String("duplicates")].toInteger();
    return bytes;
}

int FaultBench::requestCount(const QString& methodAndPath) {
    return drive_.state()[QLatin1String("requests")][methodAndPath].toInt();
}

QStringList FaultBench::leakedSecrets() {
    fetchLog_->flush();
    QHash<QString, QByteArray> written{{QStringLiteral("error texts"), texts_.toUtf8()},
                                       {QStringLiteral("the local Drive's log"), drive_.log()}};
    QDirIterator entries(folder_.filePath(QStringLiteral("log")), QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        QFile file(entries.next());
        if (file.open(QIODevice::ReadOnly))
            written.insert(file.fileName(), file.readAll());
    }
    const QStringList secrets = drive_.secrets();
    // A search of nothing, or for nothing, finds nothing.
    if (written.size() < 10 || secrets.size() < 3)
        return {QStringLiteral("nothing to search: %1 texts, %2 secrets").arg(written.size()).arg(secrets.size())};
    QStringList leaked;
    for (auto text = written.cbegin(); text != written.cend(); ++text) {
        for (const QString& secret : secrets) {
            if (text->contains(secret.toUtf8()))
                leaked.append(secret + QStringLiteral(" in ") + text.key());
        }
    }
    return leaked;
}

QByteArray sampleBytes(qsizetype length) {
    QRandomGenerator random(20260101);
    QByteArray bytes(length, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = static_cast<char>(random.bounded(256));
    return bytes;
}

QString md5Of(const QByteArray& bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
}

} // namespace quenby::testing
