// Looks around for the report: tray, portals, keyring, clock, token, quota, versions.
//
// Threads: the main thread; nothing blocks. What it is given outlives it.
#pragma once

#include "app/diagnostics/DiagnosticsReport.h"
#include "core/CompletionGate.h"

#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class AccountDetails;
class AccountSession;
class DriveConnection;
struct PlatformServices;

class Diagnostics {
public:
    struct Sources {
        PlatformServices& platform;
        DriveConnection& drive;
        AccountSession& session;
        AccountDetails& details;
        QString version; // of the program, with its build
        QDBusConnection sessionBus = QDBusConnection::sessionBus();
    };

    explicit Diagnostics(const Sources& sources);
    ~Diagnostics();

    using Collected = std::function<void(const QString& text)>;
    // Within a few seconds, whatever does not answer: it is in the report that it did not.
    CompletionTicket collect(QObject* context, Collected collected);

private:
    QString report(const QList<DiagnosticsSection>& bus) const;
    PersonalWords personalWords() const;

    const Sources sources_;
    QObject questions_; // those under way are its children
};

} // namespace quenby
