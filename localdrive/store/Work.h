// One call on its way through the store: a session, who calls, and the contents that come and go with it.
//
// Threads: as Session.
#pragma once

#include "localdrive/store/Account.h"
#include "localdrive/store/DriveStore.h"
#include "localdrive/store/IncomingBlob.h"
#include "localdrive/store/Session.h"

#include <QHash>
#include <QJsonObject>
#include <QStringList>

namespace quenby::localdrive {

class Work {
public:
    Work(DriveStore& store, const Caller& caller, Session::Kind kind);
    // Without a commit() nothing happened: contents that were adopted are parts again.
    ~Work();
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    DriveStore& store() { return store_; }
    Session& session() { return session_; }
    const Caller& caller() const { return caller_; }
    qint64 now() const { return caller_.now.toMSecsSinceEpoch(); }

    // Takes a content into the store and returns its id.
    Result<QString> adopt(const StagedBlob& staged);
    // A new content of no bytes.
    Result<QString> adoptEmpty();
    // Drops a content unless a revision still names it.
    void release(const QString& blobId);

    // "drive#user" for somebody who once called.
    QJsonObject user(const QString& emailAddress);

    Result<void> commit();

private:
    DriveStore& store_;
    const Caller& caller_;
    QStringList adopted_;     // deleted when the work fails
    QStringList released_;    // deleted when it succeeds
    QList<StagedBlob> parts_; // of what was adopted; deleted when it succeeds
    QHash<QString, QString> names_;
    Session session_;
};

} // namespace quenby::localdrive
