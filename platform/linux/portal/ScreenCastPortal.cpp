#include "platform/linux/portal/ScreenCastPortal.h"

#include "platform/linux/desktop/BusCall.h"
#include "platform/linux/portal/PortalRequest.h"

#include <QDBusArgument>
#include <QDBusPendingReply>

#include <utility>

namespace quenby {
namespace {

const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

constexpr uint monitors = 1;             // of the types of sources
constexpr uint pointerInPicture = 2;     // of the modes of the pointer
constexpr uint untilRevoked = 2;         // how long a permission is kept
constexpr uint versionWithPointers = 2;  // of the interface
constexpr uint versionWithRestoring = 4; // of the interface

const PortalPurpose recording{QStringLiteral("org.freedesktop.portal.ScreenCast"),
                              QStringLiteral("The screen cannot be recorded")};

// Two numbers, "(ii)".
std::optional<QPoint> pairIn(const QVariant& value) {
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("(ii)"))
        return std::nullopt;
    int first = 0;
    int second = 0;
    argument.beginStructure();
    argument >> first >> second;
    argument.endStructure();
    return QPoint(first, second);
}

// The first of the streams; only one was asked for.
std::optional<ScreenCastStream> streamIn(const QVariant& streams) {
    if (streams.metaType() != QMetaType::fromType<QDBusArgument>())
        return std::nullopt;
    const auto argument = streams.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(ua{sv})"))
        return std::nullopt;
    // What is begun is ended, or the toolkit keeps it for ever.
    argument.beginArray();
    if (argument.atEnd()) {
        argument.endArray();
        return std::nullopt;
    }
    ScreenCastStream stream;
    QVariantMap properties;
    argument.beginStructure();
    argument >> stream.node >> properties;
    argument.endStructure();
    argument.endArray();
    const auto position = pairIn(properties.value(QStringLiteral("position")));
    const auto size = pairIn(properties.value(QStringLiteral("size")));
    if (position && size)
        stream.frame = QRect(*position, QSize(size->x(), size->y()));
    return stream;
}

} // namespace

ScreenCastPortal::ScreenCastPortal(const QDBusConnection& bus)
    : client_(bus, recording) {
    connect(&client_, &PortalClient::vanished, this, [this] { loseSession(client_.vanishedError()); });
}

ScreenCastPortal::~ScreenCastPortal() {
    // First the request under way, which must not outlive the client.
    const auto requests = findChildren<PortalRequest*>(QString(), Qt::FindDirectChildrenOnly);
    qDeleteAll(requests);
    closeSession();
}

void ScreenCastPortal::open(const QString& restoreToken, QObject* context, Opened opened) {
    Q_ASSERT(state_ == State::idle);
    state_ = State::opening;
    restoreToken_ = restoreToken;
    opened_ = CompletionGate<Outcome>(context, std::move(opened));
    client_.find([this](const MaybeError& trouble) {
        if (trouble)
            finish(*trouble);
        else
            createSession();
    });
}

void ScreenCastPortal::createSession() {
    const QString token = PortalRequest::newToken();
    // Where it can be closed before it is known.
    session_ = QDBusObjectPath(client_.expectedPath(QStringLiteral("session"), token));
    const QVariantMap options{{QStringLiteral("session_handle_token"), token}};
    ask(QStringLiteral("CreateSession"), {}, options, PortalRequest::patienceWithDesktop, [this](const Results& made) {
        // A text, although it is a path; some portals send a path.
        const QVariant handle = made.value(QStringLiteral("session_handle"));
        followSession(handle.metaType() == QMetaType::fromType<QDBusObjectPath>()
                          ? handle.value<QDBusObjectPath>().path()
                          : handle.toString());
        selectSources();
    });
}

void ScreenCastPortal::followSession(const QString& path) {
    session_ = QDBusObjectPath(path);
    QDBusConnection bus = client_.bus();
    bus.connect(client_.owner(), path, sessionInterface, QStringLiteral("Closed"), this, SLOT(takeSessionClosed()));
}

void ScreenCastPortal::selectSources() {
    QVariantMap options{{QStringLiteral("types"), monitors}, {QStringLiteral("multiple"), false}};
    if (client_.version() >= versionWithPointers &&
        (client_.number(QStringLiteral("AvailableCursorModes")) & pointerInPicture))
        options[QStringLiteral("cursor_mode")] = pointerInPicture;
    if (client_.version() >= versionWithRestoring) {
        options[QStringLiteral("persist_mode")] = untilRevoked;
        if (!restoreToken_.isEmpty())
            options[QStringLiteral("restore_token")] = restoreToken_;
    }
    restoreToken_.clear();
    ask(QStringLiteral("SelectSources"), {QVariant::fromValue(session_)}, options, PortalRequest::patienceWithDesktop,
        [this](const Results&) { start(); });
}

void ScreenCastPortal::start() {
    const QString noParentWindow;
    ask(QStringLiteral("Start"), {QVariant::fromValue(session_), noParentWindow}, {}, std::nullopt,
        [this](const Results& started) { openConnection(started); });
}

void ScreenCastPortal::openConnection(const Results& started) {
    const auto stream = streamIn(started.value(QStringLiteral("streams")));
    if (!stream)
        return finish(client_.refusedError(QStringLiteral("it started no stream")));
    restoreToken_ = started.value(QStringLiteral("restore_token")).toString();
    const QDBusMessage call =
        client_.callOf(QStringLiteral("OpenPipeWireRemote"), {QVariant::fromValue(session_), QVariantMap()});
    whenReplied(client_.bus().asyncCall(call), this,
                [this, stream = *stream](const QDBusPendingReply<QDBusUnixFileDescriptor>& reply) {
                    if (reply.isError())
                        return finish(withoutConnection(reply.error()));
                    finish(std::optional(ScreenCastStream{reply.value(), stream.node, stream.frame}));
                });
}

Error ScreenCastPortal::withoutConnection(const QDBusError& error) const {
    return client_.because(QStringLiteral("because PipeWire, which brings its pictures, cannot be reached. Install "
                                          "pipewire and wireplumber, and log in again."),
                           error.message());
}

void ScreenCastPortal::ask(const QString& method, const QVariantList& arguments, const QVariantMap& options,
                           std::optional<std::chrono::milliseconds> patience,
                           std::function<void(const Results&)> next) {
    auto* const request = new PortalRequest(&client_, this);
    request->send(method, arguments, options, patience,
                  [this, next = std::move(next)](const PortalRequest::Outcome& outcome) {
                      if (state_ != State::opening)
                          return;
                      if (!outcome)
                          finish(outcome.error());
                      else if (!outcome.value())
                          finish(std::optional<ScreenCastStream>());
                      else
                          next(*outcome.value());
                  });
}

void ScreenCastPortal::finish(const Outcome& outcome) {
    if (state_ != State::opening)
        return;
    const bool isOpen = outcome && outcome.value();
    state_ = isOpen ? State::open : State::ended;
    if (!isOpen)
        closeSession();
    opened_.deliver(outcome);
}

void ScreenCastPortal::takeSessionClosed() {
    loseSession(client_.refusedError(QStringLiteral("it ended the session")));
}

void ScreenCastPortal::loseSession(const Error& whileOpening) {
    session_ = {};
    if (state_ == State::opening) {
        finish(whileOpening);
    } else if (state_ == State::open) {
        state_ = State::ended;
        Q_EMIT closed();
    }
}

void ScreenCastPortal::closeSession() {
    if (!session_.path().isEmpty())
        client_.bus().send(client_.callOn(session_.path(), sessionInterface, QStringLiteral("Close")));
    session_ = {};
}

} // namespace quenby
