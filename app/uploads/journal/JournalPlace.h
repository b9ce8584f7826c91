// Where a journal lies: a file for the user alone, in a folder for the user alone.
#pragma once

#include <QByteArray>

namespace quenby {

// Makes what is missing, the folder with mode 0700 and an empty file with mode 0600, and takes everybody else's
// permissions from a file that is there. False: errno tells why there is none, or none that may be written.
bool makeJournalPlace(const QByteArray& path);

// Gives the file, with what its database needs beside it, a name that says what it is ("damaged") and when it was
// given. The new path; empty when that failed, and errno tells why.
QByteArray putJournalAside(const QByteArray& path, const QByteArray& word);

} // namespace quenby
