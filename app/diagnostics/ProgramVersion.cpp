// The one file that is compiled again after each commit.
#include "app/diagnostics/ProgramVersion.h"

#include "BuildIdentity.h"

namespace quenby {

QString programVersion() { return QStringLiteral(QUENBY_VERSION); }

QString programBuild() { return QStringLiteral(QUENBY_BUILD); }

QString programCopyright() { return QStringLiteral("Copyright © 2026 the authors of Quenby"); }

} // namespace quenby
