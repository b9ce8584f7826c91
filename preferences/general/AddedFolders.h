// The setting of the folders that the user added to those in which screenshots are looked for.
//
// Threads: the main thread.
#pragma once

#include <QByteArray>
#include <QList>

namespace quenby {

class Defaults;

// Absolute paths, each once, in the order in which they were added. What the setting holds besides is left out.
QList<QByteArray> addedFolders(const Defaults& defaults);
// An empty list removes the setting.
void setAddedFolders(Defaults& defaults, const QList<QByteArray>& folders);
// Settings are text, and a path need not be: whether this one comes back as it was.
bool canBeStored(const QByteArray& folder);

} // namespace quenby
