// The program's plug-ins: parts that are loaded when they are first needed, because they would cost memory and time in
// every session that never needs them. Threads: the main thread.
#pragma once

#include "core/Result.h"

#include <QObject>
#include <QString>
#include <QStringList>

namespace quenby {

// Where they lie: beside the program as it was built, or where it was installed.
QStringList moduleFolders();

Error moduleError(const QString& reason);
// For what has to be done before a module is loaded.
bool isModuleThere(const QStringList& folders, const QString& name);
// The object that the first "NAME.so" in one of the folders offers, loaded if need be; it belongs to the plug-in. The
// error's reason is what was in the way, as half a sentence.
Result<QObject*> moduleInstance(const QStringList& folders, const QString& name);
// The same, seen as what it is expected to be.
template <typename Module>
Result<Module*> loadModule(const QStringList& folders, const QString& name) {
    const auto instance = moduleInstance(folders, name);
    if (!instance)
        return instance.error();
    if (auto* const module = qobject_cast<Module*>(*instance))
        return module;
    return moduleError(QStringLiteral("%1.so is of another version than the program").arg(name));
}

} // namespace quenby
