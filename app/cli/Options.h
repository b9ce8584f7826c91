// What the command line asks for. Arguments stay bytes until they are known to be text: a file's name need not be
// UTF-8, and must be opened by the very bytes that were given.
#pragma once

#include "core/Result.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <chrono>
#include <optional>

namespace quenby {

// Errors of wrong use; the reason says what was wrong, and the program ends with exitCode::wrongUse.
inline const QString commandLineErrorDomain = QStringLiteral("org.quenby.CommandLine");

namespace exitCode {
inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrongUse = 2;
inline constexpr int signalBase = 128; // a program ended by signal N answers 128 + N
} // namespace exitCode

// Without a verb, the desktop program is meant.
enum class Verb : unsigned { desktop = 1, signin = 2, about = 4, upload = 8, changes = 16, download = 32 };

struct Options {
    Verb verb = Verb::desktop;
    bool help = false;
    bool version = false;

    bool local = false;
    QByteArray localData; // the local Drive's data folder; empty: the usual one
    bool json = false;
    bool quiet = false;
    QByteArray httpLog; // the folder of the fetch log; empty: none is written

    QList<QByteArray> files;
    std::optional<QString> folder;
    quint64 chunkSize = 0; // bytes, 0: no chunking
    bool verify = true;
    std::chrono::milliseconds patience{std::chrono::minutes(10)};

    bool watch = false;
    std::optional<std::chrono::milliseconds> interval;

    QString fileId;
    QByteArray output;

    bool hidden = false;        // the desktop program starts without showing its window
    QByteArray statusItemPlace; // "tray" or "strip"; empty: as the settings say

    // The pause between two looks at the changes: as asked for, else $QUENBY_POLL_SECONDS, else 30 seconds.
    std::chrono::milliseconds pollInterval() const;
};

// The arguments without the program's name. A first operand that is no verb, but names a file (it holds a slash, is a
// file: address, or is there), is meant for the desktop program, whose files are absolute paths. Fails for an unknown
// verb or option, a missing or wrong value, and a missing or superfluous argument; --help and --version excuse whatever
// is missing.
Result<Options> parseOptions(const QList<QByteArray>& arguments);

// A number of seconds such as "30" or "0.5", above 0 and at most a day.
std::optional<std::chrono::milliseconds> secondsFromText(const QByteArray& text);

// The text of --help: of one verb, or, for the desktop program, of everything.
QString usageText(Verb verb);

} // namespace quenby
