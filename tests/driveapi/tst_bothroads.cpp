// The same calls on both roads of a real Drive: what is asked and what comes back is the same.
#include "driveapi/GTLBatchQuery.h"
#include "driveapi/GTLBatchResult.h"
#include "driveapi/GTLDriveAbout.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveChannel.h"
#include "driveapi/GTLDriveComment.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLDrivePermission.h"
#include "driveapi/GTLDriveProperty.h"
#include "driveapi/GTLDriveReference.h"
#include "driveapi/GTLDriveRevision.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "driveapi/rest/RestMethods.h"
#include "tests/support/LocalDriveProcess.h"

#include <QSet>
#include <QTemporaryFile>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using Q = GTLQueryDrive;

namespace {

GTLUploadParameters media(const QByteArray& bytes, const QByteArray& type = "text/plain") {
    return GTLUploadParameters::uploadParametersWithData(bytes, type);
}

std::shared_ptr<GTLDriveFile> titled(const QString& title) {
    const auto file = GTLDriveFile::object();
    file->setTitle(title);
    return file;
}

// A client of the Drive that goes one road.
struct Client {
    Client(LocalDriveProcess& drive, APIRoad road)
        : service(Endpoints::localDrive(drive.url())) {
        service.settings().road = road;
        service.settings().additionalHTTPHeaders = {
            {u"Authorization"_s, u"Bearer "_s + QString::fromLatin1(drive.newAccessToken())}};
    }

    // What the caller is told: the result's class and members, or the error.
    GTLObjectPtr run(const std::shared_ptr<GTLQuery>& query) {
        asked.insert(query->methodName());
        GTLObjectPtr object;
        MaybeError error;
        service.waitForTicket(service.executeQuery(query), std::chrono::seconds(20), &object, &error);
        QString told = query->methodName() + u": "_s;
        if (error) {
            const auto structured = GTLErrorObject::underlyingObjectForError(*error);
            told += error->domain() + u' ' + QString::number(error->code());
            if (structured && structured->data())
                told += u' ' + structured->data()->at(0)->reason() + u' ' + structured->message() +
                        structured->data()->at(0)->JSONValueForKey("locationType").toString();
        } else if (object) {
            QStringList keys = object->JSON()->keys();
            keys.sort();
            told += object->objectClass().nameString() + u' ' + keys.join(u' ');
        }
        story.append(told);
        return object;
    }
    template <typename T>
    std::shared_ptr<T> run(const std::shared_ptr<GTLQuery>& query) {
        const auto object = std::dynamic_pointer_cast<T>(run(query));
        return object ? object : T::object();
    }

    GTLServiceDrive service;
    QStringList story;
    QSet<QString> asked;
};

void liveWithFiles(Client& client) {
    const auto folder = GTLDriveFile::object();
    folder->setTitle(u"Folder"_s);
    folder->setMimeType(u"application/vnd.google-apps.folder"_s);
    const QString folderId = client.run<GTLDriveFile>(Q::queryForFilesInsertWithObject(folder))->identifier();
    const auto file =
        client.run<GTLDriveFile>(Q::queryForFilesInsertWithObject(titled(u"é + & # ?"_s), media("content")));
    const QString id = file->identifier();
    client.story.append(file->title() + QString::number(file->fileSize()));
    client.run(Q::queryForFilesPatchWithObject(titled(u"patched"_s), id));
    client.run(Q::queryForFilesUpdateWithObject(titled(u"updated"_s), id, media("new content")));
    client.run(Q::queryForFilesUpdateWithObject(file, id)); // with the tag of what it was
    const auto get = Q::queryForFilesGetWithFileId(id);
    get->setFields(u"id,title,labels(trashed)"_s);
    client.run(get);
    client.run(Q::queryForFilesCopyWithObject(titled(u"copy"_s), id));
    client.run(Q::queryForFilesTouchWithFileId(id));
    client.run(Q::queryForFilesTrashWithFileId(id));
    client.run(Q::queryForFilesUntrashWithFileId(id));
    const auto list = Q::queryForFilesList();
    list->setQ(u"title contains 'updated' and trashed = false"_s);
    list->setMaxResults(5);
    client.story.append(QString::number(client.run<GTLDriveFileList>(list)->items()->count()));

    const auto child = GTLDriveChildReference::object();
    child->setIdentifier(id);
    client.run(Q::queryForChildrenInsertWithObject(child, folderId));
    client.run(Q::queryForChildrenListWithFolderId(folderId));
    client.run(Q::queryForChildrenGetWithFolderId(folderId, id));
    client.run(Q::queryForChildrenDeleteWithFolderId(folderId, id));
    const auto parent = GTLDriveParentReference::object();
    parent->setIdentifier(folderId);
    client.run(Q::queryForParentsInsertWithObject(parent, id));
    client.run(Q::queryForParentsListWithFileId(id));
    client.run(Q::queryForParentsGetWithFileId(id, folderId));
    client.run(Q::queryForParentsDeleteWithFileId(id, folderId));

    client.run(Q::queryForRealtimeUpdateWithFileId(id, media(R"({"a":1})", "application/json")));
    client.run(Q::queryForRealtimeGetWithFileId(id));
    const auto revisions = client.run<GTLDriveRevisionList>(Q::queryForRevisionsListWithFileId(id));
    const auto revision = revisions->items() ? revisions->items()->at(0) : GTLDriveRevision::object();
    const auto pinned = GTLDriveRevision::object();
    pinned->setPinned(true);
    client.run(Q::queryForRevisionsGetWithFileId(id, revision->identifier()));
    client.run(Q::queryForRevisionsPatchWithObject(pinned, id, revision->identifier()));
    client.run(Q::queryForRevisionsUpdateWithObject(pinned, id, revision->identifier()));
    client.run(Q::queryForRevisionsDeleteWithFileId(id, revision->identifier()));

    client.run(Q::queryForFilesDeleteWithFileId(id));
    client.run(Q::queryForFilesGetWithFileId(u"nobody"_s));
    client.run(Q::queryForFilesGetWithFileId(QString()));
    client.run(Q::queryForFilesDeleteWithFileId(folderId));
    client.run(Q::queryForFilesEmptyTrash());
    client.story.append(
        QString::number(client.run<GTLDriveGeneratedIds>(Q::queryForFilesGenerateIds())->ids()->count()));
    client.run(Q::queryWithMethodName(u"drive.files.fold"_s));
}

void liveWithWhatFilesHave(Client& client) {
    const QString id =
        client.run<GTLDriveFile>(Q::queryForFilesInsertWithObject(titled(u"shared"_s), media("x")))->identifier();
    const auto permission = GTLDrivePermission::object();
    permission->setType(u"user"_s);
    permission->setRole(u"reader"_s);
    permission->setValue(u"somebody@example.com"_s);
    const auto writer = GTLDrivePermission::object();
    writer->setRole(u"writer"_s);
    const auto insertion = Q::queryForPermissionsInsertWithObject(permission, id);
    insertion->setSendNotificationEmails(false);
    const QString permissionId = client.run<GTLDrivePermission>(insertion)->identifier();
    client.run(Q::queryForPermissionsListWithFileId(id));
    client.run(Q::queryForPermissionsGetWithFileId(id, permissionId));
    client.run(Q::queryForPermissionsPatchWithObject(writer, id, permissionId));
    client.run(Q::queryForPermissionsUpdateWithObject(writer, id, permissionId));
    client.run(Q::queryForPermissionsGetIdForEmailWithEmail(u"some+body@example.com"_s));
    client.run(Q::queryForPermissionsDeleteWithFileId(id, permissionId));

    const QString key = u"a/b c%\n"_s;
    const auto property = GTLDriveProperty::object();
    property->setKey(key);
    property->setValue(u"1"_s);
    client.run(Q::queryForPropertiesInsertWithObject(property, id));
    client.run(Q::queryForPropertiesListWithFileId(id));
    client.run(Q::queryForPropertiesGetWithFileId(id, key));
    client.run(Q::queryForPropertiesPatchWithObject(property, id, key));
    client.run(Q::queryForPropertiesUpdateWithObject(property, id, key));
    client.run(Q::queryForPropertiesDeleteWithFileId(id, key));

    const auto comment = GTLDriveComment::object();
    comment->setContent(u"well"_s);
    const auto reply = GTLDriveCommentReply::object();
    reply->setContent(u"indeed"_s);
    const QString commentId =
        client.run<GTLDriveComment>(Q::queryForCommentsInsertWithObject(comment, id))->commentId();
    client.run(Q::queryForCommentsListWithFileId(id));
    client.run(Q::queryForCommentsGetWithFileId(id, commentId));
    client.run(Q::queryForCommentsPatchWithObject(comment, id, commentId));
    client.run(Q::queryForCommentsUpdateWithObject(comment, id, commentId));
    const QString replyId =
        client.run<GTLDriveCommentReply>(Q::queryForRepliesInsertWithObject(reply, id, commentId))->replyId();
    client.run(Q::queryForRepliesListWithFileId(id, commentId));
    client.run(Q::queryForRepliesGetWithFileId(id, commentId, replyId));
    client.run(Q::queryForRepliesPatchWithObject(reply, id, commentId, replyId));
    client.run(Q::queryForRepliesUpdateWithObject(reply, id, commentId, replyId));
    client.run(Q::queryForRepliesDeleteWithFileId(id, commentId, replyId));
    client.run(Q::queryForCommentsDeleteWithFileId(id, commentId));
}

void liveWithTheAccount(Client& client) {
    const auto about = client.run<GTLDriveAbout>(Q::queryForAboutGet());
    client.story.append(QString::number(about->quotaBytesTotal()) + u' ' + about->quotaType());
    client.run(Q::queryForAppsList());
    client.run(Q::queryForAppsGetWithAppId(u"nobody"_s));
    client.run(Q::queryForChangesGetStartPageToken());
    const auto list = Q::queryForChangesList();
    list->setIncludeDeleted(true);
    list->setMaxResults(2);
    const auto changes = client.run<GTLDriveChangeList>(list);
    const auto next = Q::queryForChangesList();
    next->setPageToken(changes->nextPageToken());
    next->setMaxResults(3);
    client.run(next);
    client.run(Q::queryForChangesGetWithChangeId(QString::number(changes->items()->at(0)->identifier())));
    const auto channel = GTLDriveChannel::object();
    channel->setIdentifier(u"channel"_s);
    channel->setType(u"web_hook"_s);
    channel->setAddress(u"https://example.com/hook"_s);
    client.run(Q::queryForChangesWatchWithObject(channel));
    client.run(Q::queryForFilesWatchWithObject(channel, u"nobody"_s));
    client.run(Q::queryForChannelsStopWithObject(channel));
}

} // namespace

class TestBothRoads : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyMethodMeansTheSame() {
        QList<QStringList> stories;
        for (const APIRoad road : {APIRoad::rpc, APIRoad::rest}) {
            LocalDriveProcess drive({u"--with-rpc"_s});
            QVERIFY2(drive.start(), drive.log());
            Client client(drive, road);
            liveWithFiles(client);
            liveWithWhatFilesHave(client);
            liveWithTheAccount(client);
            QCOMPARE(client.asked.size(), static_cast<qsizetype>(restMethods().size()) + 1); // and the one that is none
            stories.append(client.story);
            QCOMPARE(client.service.settings().road, road);
        }
        for (qsizetype i = 0; i < std::min(stories[0].size(), stories[1].size()); ++i)
            QCOMPARE(stories[1][i], stories[0][i]);
        QCOMPARE(stories[1].size(), stories[0].size());
    }

    // A batch of more calls than one request takes, on a Drive that has lost the first road, pages included.
    void sendsBatches() {
        LocalDriveProcess drive({u"--without-rpc"_s});
        QVERIFY2(drive.start(), drive.log());
        Client client(drive, APIRoad::rpc);
        client.service.ticketSettings().shouldFetchNextPages = true;
        const auto insertions = GTLBatchQuery::batchQuery();
        for (int i = 0; i < 120; ++i)
            insertions->addQuery(Q::queryForFilesInsertWithObject(titled(u"file %1"_s.arg(i))));
        const auto result = runBatch(client, insertions);
        QCOMPARE(client.service.settings().road, APIRoad::rest);
        QCOMPARE(result->successes().size(), 120u);
        QVERIFY(result->failures().empty());

        const auto list = Q::queryForFilesList();
        list->setMaxResults(50);
        const auto unknown = Q::queryForFilesGetWithFileId(u"nobody"_s);
        const auto trash = Q::queryForFilesEmptyTrash();
        const auto mixed = runBatch(client, GTLBatchQuery::batchQueryWithQueries({list, unknown, trash}));
        const auto files = std::dynamic_pointer_cast<GTLDriveFileList>(mixed->successes().at(list->requestID()));
        QVERIFY(files && files->items()->count() >= 120);
        QCOMPARE(mixed->failures().at(unknown->requestID())->data()->at(0)->reason(), u"notFound"_s);
        QVERIFY(!mixed->successes().at(trash->requestID()));
    }

    // Announced on the first road, interrupted, and resumed by a client that knows only the second.
    void resumesAcrossTheRoads() {
        LocalDriveProcess drive({u"--with-rpc"_s});
        QVERIFY2(drive.start(), drive.log());
        QTemporaryFile source;
        const QByteArray bytes(700000, 'x');
        QVERIFY(source.open() && source.write(bytes) == bytes.size() && source.flush());
        auto parameters =
            GTLUploadParameters::uploadParametersWithFileURL(QUrl::fromLocalFile(source.fileName()), "text/plain");
        {
            Client client(drive, APIRoad::rpc);
            client.service.settings().serviceUploadChunkSize = 262144;
            const auto ticket =
                client.service.executeQuery(Q::queryForFilesInsertWithObject(titled(u"resumed"_s), parameters));
            ticket->setUploadLocationChangeBlock(
                [&](const auto&, const QUrl& location) { parameters.uploadLocationURL = location; });
            ticket->setUploadProgressBlock([](const GTLServiceTicketPtr& running, qint64 sent, qint64) {
                if (sent > 300000)
                    running->cancelTicket();
            });
            QTRY_VERIFY_WITH_TIMEOUT(ticket->isCancelled(), 20000);
        }
        QVERIFY(!parameters.uploadLocationURL.isEmpty());
        Client client(drive, APIRoad::rest);
        const auto file = client.run<GTLDriveFile>(Q::queryForFilesInsertWithObject(titled(u"resumed"_s), parameters));
        QCOMPARE(file->fileSize(), bytes.size());
    }

private:
    static std::shared_ptr<GTLBatchResult> runBatch(Client& client, const std::shared_ptr<GTLBatchQuery>& batch) {
        GTLObjectPtr object;
        MaybeError error;
        client.service.waitForTicket(client.service.executeQuery(batch), std::chrono::seconds(30), &object, &error);
        if (error)
            qWarning("%s", qUtf8Printable(error->description()));
        const auto result = std::dynamic_pointer_cast<GTLBatchResult>(object);
        return result ? result : GTLBatchResult::object();
    }
};

QTEST_GUILESS_MAIN(TestBothRoads)
#include "tst_bothroads.moc"
