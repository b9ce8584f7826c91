// The folders that this desktop's tools save screenshots in: the pictures folder and "Screenshots" in it, the desktop,
// the home folder, and what the tools' own settings name. Threads: the main thread; small settings files are read.
#pragma once

#include <QByteArray>
#include <QList>

namespace quenby {

// Absolute and clean, each once; they need not be there.
QList<QByteArray> screenshotFolders();

} // namespace quenby
