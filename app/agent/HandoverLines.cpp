#include "app/agent/HandoverLines.h"

namespace quenby {
namespace {

constexpr QByteArrayView filePrefix = "file ";
constexpr QByteArrayView accountPrefix = "account "; // whose the uploads after it are
constexpr QByteArrayView uploadPrefix = "upload ";

} // namespace

Handover handoverFromWork(const PendingWork& work) {
    Handover handover;
    for (const QByteArray& path : work.files)
        handover.append(filePrefix.toByteArray() + path);
    for (const QString& account : work.uploads.accounts()) {
        handover.append(accountPrefix.toByteArray() + account.toUtf8());
        for (const QByteArray& line : work.uploads.of(account))
            handover.append(uploadPrefix.toByteArray() + line);
    }
    return handover;
}

PendingWork workFromHandover(const Handover& handover) {
    PendingWork work;
    QString account;
    for (const QByteArray& entry : handover) {
        if (entry.startsWith(filePrefix))
            work.files.append(entry.mid(filePrefix.size()));
        else if (entry.startsWith(accountPrefix))
            account = QString::fromUtf8(entry.mid(accountPrefix.size()));
        else if (entry.startsWith(uploadPrefix))
            work.uploads.hold(account, {entry.mid(uploadPrefix.size())});
    }
    return work;
}

} // namespace quenby
