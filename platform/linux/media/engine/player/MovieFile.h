// A movie as a file, before the framework sees it. Threads: any.
#pragma once

#include <QByteArray>

namespace quenby {

// Whether the file begins like a QuickTime movie. Only those are opened: the framework would take a playlist that calls
// itself a movie for one, and fetch what it names from the network.
bool isQuickTimeMovie(const QByteArray& path);

} // namespace quenby
