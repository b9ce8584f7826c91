// One shortcut at the desktop's portal, in a session of its own: a session's keys are bound once and for all, so that
// other keys need another one.
//
// Threads: the main thread; nothing here blocks.
#pragma once

#include "core/Error.h"
#include "platform/GlobalShortcuts.h"
#include "platform/linux/portal/PortalClient.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace quenby {

class PortalRequest;

class PortalShortcutSession final : public QObject {
    Q_OBJECT

public:
    enum class Outcome { bound, declined, failed };
    using Opened = std::function<void(Outcome outcome, const MaybeError& trouble)>;

    PortalShortcutSession(const QDBusConnection& bus, GlobalShortcut shortcut, QObject* parent);
    ~PortalShortcutSession() override;

    // Once. Never calls back from inside of the call, nor after close().
    void open(Opened opened);
    // At once, and silently; what the desktop shows for it goes.
    void close();

    // The portal's process; empty before it was found.
    const QString& owner() const { return client_.owner(); }
    // In the desktop's words; empty before it was bound, or when it does not say.
    const QString& keys() const { return keys_; }

Q_SIGNALS:
    void activated();
    void keysChanged();
    // The shortcut was bound, and is no longer. Nothing comes after it.
    void lost(const quenby::Error& error);

private Q_SLOTS:
    void takeActivated(const QDBusMessage& signal);
    void takeDeactivated(const QDBusMessage& signal);
    void takeShortcutsChanged(const QDBusMessage& signal);
    void takeSessionClosed();

private:
    enum class State { opening, bound, ended };
    using Results = QVariantMap;

    // The steps of opening, one after the other.
    void createSession();
    void followSession(const QString& path);
    void bindShortcut();
    void listShortcuts();
    // Whether the shortcut is among these, and if so, with which keys.
    bool adopt(const QVariant& shortcuts);
    void finish(Outcome outcome, const MaybeError& trouble);

    using Answered = std::function<void(const std::optional<Results>& results, const MaybeError& trouble)>;
    void ask(const QString& method, const QVariantList& arguments, const QVariantMap& options,
             std::optional<std::chrono::milliseconds> patience, Answered answered);
    // The same, and opening fails when it does.
    void require(const QString& method, const QVariantList& arguments, const QVariantMap& options,
                 std::optional<std::chrono::milliseconds> patience, std::function<void(const Results&)> next);
    // The session is gone without our doing.
    void lose(const Error& error);
    bool isOurs(const QDBusMessage& signal, bool namesShortcut) const;
    Error notAllowedError() const;

    PortalClient client_;
    const GlobalShortcut shortcut_;
    Opened opened_;
    State state_ = State::opening;
    PortalRequest* request_ = nullptr; // under way
    QDBusObjectPath session_;          // empty when there is none to close
    QString keys_;
    bool isHeld_ = false;
    qulonglong lastActivation_ = 0; // milliseconds, on a clock of the desktop's; 0: it does not say
};

} // namespace quenby
