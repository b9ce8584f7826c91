// Why the file of a journal cannot be used: errors of the domain posix, whose reasons are sentences for people. None
// holds anything of what is written in the file.
#pragma once

#include "core/Error.h"

#include <QByteArray>

class QSqlError;

namespace quenby {

// EACCES: may not be written or not be read; ENOSPC: the disk is full; EBUSY: held by another program all the time.
// Anything else is EIO.
Error journalTrouble(const QSqlError& error, const QByteArray& path);
// Of the file system; EACCES again for all that is forbidden.
Error journalTrouble(int errorNumber, const QByteArray& path);

// EBADMSG. The file holds nothing that can be relied on.
Error damagedJournal(const QByteArray& path);
bool isDamagedJournal(const Error& error);

// ENOTSUP. Another version of the program can read it.
Error laterJournal(const QByteArray& path);
bool isLaterJournal(const Error& error);

// The same trouble, with the name under which the file now lies.
Error putAsideJournal(const Error& trouble, const QByteArray& path);

// EBADMSG. The file is sound, but some of the uploads in it are not.
Error unreadableUploads(const QByteArray& path);

// EAGAIN. It could not be read at first, but holds something now.
Error unreadJournal(const QByteArray& path);

} // namespace quenby
