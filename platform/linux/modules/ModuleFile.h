// The program's plug-ins: parts that are loaded when they are first needed, because they would cost memory and time in
// every session that never needs them. Threads: any.
#pragma once

#include <QString>
#include <QStringList>

namespace quenby {

// Where they lie: beside the program as it was built, or where it was installed.
QStringList moduleFolders();
// The first "NAME.so" in one of the folders; empty when there is none.
QString moduleFile(const QStringList& folders, const QString& name);

} // namespace quenby
