// The rules by which a poll's answer changes the store: each in a row of a table, and all of them over thousands of
// random histories of a Drive.

#include "app/changes/ChangeStore.h"

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <map>

using namespace quenby;
using namespace Qt::StringLiterals;

namespace {

using Status = ChangeRecord::Status;

const QString folderType = u"application/vnd.google-apps.folder"_s;

// Seconds since the poll before.
QDateTime at(int seconds) { return QDateTime(QDate(2026, 3, 1), QTime(12, 0), Qt::UTC).addSecs(seconds); }

// "f1@20 c15 m18": file f1 changed at 20, created at 15, its contents modified at 18. T: trashed, F: a folder, X: gone
// for good, "@": without a date.
FeedChange changeFrom(const QString& text) {
    FeedChange change;
    FeedChange::File file;
    const QStringList words = text.split(u' ');
    const QStringList head = words.at(0).split(u'@');
    change.fileId = head.at(0);
    if (!head.at(1).isEmpty())
        change.modificationDate = at(head.at(1).toInt());
    file.identifier = change.fileId;
    file.title = change.fileId.toUpper();
    file.iconLink = u"icon"_s;
    for (const QString& word : words.mid(1)) {
        if (word.startsWith(u'c'))
            file.createdDate = at(word.mid(1).toInt());
        if (word.startsWith(u'm'))
            file.modifiedDate = at(word.mid(1).toInt());
        if (word == u"F"_s)
            file.mimeType = folderType;
        file.isTrashed = file.isTrashed || word == u"T"_s;
    }
    if (!words.contains(u"X"_s))
        change.file = file;
    return change;
}

// "A f1@20, -f2@-5, D*3@7": added, without a status, three deletions.
ChangeRecord recordFrom(const QString& text) {
    ChangeRecord record;
    const QStringList parts = text.mid(1).split(u'@');
    if (text.at(0) != u'-')
        record.status = static_cast<Status>(text.at(0).toLatin1());
    if (text.at(1) == u'*') {
        record.count = parts.at(0).mid(1).toInt();
    } else {
        record.identifier = parts.at(0).trimmed();
        record.title = record.identifier.toUpper();
        record.share = u"share:"_s + record.identifier;
    }
    record.modifiedDate = parts.at(1).isEmpty() ? QDateTime() : at(parts.at(1).toInt());
    return record;
}

QString textOf(const ChangeRecord& record) {
    const QString date = record.modifiedDate.isValid() ? QString::number(at(0).secsTo(record.modifiedDate)) : QString();
    const QString subject = record.isDeletionSummary() ? u"*"_s + QString::number(record.count) : record.identifier;
    return QChar::fromLatin1(record.status ? static_cast<char>(*record.status) : '-') + subject + u'@' + date;
}

template <typename Make>
auto listFrom(const QString& text, Make make) {
    QList<decltype(make(text))> list;
    for (const QString& part : text.split(u", "_s, Qt::SkipEmptyParts))
        list.append(make(part));
    return list;
}

QString listText(const QList<ChangeRecord>& records) {
    QStringList texts;
    std::transform(records.begin(), records.end(), std::back_inserter(texts), textOf);
    return texts.join(u", "_s);
}

QSet<QString> setFrom(const QString& text) {
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    return {words.begin(), words.end()};
}

QStringList textsOf(const QList<ChangeNotice>& notices) {
    QStringList texts;
    std::transform(notices.begin(), notices.end(), std::back_inserter(texts), std::mem_fn(&ChangeNotice::text));
    return texts;
}

ChangeStore polledStore(const QString& records = {}, const QString& trash = {}) {
    ChangeStore store;
    store.DriveChangeInfoAPI = listFrom(records, recordFrom);
    store.trashFileList = setFrom(trash);
    store.maxFileChangeId = 100;
    store.dateCheckList = at(0);
    return store;
}

FeedAnswer answerFrom(const QString& changes) { return {listFrom(changes, changeFrom), 200}; }

const FeedSurroundings surroundings{.now = at(30), .strSHARE = u"share:"_s, .notificationDisplay = true};

QString manyFrom(const QString& pattern, int from, int to, int step) {
    QStringList texts;
    for (int i = from; i != to; i += step)
        texts.append(pattern.arg(i));
    return texts.join(u", "_s);
}

} // namespace

class ChangeStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { QLoggingCategory::setFilterRules(u"quenby.changes=false"_s); }

    void incrementalPolls_data() {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("trashBefore");
        QTest::addColumn<QString>("changes");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("trashAfter");
        QTest::addColumn<QString>("told");
        const auto row = [](const char* title, const char* before, const char* trashBefore, const QString& changes,
                            const QString& after, const char* trashAfter, const char* told) {
            QTest::newRow(title) << QString::fromLatin1(before) << QString::fromLatin1(trashBefore) << changes << after
                                 << QString::fromLatin1(trashAfter) << QString::fromLatin1(told);
        };
        row("added", "", "", u"f@20 c15 m15"_s, u"Af@20"_s, "", "F added");
        row("updated", "", "", u"f@20 c-9 m15"_s, u"Uf@20"_s, "", "F updated");
        row("neither: shared, for example", "", "", u"f@20 c-9 m-9"_s, {}, "", "");
        row("dates that are the poll's own", "", "", u"f@20 c0 m0"_s, {}, "", "");
        row("trashed", "", "", u"f@20 c-9 m-9 T"_s, u"Tf@20"_s, "f", "F trashed");
        row("trashed before, and still", "Tf@-5", "f", u"f@20 c-9 m15 T"_s, u"Tf@-5"_s, "f", "");
        row("restored", "Tf@-5", "f", u"f@20 c-9 m-9"_s, u"Rf@20"_s, "", "F restored");
        row("restored, not in the list", "", "f g", u"f@20"_s, u"Rf@20"_s, "g", "F restored");
        row("created and trashed", "", "", u"f@20 c15 m15 T"_s, u"Tf@20"_s, "f", "F trashed");
        row("listed twice, the pages are of two moments", "", "", u"f@10 c5 m5, g@15 c12, f@20 c5 m5 T"_s,
            u"Tf@20, Ag@15"_s, "f", "F trashed;G added");
        row("the later of one moment counts", "", "", u"f@20 c5, f@20 c5 T"_s, u"Tf@20"_s, "f", "F trashed");
        row("takes the place of its older record", "Ag@-1, Uf@-2, -h@-3", "", u"f@20 c-9 m15"_s,
            u"Uf@20, Ag@-1, -h@-3"_s, "", "F updated");
        row("out of order", "", "", u"f@10 c5, h@30 c5, g@20 c5"_s, u"Ah@30, Ag@20, Af@10"_s, "",
            "H added;G added;F added");
        row("folders", "Ag@-1", "", u"d@20 c5 F, e@20 c5 T F"_s, u"Ag@-1"_s, "", "");
        row("deleted, the older record stays", "Ag@-1, Af@-2", "", u"f@20 X"_s, u"Df@20, Ag@-1, Af@-2"_s, "",
            "F deleted");
        row("deleted from the trash", "Tf@-5", "f", u"f@20 X"_s, u"Df@20, Tf@-5"_s, "", "F deleted");
        row("one unknown file deleted", "Ag@-1", "x", u"x@20 X"_s, u"D*1@20, Ag@-1"_s, "", "1 file deleted");
        row("three unknown files deleted", "Ag@-1", "", u"x@20 X, y@22 X, z@21 X"_s, u"D*3@20, Ag@-1"_s, "",
            "3 files deleted");
        row("more unknown files deleted", "Ag@-1, D*3@-4", "", u"x@20 X"_s, u"D*4@20, Ag@-1"_s, "", "4 files deleted");
        row("a deletion without a date", "D*3@-4", "", u"x@ X"_s, u"D*4@-4"_s, "", "");
        row("no dates", "Ag@-1", "", u"f@ T, h@"_s, u"Ag@-1, Tf@"_s, "f", "");
        row("no identifiers", "D*1@-1", "", u"@20 c5, @21 c5, @22 T, @23 X"_s, u"D*2@23, T@22, A@21, A@20"_s, "",
            "2 files deleted;1 file trashed;1 file added;1 file added");
        // The newest is taken first, and each insertion into a full list costs it its last record.
        row("too many", "Ag@-1", "", manyFrom(u"f%1@%1 c5"_s, 1, 21, 1),
            manyFrom(u"Af%1@%1"_s, 20, 5, -1) + u", Af1@1"_s, "", nullptr);
    }
    void incrementalPolls() {
        QFETCH(QString, before);
        QFETCH(QString, trashBefore);
        QFETCH(QString, changes);
        QFETCH(QString, after);
        QFETCH(QString, trashAfter);
        QFETCH(QString, told);
        const ChangeStore store = polledStore(before, trashBefore);
        const PolledStore polled = pollCompleted(store, answerFrom(changes), surroundings);
        QCOMPARE(listText(polled.store.DriveChangeInfoAPI), after);
        QCOMPARE(polled.store.trashFileList, setFrom(trashAfter));
        if (!told.isNull())
            QCOMPARE(textsOf(polled.notices).join(u';'), told);
        QCOMPARE(polled.hasNews, after != before);
        QCOMPARE(polled.store.maxFileChangeId, 200);
        QCOMPARE(polled.store.dateCheckList, at(30));
    }

    void recordsOfFiles() {
        FeedChange change = changeFrom(u"f@20 c15"_s);
        change.file->mimeType = u"text/plain"_s;
        change.file->identifier.clear(); // the change says whose it is
        ChangeRecord wanted = recordFrom(u"Af@20"_s);
        wanted.mimeType = u"text/plain"_s;
        for (const QString& thumbnail : {QString(), u"thumbnail"_s}) {
            change.file->thumbnailLink = thumbnail;
            wanted.iconLink = u"icon"_s;
            wanted.thumbnailLink = thumbnail.isEmpty() ? u"icon"_s : thumbnail;
            const PolledStore polled = pollCompleted(polledStore(), FeedAnswer{{change}, 1}, surroundings);
            QCOMPARE(polled.store.DriveChangeInfoAPI, QList{wanted});
        }
        change.file->resourceKey = wanted.resourceKey = u"0-k y"_s;
        wanted.share += u"&resourcekey=0-k%20y"_s;
        const PolledStore polled = pollCompleted(polledStore(), FeedAnswer{{change}, 1}, surroundings);
        QCOMPARE(polled.store.DriveChangeInfoAPI, QList{wanted});
    }

    void firstPoll() {
        ChangeStore store = polledStore(u"Ux@-5, D*2@-6"_s, u"b gone"_s);
        store.maxFileChangeId = 0;
        store.dateCheckList = {};
        const QString changes =
            u"t@50 c40 T, d@60 c55 F, "_s + manyFrom(u"f%1@%1 c1"_s, 1, 21, 1) + u", b@2 c1, s@-9 T"_s;
        const PolledStore polled = pollCompleted(store, answerFrom(changes), surroundings);
        QCOMPARE(listText(polled.store.DriveChangeInfoAPI), u"Tt@50, "_s + manyFrom(u"-f%1@%1"_s, 20, 6, -1));
        QCOMPARE(polled.store.trashFileList, setFrom(u"t s gone"_s)); // also of what is too old for the list
        QVERIFY(polled.notices.isEmpty() && polled.hasNews);
    }

    void failureAndFirstPollAfterIt() {
        const ChangeStore store = polledStore(u"Af@-5, Tt@-6"_s, u"t"_s);
        PolledStore polled = pollCompleted(store, std::nullopt, surroundings);
        QCOMPARE(polled.store.maxFileChangeId, 0);
        QCOMPARE(polled.store.dateCheckList, at(30));
        QVERIFY(!polled.hasNews && polled.store.DriveChangeInfoAPI == store.DriveChangeInfoAPI);

        // What changed before the failed poll is shown and not told; what changed after it is told as what it is.
        const QString changes = u"f@-5 c-5, g@20 c10, a@40 c35, u@41 c-9 m35, s@42 c-9 m-9, t@43, x@44 c-9 T"_s;
        polled = pollCompleted(polled.store, answerFrom(changes), {at(60), u"share:"_s, true});
        QCOMPARE(listText(polled.store.DriveChangeInfoAPI), u"Tx@44, -t@43, -s@42, -u@41, -a@40, -g@20, -f@-5"_s);
        QCOMPARE(textsOf(polled.notices), (QStringList{u"X trashed"_s, u"T restored"_s, u"U updated"_s, u"A added"_s}));
        QCOMPARE(polled.store.trashFileList, setFrom(u"x"_s));
    }

    void logs() {
        QLoggingCategory::setFilterRules({});
        for (const char* line :
             {"Title : F\\x0a\\u202e \U0001F984 access_token=_snip_", "1 record TrashList", "Title : "})
            QTest::ignoreMessage(QtInfoMsg, line);
        FeedAnswer answer = answerFrom(u"f@2, @1 T, t@-1 T"_s);
        answer.items.first().file->title = u"F\n\u202e \U0001F984 access_token=hunter2"_s;
        pollCompleted({}, answer, surroundings);
        QTest::ignoreMessage(QtInfoMsg, "Change: Title : F");
        pollCompleted(polledStore(), answerFrom(u"f@2"_s), surroundings);
    }

    void notices() {
        const FeedAnswer answer = answerFrom(u"old@-9 T, f@20 c15, g@21 c15"_s);
        ChangeStore store = polledStore(u"-k@-1"_s);
        store.listNotificationDontDisplay = {u"f"_s, u"later"_s};
        PolledStore polled = pollCompleted(store, answer, surroundings);
        QCOMPARE(textsOf(polled.notices), QStringList{u"G added"_s});
        QCOMPARE(polled.notices.at(0).record, polled.store.DriveChangeInfoAPI.at(0));
        QCOMPARE(polled.store.listNotificationDontDisplay, setFrom(u"later"_s)); // one notification each

        // The clock was an hour behind: nothing is told twice, and what happens now is told.
        polled.store.dateCheckList = at(-3600);
        polled = pollCompleted(polled.store, answerFrom(u"f@40 c15 m39"_s), surroundings);
        QCOMPARE(textsOf(polled.notices), QStringList{u"F added"_s});

        FeedSurroundings quiet = surroundings;
        quiet.notificationDisplay = false;
        store.dateCheckList = at(0);
        polled = pollCompleted(store, answer, quiet);
        QVERIFY(polled.notices.isEmpty() && polled.hasNews);
    }

    void randomHistories();
};

namespace {

// A Drive with a change feed: one change a file, the latest.
class Drive {
public:
    struct File {
        FeedChange change;
        qint64 changeId = 0;
    };
    explicit Drive(QRandomGenerator& random)
        : random_(random) {}

    void happen() {
        ++now;
        const int what = random_.bounded(10);
        if (what < 4 || files.empty()) {
            const QString identifier = u"f%1"_s.arg(++lastFile_);
            File& file = files[identifier];
            file.change.fileId = identifier;
            FeedChange::File& made = file.change.file.emplace();
            made.identifier = random_.bounded(20) == 0 ? QString() : identifier;
            made.title = random_.bounded(20) == 0 ? QString() : identifier;
            made.mimeType = random_.bounded(8) == 0 ? folderType : QString();
            made.createdDate = made.modifiedDate = at(now);
            return touch(file);
        }
        File& file = std::next(files.begin(), random_.bounded(static_cast<int>(files.size())))->second;
        if (!file.change.file)
            return;
        if (what < 6)
            file.change.file->modifiedDate = at(now);
        else if (what < 8)
            file.change.file->isTrashed = !file.change.file->isTrashed;
        else if (what < 9)
            file.change.file.reset();
        touch(file);
    }
    FeedAnswer answerFrom(qint64 changeId, bool includeDeleted) {
        FeedAnswer answer{{}, lastChange_};
        for (const auto& [identifier, file] : files) {
            if (file.changeId >= changeId && (includeDeleted || file.change.file))
                answer.items.append(file.change);
        }
        std::shuffle(answer.items.begin(), answer.items.end(), random_);
        return answer;
    }

    std::map<QString, File> files;
    int now = 0; // seconds

private:
    void touch(File& file) {
        file.changeId = ++lastChange_;
        file.change.modificationDate = at(now);
    }

    QRandomGenerator& random_;
    int lastFile_ = 0;
    qint64 lastChange_ = 0;
};

// The first rule that does not hold; empty when all do.
QString brokenRule(const ChangeStore& store, const Drive& drive) {
    const QList<ChangeRecord>& list = store.DriveChangeInfoAPI;
    if (list.size() > 16)
        return u"more than 16"_s;
    if (!std::is_sorted(list.begin(), list.end(),
                        [](const auto& one, const auto& other) { return one.modifiedDate > other.modifiedDate; }))
        return u"not newest first"_s;
    if (std::count_if(list.begin(), list.end(), std::mem_fn(&ChangeRecord::isDeletionSummary)) > 1)
        return u"two summaries"_s;
    for (const ChangeRecord& record : list) {
        const bool isOld = record.isDeletionSummary() || record.status == Status::deleted;
        if (record.share.isEmpty() != (isOld || record.status == Status::trashed))
            return u"share of "_s + record.identifier;
        if (record.mimeType == folderType)
            return u"folder "_s + record.identifier;
    }
    for (const auto& [identifier, file] : drive.files) {
        const bool isTrashed =
            file.change.file && file.change.file->isTrashed && file.change.file->mimeType != folderType;
        if (file.change.file && store.trashFileList.contains(identifier) != isTrashed)
            return u"trashFileList: "_s + identifier;
    }
    return {};
}

} // namespace

void ChangeStoreTest::randomHistories() {
    const quint32 seed = qEnvironmentVariableIsSet("QUENBY_SEED") ? qEnvironmentVariable("QUENBY_SEED").toUInt()
                                                                  : QRandomGenerator::global()->generate();
    qDebug("QUENBY_SEED=%u", seed);
    QRandomGenerator random(seed);
    int polls = 0;
    int notices = 0;
    for (int history = 0; history < 400; ++history) {
        Drive drive(random);
        ChangeStore store;
        QSet<std::pair<QString, QDateTime>> told;
        for (int step = 0; step < 15; ++step, ++polls) {
            for (int events = random.bounded(random.bounded(6) == 0 ? 60 : 4); events > 0; --events)
                drive.happen();
            const bool isFirst = store.maxFileChangeId == 0;
            std::optional<FeedAnswer> answer = drive.answerFrom(isFirst ? 0 : store.maxFileChangeId + 1, !isFirst);
            if (random.bounded(6) == 0)
                answer.reset();
            const QDateTime since = store.dateCheckList;
            const int skew = answer && random.bounded(10) == 0 ? -500 : 0; // the clock is set back, for one poll
            PolledStore polled = pollCompleted(std::move(store), answer, {at(drive.now + skew), u"s:"_s, true});
            store = std::move(polled.store);
            if (answer)
                QCOMPARE(brokenRule(store, drive), QString());
            if (answer && isFirst)
                QVERIFY(store.DriveChangeInfoAPI.size() <= 15);
            for (const ChangeNotice& notice : polled.notices) {
                QVERIFY(since.isValid() && notice.record.modifiedDate > since);
                const qsizetype before = told.size();
                told.insert({notice.record.identifier, notice.record.modifiedDate});
                QVERIFY(told.size() > before || notice.record.isDeletionSummary());
                ++notices;
            }
        }
    }
    QVERIFY(polls == 6000 && notices > 1000);
}

QTEST_GUILESS_MAIN(ChangeStoreTest)
#include "tst_changestore.moc"
