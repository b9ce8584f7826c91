#include "app/uploads/journal/JournalTrouble.h"

#include "app/cli/DisplayText.h"

#include <QCoreApplication>
#include <QSqlError>

#include <cerrno>

namespace quenby {
namespace {

// The result codes of SQLite that a program can do something about; their lowest byte.
enum class SQLiteCode : int {
    permission = 3,
    busy = 5,
    locked = 6,
    readOnly = 8,
    corrupt = 11,
    full = 13,
    cannotOpen = 14,
    notADatabase = 26,
};

QString tr(const char* text) { return QCoreApplication::translate("quenby::UploadJournal", text); }

Error trouble(int code, const QString& sentence, const QByteArray& path) {
    return Error(errorDomain::posix, code, {{errorKey::reason, sentence.arg(printablePath(path))}});
}

Error forbidden(const QByteArray& path) {
    return trouble(EACCES,
                   tr("The list of waiting uploads can't be kept: “%1” may not be written. Uploads go on, but are "
                      "forgotten when the program ends. Make the file and its folder writable."),
                   path);
}

Error full(const QByteArray& path) {
    return trouble(ENOSPC,
                   tr("The list of waiting uploads can't be kept: the disk of “%1” is full. Uploads go on, but are "
                      "forgotten when the program ends. Make room on it."),
                   path);
}

Error failed(const QByteArray& path, const QString& number) {
    return trouble(EIO,
                   tr("The list of waiting uploads can't be kept: the disk of “%1” fails (error %2). Uploads go on, "
                      "but are forgotten when the program ends. Check the disk.")
                       .arg(QStringLiteral("%1"), number),
                   path);
}

} // namespace

Error journalTrouble(const QSqlError& error, const QByteArray& path) {
    const QString number = error.nativeErrorCode(); // with the finer distinctions above the lowest byte
    switch (static_cast<SQLiteCode>(number.toInt() & 0xff)) {
    case SQLiteCode::permission:
    case SQLiteCode::readOnly:
    case SQLiteCode::cannotOpen:
        return forbidden(path);
    case SQLiteCode::busy:
    case SQLiteCode::locked:
        return trouble(EBUSY,
                       tr("The list of waiting uploads can't be kept: another program holds “%1”. Uploads go on, but "
                          "are forgotten when the program ends. Close that program."),
                       path);
    case SQLiteCode::full:
        return full(path);
    case SQLiteCode::corrupt:
    case SQLiteCode::notADatabase:
        return damagedJournal(path);
    }
    return failed(path, number);
}

Error journalTrouble(int errorNumber, const QByteArray& path) {
    switch (errorNumber) {
    case ENOSPC:
    case EDQUOT:
        return full(path);
    case EIO:
        return failed(path, QString::number(errorNumber));
    default:
        return forbidden(path);
    }
}

Error damagedJournal(const QByteArray& path) {
    return trouble(EBADMSG, tr("The list of waiting uploads, “%1”, is damaged."), path);
}

bool isDamagedJournal(const Error& error) { return error.is(errorDomain::posix, EBADMSG); }

Error laterJournal(const QByteArray& path) {
    return trouble(ENOTSUP, tr("The list of waiting uploads, “%1”, was written by a later version of the program."),
                   path);
}

bool isLaterJournal(const Error& error) { return error.is(errorDomain::posix, ENOTSUP); }

Error putAsideJournal(const Error& error, const QByteArray& path) {
    const QString sentence =
        isLaterJournal(error)
            ? tr("The list of waiting uploads was written by a later version of the program. It was put aside as “%1”, "
                 "and a new one begun: start that version to go on with those uploads.")
            : tr("The list of waiting uploads was damaged. It was put aside as “%1”, and a new one begun: upload again "
                 "what is missing in your Drive.");
    return trouble(static_cast<int>(error.code()), sentence, path);
}

Error unreadableUploads(const QByteArray& path) {
    return trouble(
        EBADMSG,
        tr("Some of the waiting uploads in “%1” can't be read, and are left as they are. Upload again what is "
           "missing in your Drive. When no upload waits any more, quit the program and delete that list."),
        path);
}

Error unreadJournal(const QByteArray& path) {
    return trouble(EAGAIN,
                   tr("The list of waiting uploads, “%1”, could not be read when the program began, and is left as it "
                      "is. Quit the program and start it again to go on with those uploads."),
                   path);
}

} // namespace quenby
