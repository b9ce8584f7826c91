// Queries, batches and batch results, without a service.
#include "driveapi/GTLBatchQuery.h"
#include "driveapi/GTLBatchResult.h"
#include "driveapi/GTLDriveChannel.h"
#include "driveapi/GTLDriveComment.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLDrivePermission.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/GTLQueryDrive.h"

#include <QTest>

#include <thread>

using namespace quenby;

namespace {

QString text(const char* latin) { return QString::fromLatin1(latin); }

QByteArray parametersOf(const GTLQuery& query) { return GTLJSONParser::dataWithObject(query.JSON()); }

} // namespace

Q_DECLARE_METATYPE(std::shared_ptr<quenby::GTLQueryDrive>)

class TestQuery : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void numbersRequests() {
        const auto first = GTLQuery::queryWithMethodName(text("a"));
        const auto second = GTLQuery::queryWithMethodName(text("a"));
        QVERIFY(first->requestID().startsWith(text("gtl_")));
        QCOMPARE(second->requestID().mid(4).toULongLong(), first->requestID().mid(4).toULongLong() + 1);

        constexpr int perThread = 5000;
        std::vector<QStringList> taken(4);
        std::vector<std::thread> threads;
        for (QStringList& ids : taken) {
            threads.emplace_back([&ids] {
                for (int i = 0; i < perThread; ++i)
                    ids.append(GTLQuery::nextRequestID());
            });
        }
        QSet<QString> distinct;
        for (size_t i = 0; i < threads.size(); ++i) {
            threads[i].join();
            distinct += QSet<QString>(taken[i].begin(), taken[i].end());
        }
        QCOMPARE(distinct.size(), 4 * perThread);
    }

    void refusesEmptyMethodNames() {
        QVERIFY(!GTLQuery::queryWithMethodName(QString()));
        QVERIFY(!GTLQueryDrive::queryWithMethodName(text("")));
    }

    void keepsParametersUnderTheirWireNames() {
        const auto query = GTLQueryDrive::queryForChangesList();
        query->setIncludeDeleted(false);
        query->setStartChangeId(9007199254740993); // beyond what a double holds
        query->setSetModifiedDate(true);
        query->setCustomParameter(text("x"), text("undeclared"));
        QCOMPARE(
            parametersOf(*query),
            QByteArray(
                R"({"includeDeleted":false,"startChangeId":9007199254740993,"setModifiedDate":true,"undeclared":"x"})"));
        QCOMPARE(query->startChangeId(), 9007199254740993);

        query->setCustomParameter(JSONValue(), text("undeclared"));
        query->setPageToken(text("t"));
        query->setPageToken(QString());
        QCOMPARE(query->JSON()->count(), 3);
        QVERIFY(query->hasParameterNamed("pageToken"));
        QVERIFY(!query->hasParameterNamed("startIndex"));
    }

    void copiesParametersAndSharesTheRest() {
        const auto query = GTLQueryDrive::queryForFilesInsertWithObject(
            GTLDriveFile::object(), GTLUploadParameters::uploadParametersWithData("media", "text/plain"));
        query->setFields(text("id"));
        query->setUrlQueryParameters({{text("a"), text("b")}});
        query->setAdditionalHTTPHeaders({{text("H"), text("v")}});
        query->setShouldSkipAuthorization(true);
        int calls = 0;
        query->setCompletionBlock([&calls](const auto&...) { ++calls; });

        const auto copy = query->copy();
        QVERIFY(std::dynamic_pointer_cast<GTLQueryDrive>(copy));
        QCOMPARE(copy->requestID(), query->requestID());
        QCOMPARE(copy->methodName(), query->methodName());
        QCOMPARE(copy->bodyObject(), query->bodyObject());
        QCOMPARE(copy->uploadParameters()->data(), "media");
        QCOMPARE(copy->urlQueryParameters(), query->urlQueryParameters());
        QCOMPARE(copy->additionalHTTPHeaders(), query->additionalHTTPHeaders());
        QCOMPARE(copy->expectedObjectClass(), &GTLDriveFile::classDescriptor());
        QVERIFY(copy->shouldSkipAuthorization());
        copy->completionBlock()(nullptr, nullptr, std::nullopt);
        QCOMPARE(calls, 1);

        copy->setCustomParameter(text("title"), text("fields"));
        QCOMPARE(query->fields(), text("id"));
    }

    void dropsBlocksWhenExecutionStops() {
        const auto held = std::make_shared<int>();
        const auto member = GTLQueryDrive::queryForFilesList();
        member->setCompletionBlock([held](const auto&...) {});
        member->setTestBlock([held](const auto&...) {});
        const auto batch = GTLBatchQuery::batchQueryWithQueries({member});
        batch->setTestBlock([held](const auto&...) {});
        batch->executionDidStop();
        QCOMPARE(held.use_count(), 1);
    }

    void findsBatchMembers() {
        const auto first = GTLQueryDrive::queryForFilesList();
        const auto second = GTLQueryDrive::queryForAboutGet();
        const auto batch = GTLBatchQuery::batchQueryWithQueries({first, nullptr});
        QVERIFY(!batch->queryForRequestID(second->requestID()));
        batch->addQuery(second); // after the look-up table was built
        batch->addQuery(nullptr);
        QCOMPARE(batch->queryForRequestID(second->requestID()), second);
        QCOMPARE(batch->queries().size(), 2u);

        const auto copy = batch->copy();
        QVERIFY(copy->queries().front() != first);
        QCOMPARE(copy->queries().front()->requestID(), first->requestID());
    }

    void describesItself() {
        auto upload = GTLUploadParameters::uploadParametersWithData("12345", "text/plain");
        upload.uploadLocationURL = QUrl(text("https://host/upload/session?upload_id=very-secret"));
        const auto query = GTLQueryDrive::queryForFilesUpdateWithObject(GTLDriveFile::object(), text("F"), upload);
        query->setFields(text("id"));
        query->setUrlQueryParameters({{text("b"), text("1")}, {text("a"), text("2")}});
        const QString described = query->description();
        QVERIFY2(described.contains(text("{method:drive.files.update params:(fields,fileId) bodyObject:GTLDriveFile "
                                         "urlQParams:(a,b) upload: {MIMEType:text/plain bytes:5 resuming}}")),
                 qPrintable(described));
        QVERIFY(!described.contains(text("secret")));

        const auto batch = GTLBatchQuery::batchQueryWithQueries({query, GTLQueryDrive::queryForFilesList(), query});
        QVERIFY2(batch->description().endsWith(text("(queries:3 methods:drive.files.update,drive.files.list)")),
                 qPrintable(batch->description()));
    }

    void constructsDriveCalls_data() {
        QTest::addColumn<std::shared_ptr<GTLQueryDrive>>("query");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QByteArray>("parameters");
        QTest::addColumn<QByteArray>("expectedClass");
        QTest::addColumn<bool>("hasBody");

        const auto row = [](const std::shared_ptr<GTLQueryDrive>& query, const char* method, const char* parameters,
                            const char* expectedClass, bool hasBody = false) {
            QTest::newRow(method) << query << text(method) << QByteArray(parameters) << QByteArray(expectedClass)
                                  << hasBody;
        };
        const QString f = text("f"), c = text("c"), r = text("r");
        row(GTLQueryDrive::queryForAboutGet(), "drive.about.get", "{}", "GTLDriveAbout");
        row(GTLQueryDrive::queryForChangesList(), "drive.changes.list", "{}", "GTLDriveChangeList");
        row(GTLQueryDrive::queryForFilesList(), "drive.files.list", "{}", "GTLDriveFileList");
        row(GTLQueryDrive::queryForFilesGetWithFileId(f), "drive.files.get", R"({"fileId":"f"})", "GTLDriveFile");
        row(GTLQueryDrive::queryForFilesInsertWithObject(GTLDriveFile::object()), "drive.files.insert", "{}",
            "GTLDriveFile", true);
        row(GTLQueryDrive::queryForChildrenListWithFolderId(f), "drive.children.list", R"({"folderId":"f"})",
            "GTLDriveChildList");
        row(GTLQueryDrive::queryForFilesDeleteWithFileId(f), "drive.files.delete", R"({"fileId":"f"})", "");
        row(GTLQueryDrive::queryForPermissionsGetIdForEmailWithEmail(text("a@b")), "drive.permissions.getIdForEmail",
            R"({"email":"a@b"})", "GTLDrivePermissionId");
        row(GTLQueryDrive::queryForPermissionsInsertWithObject(GTLDrivePermission::object(), f),
            "drive.permissions.insert", R"({"fileId":"f"})", "GTLDrivePermission", true);
        row(GTLQueryDrive::queryForRepliesUpdateWithObject(GTLDriveCommentReply::object(), f, c, r),
            "drive.replies.update", R"({"fileId":"f","commentId":"c","replyId":"r"})", "GTLDriveCommentReply", true);
        row(GTLQueryDrive::queryForPropertiesGetWithFileId(f, text("k")), "drive.properties.get",
            R"({"fileId":"f","propertyKey":"k"})", "GTLDriveProperty");
        row(GTLQueryDrive::queryForChannelsStopWithObject(GTLDriveChannel::object()), "drive.channels.stop", "{}", "",
            true);
    }
    void constructsDriveCalls() {
        QFETCH(std::shared_ptr<GTLQueryDrive>, query);
        QTEST(query->methodName(), "method");
        QTEST(parametersOf(*query), "parameters");
        const GTLClass* expected = query->expectedObjectClass();
        QTEST(QByteArray(expected ? expected->name() : ""), "expectedClass");
        QTEST(query->bodyObject() != nullptr, "hasBody");
        QVERIFY(!query->uploadParameters());
    }

    void needsABodyWhereTheMethodDoes() {
        QVERIFY(!GTLQueryDrive::queryForFilesInsertWithObject(nullptr));
        QVERIFY(!GTLQueryDrive::queryForPermissionsPatchWithObject(nullptr, text("f"), text("p")));
        const auto realtime = GTLQueryDrive::queryForRealtimeUpdateWithFileId(
            text("f"), GTLUploadParameters::uploadParametersWithData("{}", "application/json"));
        QVERIFY(realtime->uploadParameters());
    }

    void sortsBatchReplies() {
        const auto json = GTLJSONParser::objectWithData(
            "[{\"id\":\"gtl_3\",\"result\":{\"kind\":\"drive#fileList\",\"items\":[]}},"
            R"({"id":"gtl_1","error":{"code":404,"message":"File not found"}},)"
            R"({"id":"gtl_2","result":{}}, {"id":"gtl_4"}, {"result":{"without":"id"}}, "no reply", null])");
        QVERIFY(json.ok());
        const GTLBatchClassMap classes{{text("gtl_2"), &GTLDriveFile::classDescriptor()},
                                       {text("gtl_3"), &GTLDriveFile::classDescriptor()}};
        const auto result = std::dynamic_pointer_cast<GTLBatchResult>(
            GTLObject::objectForJSON(*json, &GTLBatchResult::classDescriptor(), {}, classes));
        QVERIFY(result);
        QCOMPARE(result->failures().size(), 1u);
        QCOMPARE(result->failures().at(text("gtl_1"))->code(), 404);
        QCOMPARE(result->successes().size(), 3u);
        QVERIFY(std::dynamic_pointer_cast<GTLDriveFile>(result->successes().at(text("gtl_2"))));
        QVERIFY(std::dynamic_pointer_cast<GTLDriveFileList>(result->successes().at(text("gtl_3")))); // its kind decides
        QVERIFY(!result->successes().at(text("gtl_4")));
        QVERIFY(result->description().endsWith(text("(successes:3 failures:1)")));

        const auto copy = gtlCopy(result);
        QVERIFY(copy->isEqual(*result) && result->isEqual(*copy));
        copy->failures().at(text("gtl_1"))->setCode(500);
        QCOMPARE(result->failures().at(text("gtl_1"))->code(), 404);
        QVERIFY(!copy->isEqual(*result));
        QVERIFY(!GTLBatchResult::object()->isEqual(*result));
    }
};

QTEST_GUILESS_MAIN(TestQuery)
#include "tst_query.moc"
