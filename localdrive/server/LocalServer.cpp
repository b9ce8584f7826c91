#include "localdrive/server/LocalServer.h"

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/ControlEndpoint.h"
#include "localdrive/server/EndpointNote.h"
#include "localdrive/server/RequestLog.h"
#include "localdrive/server/RpcEndpoint.h"
#include "localdrive/server/activity/Activity.h"
#include "localdrive/server/docs/ArchiveEndpoint.h"
#include "localdrive/server/docs/DocumentCalls.h"
#include "localdrive/server/docs/DocumentPages.h"
#include "localdrive/server/docs/DownloadEndpoint.h"
#include "localdrive/server/docs/ExportEndpoint.h"
#include "localdrive/server/http/TlsContext.h"
#include "localdrive/server/oauth/SignInEndpoint.h"
#include "localdrive/server/rest/BatchEndpoint.h"
#include "localdrive/server/rest/RestEndpoint.h"
#include "localdrive/server/rest/RestUploadEndpoint.h"
#include "localdrive/server/share/ShareEndpoint.h"
#include "localdrive/server/upload/UploadEndpoint.h"
#include "localdrive/server/web/AccountPages.h"
#include "localdrive/server/web/FileEndpoint.h"
#include "localdrive/server/web/FilePage.h"
#include "localdrive/server/web/ListPages.h"
#include "localdrive/server/web/PageEndpoint.h"
#include "localdrive/server/web/WebCalls.h"

#include <QTimer>

#include <unistd.h>

namespace quenby::localdrive {
namespace {

class DriveFaultEffects final : public FaultEffects {
public:
    DriveFaultEffects(TokenStore& tokens, UploadSessions& uploads, ServerClock& clock)
        : tokens_(tokens)
        , uploads_(uploads)
        , clock_(clock) {}

    void loseUploadSession(const QByteArray& uploadId) override { uploads_.remove(uploadId); }
    QByteArray renameUploadSession(const QByteArray& uploadId) override { return uploads_.rename(uploadId); }
    void expireAccessTokens() override { warn(tokens_.expireAccessTokens()); }
    void revokeRefreshTokens() override { warn(tokens_.revokeEverything()); }
    void skewClock(std::chrono::seconds skew) override { clock_.skew(skew); }

private:
    static void warn(const Result<void>& done) {
        if (!done)
            qWarning("A fault could not be applied: %s", qUtf8Printable(done.error().description()));
    }

    TokenStore& tokens_;
    UploadSessions& uploads_;
    ServerClock& clock_;
};

// The port that the former run had, so that addresses which clients keep stay good.
quint16 wantedPort(const ServerOptions& options) {
    if (options.port)
        return *options.port;
    const auto note = EndpointNote::read(options.dataFolder);
    return note ? static_cast<quint16>(note->url.port()) : quint16{0};
}

Error portTaken(quint16 port) {
    return Error(
        errorDomain::posix, EADDRINUSE,
        {{errorKey::reason, QStringLiteral("Port %1 on 127.0.0.1 is taken. Choose another, or 0 for any.").arg(port)}});
}

StoreSettings storeSettings(const ServerOptions& options) {
    StoreSettings settings;
    settings.folder = options.dataFolder;
    if (options.quotaBytes)
        settings.quotaBytesTotal = *options.quotaBytes;
    return settings;
}

} // namespace

// In the order in which they are made; each uses only those above it.
struct LocalServer::Parts {
    ServerClock clock;
    std::unique_ptr<DriveStore> store;
    std::unique_ptr<TokenStore> tokens;
    std::unique_ptr<UploadSessions> uploads;
    std::shared_ptr<SSL_CTX> tls;
    QUrl url;
    Roads roads;
    FaultPlan faults;
    PageTemplates pages;
    FormGuard guard;

    std::unique_ptr<Statistics> statistics;
    std::unique_ptr<RpcMethods> methods;
    std::unique_ptr<DriveFaultEffects> effects;
    std::unique_ptr<HttpServer> http;
    std::unique_ptr<Authenticator> authenticator;
    std::unique_ptr<RpcEndpoint> rpcEndpoint;
    std::unique_ptr<UploadReceiver> uploadReceiver;
    std::unique_ptr<UploadEndpoint> uploadEndpoint;
    std::unique_ptr<RestUploadEndpoint> restUploadEndpoint;
    std::unique_ptr<SignInEndpoint> signInEndpoint;
    std::unique_ptr<TokenEndpoint> tokenEndpoint;
    std::unique_ptr<FileEndpoint> fileEndpoint;
    std::unique_ptr<RestEndpoint> restEndpoint;
    std::unique_ptr<BatchEndpoint> batchEndpoint;
    std::unique_ptr<PageGuard> pageGuard;
    std::unique_ptr<PageFrame> pageFrame;
    std::unique_ptr<PageEndpoint> pageEndpoint;
    std::unique_ptr<ListPages> listPages;
    std::unique_ptr<FilePage> filePage;
    std::unique_ptr<AccountPages> accountPages;
    std::unique_ptr<WebCalls> webCalls;
    std::unique_ptr<DocumentPages> documentPages;
    std::unique_ptr<DocumentCalls> documentCalls;
    std::unique_ptr<ExportEndpoint> exportEndpoint;
    std::unique_ptr<DownloadEndpoint> downloadEndpoint;
    std::unique_ptr<ArchiveEndpoint> archiveEndpoint;
    std::unique_ptr<ShareEndpoint> shareEndpoint;
    std::unique_ptr<ControlEndpoint> controlEndpoint;
    std::unique_ptr<Activity> activity;
    QTimer activityTimer; // on the thread that opened the server

    Result<void> openDrive(const ServerOptions& options);
    Result<void> bind(const ServerOptions& options);
    void addEndpoints(const ServerOptions& options, std::function<void()> shutdown);
    Result<void> addActivity(const ServerOptions& options);
};

Result<void> LocalServer::Parts::openDrive(const ServerOptions& options) {
    auto openedStore = DriveStore::open(storeSettings(options));
    if (!openedStore)
        return openedStore.error();
    store = std::move(*openedStore);
    auto openedTokens = TokenStore::open(store->database(), clock, options.tokenLifetime);
    if (!openedTokens)
        return openedTokens.error();
    tokens = std::move(*openedTokens);
    auto openedUploads = UploadSessions::open(store->database(), store->blobs(), clock);
    if (!openedUploads)
        return openedUploads.error();
    uploads = std::move(*openedUploads);
    roads.openRpc(!options.withoutRpc);
    store->offerChangeIds(!options.withoutChangeIds);
    return {};
}

Result<void> LocalServer::Parts::bind(const ServerOptions& options) {
    if (options.tls) {
        auto context = makeTlsContext(*options.tls);
        if (!context)
            return context.error();
        tls = *context;
    }
    statistics = std::make_unique<Statistics>(options.hasControl());
    effects = std::make_unique<DriveFaultEffects>(*tokens, *uploads, clock);
    const auto control =
        options.hasControl() ? std::optional(FaultControl{faults, *effects, *statistics, roads}) : std::nullopt;
    http = std::make_unique<HttpServer>(control, tls.get());

    const quint16 wanted = wantedPort(options);
    auto bound = http->bindLoopback(wanted);
    if (!bound && options.port)
        return portTaken(wanted);
    if (!bound)
        bound = http->bindLoopback(0);
    if (!bound)
        return portTaken(0);
    url.setScheme(tls ? QStringLiteral("https") : QStringLiteral("http"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(*bound);
    return {};
}

void LocalServer::Parts::addEndpoints(const ServerOptions& options, std::function<void()> shutdown) {
    const Account& owner = store->settings().account;
    methods = std::make_unique<RpcMethods>(*store);
    authenticator = std::make_unique<Authenticator>(*tokens, clock, url);
    rpcEndpoint = std::make_unique<RpcEndpoint>(*methods, *authenticator, roads, options.controlToken);
    uploadReceiver = std::make_unique<UploadReceiver>(*uploads, *methods, *authenticator, *statistics);
    uploadEndpoint = std::make_unique<UploadEndpoint>(*uploadReceiver, *rpcEndpoint, *authenticator);
    restUploadEndpoint =
        std::make_unique<RestUploadEndpoint>(*uploadReceiver, *methods, store->blobs(), *authenticator);
    signInEndpoint = std::make_unique<SignInEndpoint>(*tokens, pages, guard, owner, *statistics);
    tokenEndpoint = std::make_unique<TokenEndpoint>(
        *tokens, TokenEndpoint::Clients{options.clients, options.onlyClients}, clock, url, *statistics);
    fileEndpoint = std::make_unique<FileEndpoint>(*store, *authenticator);
    restEndpoint = std::make_unique<RestEndpoint>(*methods, *authenticator, *fileEndpoint);
    batchEndpoint = std::make_unique<BatchEndpoint>(*methods, *authenticator);
    pageGuard = std::make_unique<PageGuard>(*authenticator, store->pageTokenKey());
    pageFrame = std::make_unique<PageFrame>(*store, pages, *pageGuard);
    pageEndpoint = std::make_unique<PageEndpoint>(*tokens, pages, guard, owner);
    listPages = std::make_unique<ListPages>(*store, *pageFrame);
    filePage = std::make_unique<FilePage>(*store, *pageFrame);
    accountPages = std::make_unique<AccountPages>(*pageFrame);
    webCalls = std::make_unique<WebCalls>(*store, *methods, *pageGuard);
    documentPages = std::make_unique<DocumentPages>(*store, *methods, *pageGuard, *pageFrame);
    documentCalls = std::make_unique<DocumentCalls>(*store, *methods, *pageGuard);
    exportEndpoint = std::make_unique<ExportEndpoint>(*store, *authenticator);
    downloadEndpoint = std::make_unique<DownloadEndpoint>(*store, *authenticator, *pageGuard, *pageFrame);
    archiveEndpoint = std::make_unique<ArchiveEndpoint>(*store, *methods, *pageGuard, *pageFrame);
    shareEndpoint = std::make_unique<ShareEndpoint>(*methods, *tokens, *authenticator, pages, *statistics);

    rpcEndpoint->addRoutes(*http);
    uploadEndpoint->addRoutes(*http);
    restUploadEndpoint->addRoutes(*http);
    signInEndpoint->addRoutes(*http);
    tokenEndpoint->addRoutes(*http);
    fileEndpoint->addRoutes(*http);
    restEndpoint->addRoutes(*http);
    batchEndpoint->addRoutes(*http);
    pageEndpoint->addRoutes(*http);
    listPages->addRoutes(*http);
    filePage->addRoutes(*http);
    accountPages->addRoutes(*http);
    webCalls->addRoutes(*http);
    documentPages->addRoutes(*http);
    documentCalls->addRoutes(*http);
    exportEndpoint->addRoutes(*http);
    downloadEndpoint->addRoutes(*http);
    archiveEndpoint->addRoutes(*http);
    shareEndpoint->addRoutes(*http);
    if (options.hasControl()) {
        controlEndpoint = std::make_unique<ControlEndpoint>(
            options.controlToken, ControlEndpoint::Parts{faults, *statistics, *uploads, *tokens, roads, *store,
                                                         *tokenEndpoint, owner, std::move(shutdown)});
        controlEndpoint->addRoutes(*http);
    }
    if (!options.quiet)
        http->set_logger(logRequest);
}

Result<void> LocalServer::Parts::addActivity(const ServerOptions& options) {
    if (options.activityRate == 0)
        return {};
    activity = std::make_unique<Activity>(*store, clock, url, options.activitySeed);
    QObject::connect(&activityTimer, &QTimer::timeout, &activityTimer, [this, isTold = !options.quiet] {
        const QString event = activity->step();
        if (isTold && !event.isEmpty())
            logEvent(event);
    });
    activityTimer.start(std::chrono::milliseconds(std::chrono::minutes(1)) / options.activityRate);
    return activity->prepare();
}

Result<std::unique_ptr<LocalServer>> LocalServer::open(const ServerOptions& options, std::function<void()> shutdown) {
    auto parts = std::make_unique<Parts>();
    if (const auto opened = parts->openDrive(options); !opened)
        return opened.error();
    if (const auto bound = parts->bind(options); !bound)
        return bound.error();
    if (const auto noted = EndpointNote{parts->url, ::getpid()}.write(options.dataFolder); !noted)
        return noted.error();
    parts->addEndpoints(options, std::move(shutdown));
    if (const auto lively = parts->addActivity(options); !lively)
        return lively.error();
    return std::unique_ptr<LocalServer>(new LocalServer(std::move(parts)));
}

LocalServer::LocalServer(std::unique_ptr<Parts> parts)
    : parts_(std::move(parts)) {}

LocalServer::~LocalServer() = default;

const QUrl& LocalServer::url() const { return parts_->url; }

void LocalServer::serve() { parts_->http->serve(); }

void LocalServer::stop() { parts_->http->stopNow(); }

std::chrono::milliseconds LocalServer::idleTime() const { return parts_->http->idleTime(); }

} // namespace quenby::localdrive
