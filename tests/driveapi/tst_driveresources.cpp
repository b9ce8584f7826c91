// The Drive resources: kinds, keys as the service sends them, and replies that are not what they should be.
#include "driveapi/GTLDriveAbout.h"
#include "driveapi/GTLDriveApp.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveChannel.h"
#include "driveapi/GTLDriveComment.h"
#include "driveapi/GTLDriveKinds.h"
#include "driveapi/GTLDriveRevision.h"
#include "driveapi/GTLJSONParser.h"

#include <QTest>

#include <set>

using namespace quenby;
using namespace Qt::StringLiterals;

namespace {

// Single quotes stand for double ones: moc loses its way in a raw string with a "#" in it.
template <typename T>
std::shared_ptr<T> object(QByteArray text) {
    const auto json = GTLJSONParser::objectWithData(text.replace('\'', '"')).valueOr(JSONValue());
    return std::dynamic_pointer_cast<T>(GTLObject::objectForJSON(json, &T::classDescriptor()));
}

// Every key that the service may send in a file, with a value of its type.
const QByteArray wholeFile =
    "{'kind':'drive#file','id':'f','etag':'e','title':'t','mimeType':'image/png',"
    "'labels':{'hidden':false,'restricted':false,'starred':true,'trashed':true,'viewed':false},"
    "'parents':[{'kind':'drive#parentReference','id':'root','isRoot':true,'parentLink':'p','selfLink':'s'}],"
    "'createdDate':'2014-07-01T10:20:30.500Z','modifiedDate':'2014-07-02T10:20:30.500Z',"
    "'modifiedByMeDate':'2014-07-03T10:20:30.500Z','lastViewedByMeDate':'2014-07-04T10:20:30.500Z',"
    "'markedViewedByMeDate':'2014-07-05T10:20:30.500Z','sharedWithMeDate':'2014-07-06T10:20:30.500Z',"
    "'alternateLink':'al','defaultOpenWithLink':'dl','downloadUrl':'du','embedLink':'el','iconLink':'il','selfLink':'"
    "sl',"
    "'thumbnailLink':'tl','webContentLink':'wc','webViewLink':'wv','description':'d','fileExtension':'png',"
    "'originalFilename':'o','md5Checksum':'m','headRevisionId':'h','resourceKey':'k','lastModifyingUserName':'l','"
    "fileSize':'"
    "9007199254740993',"
    "'quotaBytesUsed':'12','version':13,'appDataContents':true,'copyable':true,'editable':true,'explicitlyTrashed':"
    "true,"
    "'shared':true,'writersCanShare':true,'exportLinks':{'text/plain':'x'},'openWithLinks':{'app':'y'},"
    "'imageMediaMetadata':{'width':3,'height':4,'location':{'latitude':52.5}},'videoMediaMetadata':{'durationMillis':'"
    "99'},"
    "'indexableText':{'text':'i'},'thumbnail':{'image':'aGk','mimeType':'image/png'},"
    "'lastModifyingUser':{'kind':'drive#user','displayName':'Ada'},'sharingUser':{'displayName':'Bo'},"
    "'owners':[{'displayName':'Cy','picture':{'url':'u'}}],'ownerNames':['Cy'],'permissions':[{'id':'pe','withLink':"
    "true}],"
    "'properties':[{'key':'k','value':'v'}],'userPermission':{'role':'owner','additionalRoles':['commenter']}}";

// Reads every property; what matters is that it comes back.
void readEverything(const GTLDriveFile& file) {
    const auto read = [](const auto&... values) { return sizeof...(values); };
    read(file.identifier(), file.title(), file.mimeType(), file.labels(), file.parents(), file.createdDate().date(),
         file.modifiedDate().date(), file.modifiedByMeDate().date(), file.lastViewedByMeDate().date(),
         file.markedViewedByMeDate().date(), file.sharedWithMeDate().date(), file.alternateLink(),
         file.defaultOpenWithLink(), file.downloadUrl(), file.embedLink(), file.iconLink(), file.selfLink(),
         file.thumbnailLink(), file.webContentLink(), file.webViewLink(), file.descriptionProperty(), file.ETag(),
         file.fileExtension(), file.originalFilename(), file.md5Checksum(), file.headRevisionId(),
         file.lastModifyingUserName(), file.fileSize(), file.quotaBytesUsed(), file.version(), file.appDataContents(),
         file.copyable(), file.editable(), file.explicitlyTrashed(), file.shared(), file.writersCanShare(),
         file.exportLinks(), file.openWithLinks(), file.imageMediaMetadata(), file.videoMediaMetadata(),
         file.indexableText(), file.thumbnail(), file.lastModifyingUser(), file.sharingUser(), file.owners(),
         file.ownerNames(), file.permissions(), file.properties(), file.userPermission(), file.kind());
    if (const auto parents = file.parents()) {
        for (const auto& parent : *parents)
            read(parent->identifier(), parent->isRoot());
    }
    if (const auto names = file.ownerNames()) {
        for (const QString& name : *names)
            read(name);
    }
}

} // namespace

class TestDriveResources : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyKindHasItsOwnClass() {
        std::set<const GTLClass*> classes;
        for (const GTLDriveKind& entry : gtlDriveKinds()) {
            const GTLClass* const registered = GTLObject::registeredObjectClassForKind(QString::fromLatin1(entry.kind));
            QCOMPARE(registered, &entry.objectClass());
            // "drive#fileList" is a GTLDriveFileList.
            const QString name = QString::fromLatin1(entry.kind).section('#'_L1, 1);
            QCOMPARE(registered->nameString().toLower(), QString(u"gtldrive"_s + name.toLower()));
            const auto made = object<GTLObject>("{\"kind\":\"" + QByteArray(entry.kind) + "\"}");
            QCOMPARE(&made->objectClass(), registered);
            QVERIFY(made->additionalJSONKeys().isEmpty()); // all of them declare "kind"
            classes.insert(registered);
        }
        QCOMPARE(classes.size(), std::size_t(26));
    }

    void listsDeclareTheirItems_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("itemClass");
        QTest::addColumn<QString>("undeclared"); // of what most lists have
        const auto row = [](const char* kind, const char* itemClass, const char* undeclared) {
            QTest::newRow(kind) << QString::fromLatin1(kind) << QString::fromLatin1(itemClass)
                                << QString::fromLatin1(undeclared);
        };
        const char* const comesWhole = "nextPageToken nextLink";
        row("drive#appList", "GTLDriveApp", comesWhole);
        row("drive#changeList", "GTLDriveChange", "");
        row("drive#childList", "GTLDriveChildReference", "");
        row("drive#commentList", "GTLDriveComment", "etag");
        row("drive#commentReplyList", "GTLDriveCommentReply", "etag");
        row("drive#fileList", "GTLDriveFile", "");
        row("drive#parentList", "GTLDriveParentReference", comesWhole);
        row("drive#permissionList", "GTLDrivePermission", comesWhole);
        row("drive#propertyList", "GTLDriveProperty", comesWhole);
        row("drive#revisionList", "GTLDriveRevision", comesWhole);
    }
    void listsDeclareTheirItems() {
        QFETCH(QString, kind);
        const auto list = object<GTLCollectionObject>("{'kind':'" + kind.toLatin1() +
                                                      "','items':[{'x':1}],'nextPageToken':'n','nextLink':'l',"
                                                      "'selfLink':'s','etag':'e'}");
        QVERIFY(list);
        QTEST(list->itemAtIndex(0)->objectClass().nameString(), "itemClass");
        QTEST(list->additionalJSONKeys().join(' '_L1), "undeclared");
    }

    void aWholeFile() {
        const auto file = object<GTLDriveFile>(wholeFile);
        QVERIFY(file);
        QCOMPARE(file->additionalJSONKeys(), QStringList());                                   // every key is declared
        QCOMPARE(file->objectClass().properties().size(), std::size_t(file->JSON()->count())); // and none misspelt
        QCOMPARE(file->identifier(), u"f"_s);
        QCOMPARE(file->ETag(), u"e"_s);
        QCOMPARE(file->descriptionProperty(), u"d"_s);
        QVERIFY(file->labels()->trashed() && file->labels()->starred() && !file->labels()->viewed());
        QVERIFY(file->parents()->at(0)->isRoot());
        QCOMPARE(file->modifiedDate().stringValue(), u"2014-07-02T10:20:30.500Z"_s);
        QCOMPARE(file->fileSize(), 9007199254740993); // no double holds it
        QCOMPARE(file->version(), 13);
        QCOMPARE(file->exportLinks()->JSONValueForKey("text/plain").toString(), u"x"_s);
        QCOMPARE(file->exportLinks()->additionalJSONKeys(), QStringList{u"text/plain"_s});
        QCOMPARE(file->imageMediaMetadata()->location()->latitude(), 52.5);
        QCOMPARE(file->videoMediaMetadata()->durationMillis(), 99);
        QCOMPARE(file->owners()->at(0)->picture()->url(), u"u"_s);
        QCOMPARE(file->ownerNames()->at(0), u"Cy"_s);
        QCOMPARE(file->userPermission()->additionalRoles()->at(0), u"commenter"_s);
        QVERIFY(file->permissions()->at(0)->withLink());
        QCOMPARE(file->properties()->at(0)->value(), u"v"_s);
        readEverything(*file);
    }

    void wrongTypesForEveryProperty_data() {
        QTest::addColumn<QByteArray>("value");
        for (const char* value :
             {"null", "true", "-1", "1e300", "18446744073709551615", "\"\"", "\"9999999999999999999999\"",
              "\"2014-07-01T\"", "[]", "{}", "[[[]]]", "[null,1,\"x\",{\"kind\":\"drive#about\"},[{}]]",
              "{\"kind\":\"drive#changeList\",\"items\":7}", "{\"kind\":\"api#channel\",\"id\":{}}"})
            QTest::newRow(value) << QByteArray(value);
    }
    void wrongTypesForEveryProperty() {
        QFETCH(QByteArray, value);
        const JSONValue wrong = GTLJSONParser::objectWithData("[" + value + "]")->array()->at(0);
        const auto file = object<GTLDriveFile>(wholeFile);
        for (const GTLProperty& property : GTLDriveFile::classDescriptor().properties()) {
            file->setJSONValue(wrong.deepCopy(), property.jsonKey);
            readEverything(*file);
        }
        // The raw values are still to be had, and the object can be copied, described and sent.
        QVERIFY(file->JSONValueForKey("title") == wrong);
        QVERIFY(file->copy()->isEqual(*file));
        QVERIFY(!file->description().isEmpty());
        QVERIFY(GTLJSONParser::objectWithString(file->JSONString()).ok());
    }

    void changes() {
        const auto list =
            object<GTLDriveChangeList>("{'kind':'drive#changeList','largestChangeId':'4711','items':["
                                       "{'kind':'drive#change','id':'4710','fileId':'a','deleted':true,'"
                                       "modificationDate':'2014-07-01T10:20:30.500Z'},"
                                       "{'kind':'drive#change','id':'4711','fileId':'f','deleted':false,'file':" +
                                       wholeFile + "}]}");
        QCOMPARE(list->largestChangeId(), 4711);
        QCOMPARE(list->items()->count(), 2);
        const auto deletion = list->items()->at(0);
        QVERIFY(deletion->deleted() && !deletion->file());
        QCOMPARE(*deletion->modificationDate().millisecondsSinceEpoch(), 1404210030500);
        QCOMPARE(list->items()->at(1)->file()->labels()->trashed(), true);
        QCOMPARE(list->itemForIdentifier(u"4711"_s), list->itemAtIndex(1));
    }

    void about() {
        const auto about = object<GTLDriveAbout>(
            "{'kind':'drive#about','user':{'displayName':'Ada','emailAddress':'a@b'},"
            "'quotaBytesTotal':'16106127360','quotaBytesByService':[{'serviceName':'DRIVE','bytesUsed':'7'},"
            "{'serviceName':'PHOTOS','bytesUsed':5}],'rootFolderId':'0A','exportFormats':[{'source':'s','targets':['t']"
            "}],"
            "'additionalRoleInfo':[{'type':'*','roleSets':[{'primaryRole':'reader','additionalRoles':['commenter']}]}]"
            "}");
        QVERIFY(about->additionalJSONKeys().isEmpty());
        qint64 used = 0;
        for (const auto& service : *about->quotaBytesByService())
            used += service->bytesUsed();
        QCOMPARE(used, 12);
        QCOMPARE(about->quotaBytesTotal(), 16106127360);
        QCOMPARE(about->user()->emailAddress(), u"a@b"_s);
        QCOMPARE(about->exportFormats()->at(0)->targets()->at(0), u"t"_s);
        QCOMPARE(about->additionalRoleInfo()->at(0)->roleSets()->at(0)->primaryRole(), u"reader"_s);
    }

    void aNewFile() {
        const auto parent = GTLDriveParentReference::object();
        parent->setIdentifier(u"root"_s);
        const auto file = GTLDriveFile::object();
        file->setTitle(u"Screen Cast"_s);
        file->setMimeType(u"application/vnd.google-apps.folder"_s);
        file->setParents(GTLArray<GTLDriveParentReference>::make({parent}));
        QCOMPARE(
            GTLJSONParser::dataWithObject(file->JSON()),
            QByteArray(
                R"({"title":"Screen Cast","mimeType":"application/vnd.google-apps.folder","parents":[{"id":"root"}]})"));
    }
};

QTEST_GUILESS_MAIN(TestDriveResources)
#include "tst_driveresources.moc"
