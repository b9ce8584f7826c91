// The report's sections on the account and the way to its server. Threads: the main thread; nothing is asked.
#pragma once

#include "app/diagnostics/DiagnosticsReport.h"

namespace quenby {

class AccountDetails;
class AccountSession;
class Defaults;
class DriveConnection;
class GTLDriveAbout;
class TimeSource;
struct CredentialFacts;
struct ServerMoment;

DiagnosticsSection accountSection(const AccountSession& session, const DriveConnection& drive);
DiagnosticsSection quotaSection(const GTLDriveAbout* about);
DiagnosticsSection clockSection(const AccountDetails& details, const TimeSource& time);
DiagnosticsSection networkSection(const Defaults& defaults);

// "in 12 minutes", "for 3 minutes": how far from now the token's end is.
QString expiryText(const CredentialFacts& facts, const QDateTime& now);
// By how much this computer's clock differs from the server's.
QString clockDifferenceText(const ServerMoment& moment, const TimeSource& time);

} // namespace quenby
