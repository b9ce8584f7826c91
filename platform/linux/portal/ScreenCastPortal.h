// Asks the desktop for the contents of the screen as a stream: org.freedesktop.portal.ScreenCast.
//
// Threads: the main thread; nothing here blocks. The stream ends when this object is destroyed.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"
#include "platform/linux/portal/PortalClient.h"

#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QRect>

#include <functional>
#include <optional>

namespace quenby {

struct ScreenCastStream {
    QDBusUnixFileDescriptor connection; // to PipeWire; open as long as a copy of this lives
    quint32 node = 0;
    QRect frame; // points: where the desktop says that the screen lies; empty when it does not say
};

class ScreenCastPortal : public QObject {
    Q_OBJECT

public:
    // Nothing when the user declined. The error's reason says what is missing and what to do.
    using Opened = std::function<void(const Result<std::optional<ScreenCastStream>>& stream)>;

    explicit ScreenCastPortal(const QDBusConnection& bus = QDBusConnection::sessionBus());
    ~ScreenCastPortal() override;

    // Once. Lets the user choose a screen, unless the token of an earlier time makes that unnecessary.
    void open(const QString& restoreToken, QObject* context, Opened opened);
    // For the next time; empty when the desktop gave none. A token is good for one time.
    QString restoreToken() const { return restoreToken_; }

Q_SIGNALS:
    // The desktop ended it. Only after it was opened.
    void closed();

private Q_SLOTS:
    void takeSessionClosed();

private:
    using Outcome = Result<std::optional<ScreenCastStream>>;
    using Results = QVariantMap;

    // The steps of opening, one after the other.
    void createSession();
    void selectSources();
    void start();
    void openConnection(const Results& started);
    void finish(const Outcome& outcome);
    Error withoutConnection(const QDBusError& error) const;

    // Asks, and goes on with the next step unless the user declined or something failed.
    void ask(const QString& method, const QVariantList& arguments, const QVariantMap& options,
             std::optional<std::chrono::milliseconds> patience, std::function<void(const Results&)> next);
    void followSession(const QString& path);
    // The session is gone without our doing.
    void loseSession(const Error& whileOpening);
    void closeSession();

    PortalClient client_;
    CompletionGate<Outcome> opened_;
    enum class State { idle, opening, open, ended } state_ = State::idle;
    QDBusObjectPath session_; // empty when there is none to close
    QString restoreToken_;
};

} // namespace quenby
