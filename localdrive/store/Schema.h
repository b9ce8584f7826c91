// The store's own tables, as the history that Database::migrate() takes.
//
// Dates are milliseconds since 1970 in UTC, sizes bytes, lists and objects that are only handed through JSON texts.
#pragma once

#include <QStringList>

namespace quenby::localdrive {

QStringList driveSchema();

} // namespace quenby::localdrive
