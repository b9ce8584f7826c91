// A Drive in a temporary folder, called as its HTTP side calls it.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/store/DriveStore.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace quenby::localdrive {

inline const QUrl testBase{QStringLiteral("http://127.0.0.1:4711")};

// Names of parameters.
inline const QString fileId = QStringLiteral("fileId");
inline const QString body = QStringLiteral("resource");

inline QJsonObject parse(const char* json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        qFatal("not JSON: %s", json);
    return document.object();
}

// The parameters of a call that changes something of a file.
inline QJsonObject onFile(const QString& id, const char* resource) { return {{fileId, id}, {body, parse(resource)}}; }

class LocalDrive {
public:
    explicit LocalDrive(qint64 quota = qint64{1} << 30)
        : quota_(quota) {
        reopen();
    }

    DriveStore& store() { return *store_; }
    QString folder() const { return folder_.path(); }

    // As after a restart.
    void reopen() {
        store_.reset();
        Result<std::unique_ptr<DriveStore>> opened = DriveStore::open({folder_.path(), Account::standard(), quota_});
        if (!opened)
            qFatal("%s", qPrintable(opened.error().description()));
        store_ = *std::move(opened);
    }

    CallContext context() {
        CallContext context;
        context.user = user;
        context.base = testBase;
        now = now.addMSecs(1001);
        context.now = now;
        return context;
    }

    QJsonObject call(const QString& method, const QJsonObject& params = {}) {
        return RpcMethods(*store_).call(QStringLiteral("drive.") + method, params, context());
    }
    // The result of a call that must succeed.
    QJsonObject result(const QString& method, const QJsonObject& params = {}) {
        const QJsonObject reply = call(method, params);
        if (!reply.contains(QLatin1String("result")))
            QTest::qFail(qPrintable(method + QStringLiteral(": ") + reasonOf(reply)), __FILE__, __LINE__);
        return reply.value(QLatin1String("result")).toObject();
    }
    // The API's word for why a call failed; empty when it succeeded.
    QString refusal(const QString& method, const QJsonObject& params = {}) { return reasonOf(call(method, params)); }
    static QString reasonOf(const QJsonObject& reply) {
        return reply[QLatin1String("error")][QLatin1String("data")][0][QLatin1String("reason")].toString();
    }

    StagedBlob stage(const QByteArray& content) {
        const Result<std::unique_ptr<IncomingBlob>> part =
            store_->blobs().incoming(QStringLiteral("part%1").arg(++parts_));
        if (!part || !part.value()->append(0, content))
            qFatal("no part file");
        return part.value()->finish().value();
    }
    QJsonObject callWithMedia(const QString& method, const QJsonObject& params, const QByteArray& content,
                              const QString& type = QStringLiteral("text/plain")) {
        CallContext call = context();
        call.media = stage(content);
        call.mediaType = type;
        return RpcMethods(*store_).call(QStringLiteral("drive.") + method, params, call);
    }

    // Both return the new file's id.
    QString upload(const QString& title, const QByteArray& content, const QString& parent = QStringLiteral("root")) {
        return callWithMedia(QStringLiteral("files.insert"), {{QStringLiteral("resource"), metadata(title, parent)}},
                             content)[QLatin1String("result")][QLatin1String("id")]
            .toString();
    }
    QString makeFolder(const QString& title, const QString& parent = QStringLiteral("root")) {
        QJsonObject resource = metadata(title, parent);
        resource.insert(QStringLiteral("mimeType"), QStringLiteral("application/vnd.google-apps.folder"));
        return result(QStringLiteral("files.insert"), {{QStringLiteral("resource"), resource}})
            .value(QLatin1String("id"))
            .toString();
    }
    QJsonObject file(const QString& id) {
        return result(QStringLiteral("files.get"), {{QStringLiteral("fileId"), id}});
    }
    qint64 largestChangeId() {
        return result(QStringLiteral("about.get"))[QLatin1String("largestChangeId")].toString().toLongLong();
    }

    Account user = Account::standard();
    QDateTime now{QDate(2014, 7, 1), QTime(10, 20, 30, 500), Qt::UTC};

private:
    static QJsonObject metadata(const QString& title, const QString& parent) {
        return {{QStringLiteral("title"), title},
                {QStringLiteral("parents"), QJsonArray{QJsonObject{{QStringLiteral("id"), parent}}}}};
    }

    const qint64 quota_;
    QTemporaryDir folder_;
    std::unique_ptr<DriveStore> store_;
    int parts_ = 0;
};

// The values under one key of a list's items.
inline QStringList column(const QJsonObject& list, const char* key = "id") {
    QStringList values;
    for (const QJsonValue item : list[QLatin1String("items")].toArray())
        values.append(item[QLatin1String(key)].toString());
    return values;
}

} // namespace quenby::localdrive
