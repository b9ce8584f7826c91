// The search language against an oracle that filters the same files in memory.
#include "localdrive/search/SearchQuery.h"
#include "tests/localdrive/LocalDrive.h"

#include <QSet>

#include <functional>
#include <random>

using namespace quenby::localdrive;
using namespace Qt::StringLiterals;

namespace {

struct Item {
    QString id;
    QString title;
    QString mimeType;
    bool trashed = false;
    bool starred = false;
    QDateTime modified;
    bool inFolder = false; // in the one folder; else in the root
};

struct Expression {
    QString text;
    std::function<bool(const Item&)> matches;
};

const QStringList titles{u"Report"_s,    u"report 2"_s,   u"O'Brien's"_s, u"back\\slash"_s, u"two\nlines"_s,
                         u"Ünïcode €"_s, u"50% _done_"_s, u"and"_s,       u"\"quoted\""_s,  u"𝔲nusual 😀"_s};
const QStringList mimeTypes{u"text/plain"_s, u"image/png"_s, u"image/jpeg"_s};

QString quoted(QString text) {
    text.replace('\\'_L1, "\\\\"_L1).replace('\''_L1, "\\'"_L1);
    return '\''_L1 + text + '\''_L1;
}

// Makes expressions out of a fixed seed.
class Generator {
public:
    Generator(unsigned seed, QDateTime middle, QString folder)
        : random_(seed)
        , middle_(std::move(middle))
        , folder_(std::move(folder)) {}

    // A chain of terms, which is read from left to right.
    Expression query(int depth) {
        Expression chain = term(depth);
        for (int more = below(3); more > 0; --more) {
            const bool both = below(2) == 0;
            const Expression next = term(depth);
            const auto left = chain.matches;
            const auto right = next.matches;
            chain.text = QString(chain.text + (both ? u" and "_s : u" or "_s) + next.text);
            chain.matches = [=](const Item& item) {
                return both ? left(item) && right(item) : left(item) || right(item);
            };
        }
        return chain;
    }

private:
    int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

    Expression term(int depth) {
        if (below(4) == 0) {
            const Expression inner = term(depth);
            return {QString(u"not "_s + inner.text),
                    [matches = inner.matches](const Item& item) { return !matches(item); }};
        }
        if (depth > 0 && below(3) == 0) {
            const Expression inner = query(depth - 1);
            return {QString(u"( "_s + inner.text + ')'_L1), inner.matches};
        }
        return comparison();
    }

    Expression comparison() {
        const QString title = titles[below(static_cast<int>(titles.size()))];
        const QString type = mimeTypes[below(static_cast<int>(mimeTypes.size()))];
        const bool flag = below(2) == 0;
        const QString truth = flag ? u"true"_s : u"false"_s;
        switch (below(10)) {
        case 0:
            return {QString(u"title="_s + quoted(title)), [=](const Item& item) { return item.title == title; }};
        case 1:
            return {QString(u"title != "_s + quoted(title)), [=](const Item& item) { return item.title != title; }};
        case 2: {
            const QString part = title.mid(below(3), 1 + below(4)).toUpper();
            const QString key = part.isValidUtf16() ? part : u"e"_s;
            return {QString(u"title contains "_s + quoted(key)),
                    [=](const Item& item) { return item.title.contains(key, Qt::CaseInsensitive); }};
        }
        case 3:
            return {QString(u"mimeType = "_s + quoted(type)), [=](const Item& item) { return item.mimeType == type; }};
        case 4:
            return {u"mimeType contains 'image/'"_s,
                    [](const Item& item) { return item.mimeType.startsWith("image/"_L1); }};
        case 5:
            return {QString(u"trashed = "_s + truth), [=](const Item& item) { return item.trashed == flag; }};
        case 6:
            return {QString(u"starred!="_s + truth), [=](const Item& item) { return item.starred != flag; }};
        case 7:
            return date();
        case 8:
            return {u"'me' in owners"_s, [](const Item&) { return true; }};
        default:
            return {QString(quoted(flag ? folder_ : u"root"_s) + u" in parents"_s),
                    [=](const Item& item) { return item.inFolder == flag; }};
        }
    }

    Expression date() {
        const QDateTime limit = middle_.addSecs(below(9) - 4);
        const QString value = quoted(limit.toOffsetFromUtc(5400).toString(Qt::ISODateWithMs));
        const auto made = [&](const char* sign, auto compare) {
            return Expression{u"modifiedDate %1 %2"_s.arg(QLatin1String(sign), value),
                              [=](const Item& item) { return compare(item.modified, limit); }};
        };
        switch (below(5)) {
        case 0:
            return made("<", std::less<>());
        case 1:
            return made("<=", std::less_equal<>());
        case 2:
            return made(">", std::greater<>());
        case 3:
            return made("=", std::equal_to<>());
        default:
            return made(">=", std::greater_equal<>());
        }
    }

    std::mt19937 random_;
    const QDateTime middle_;
    const QString folder_;
};

} // namespace

class LocalSearchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsWhatTheOracleFinds() {
        LocalDrive drive;
        const QString folder = drive.makeFolder(u"folder"_s);
        const QDateTime start(QDate(2014, 7, 1), QTime(12, 0), Qt::UTC);
        QList<Item> items;
        std::mt19937 random(1);
        for (int i = 0; i < 60; ++i) {
            Item item{{},
                      titles[i % titles.size()],
                      mimeTypes[i % 3],
                      random() % 3 == 0,
                      random() % 2 == 0,
                      start.addSecs(i % 9),
                      random() % 2 == 0};
            const QJsonObject labels{{u"trashed"_s, item.trashed}, {u"starred"_s, item.starred}};
            const QJsonArray parents{QJsonObject{{u"id"_s, item.inFolder ? folder : u"root"_s}}};
            const QJsonObject resource{{u"title"_s, item.title},
                                       {u"mimeType"_s, item.mimeType},
                                       {u"labels"_s, labels},
                                       {u"parents"_s, parents},
                                       {u"modifiedDate"_s, item.modified.toString(Qt::ISODateWithMs)}};
            item.id = drive.result(u"files.insert"_s, {{u"resource"_s, resource}}).value("id"_L1).toString();
            items.append(item);
        }

        Generator generator(20140701, start.addSecs(4), folder);
        int between = 0;
        for (int round = 0; round < 1500; ++round) {
            const Expression expression = generator.query(3);
            const QString q = u"(%1) and title != 'folder'"_s.arg(expression.text);
            QSet<QString> expected;
            for (const Item& item : std::as_const(items))
                if (expression.matches(item))
                    expected.insert(item.id);
            const QStringList found =
                column(drive.result(u"files.list"_s, {{u"q"_s, q}, {u"fields"_s, u"items(id)"_s}}));
            if (QSet<QString>(found.begin(), found.end()) != expected || found.size() != expected.size())
                QFAIL(qPrintable(u"%1 files instead of %2: %3"_s.arg(found.size()).arg(expected.size()).arg(q)));
            between += !expected.isEmpty() && expected.size() < items.size();
        }
        // Expressions that find all or nothing would prove little.
        QVERIFY(between > 700);
    }

    void folderSearchOfUploads() {
        LocalDrive drive;
        const QString title = u"Screen Shot"_s;
        const auto search = [&drive, &title] {
            const QString q = u"mimeType='application/vnd.google-apps.folder' and title = '%1' and trashed = "
                              "false "_s.arg(title);
            return column(drive.result(u"children.list"_s, {{u"folderId"_s, u"root"_s}, {u"q"_s, q}}));
        };
        QCOMPARE(search(), QStringList());
        drive.makeFolder(u"screen shot"_s);                 // exact titles only
        drive.upload(title, "a file of that name");         // folders only
        drive.makeFolder(title, drive.makeFolder(u"up"_s)); // of the root only
        QCOMPARE(search(), QStringList());
        const QString folder = drive.makeFolder(title);
        QCOMPARE(search(), QStringList{folder});
        drive.result(u"files.trash"_s, {{u"fileId"_s, folder}});
        QCOMPARE(search(), QStringList());
    }

    void refusesWhatItCannotRead_data() {
        QTest::addColumn<QString>("query");
        const char* queries[] = {"title",
                                 "title =",
                                 "title = unquoted",
                                 "title = 'open",
                                 "title = 'open\\'",
                                 "title < 'a'",
                                 "title = true",
                                 "fullText = 'a'",
                                 "trashed = 'true'",
                                 "trashed contains true",
                                 "trashed = true and",
                                 "trashed = true or or trashed = true",
                                 "trashed = true trashed = true",
                                 "(trashed = true",
                                 "trashed = true)",
                                 "()",
                                 "not",
                                 "modifiedDate > 'yesterday'",
                                 "modifiedDate > '2014-02-30'",
                                 "modifiedDate > '2014-02-03T10:20'",
                                 "'me' in parent",
                                 "'me' = owners",
                                 "parents = 'x'",
                                 "size > 3",
                                 "title == 'a'",
                                 "title = 'a'; drop table files",
                                 "AND"};
        for (const char* query : queries)
            QTest::newRow(query) << QString::fromLatin1(query);
    }
    void refusesWhatItCannotRead() {
        QFETCH(QString, query);
        const auto parsed = parseSearch(query);
        QVERIFY(!parsed.ok());
        QCOMPARE(parsed.error().code(), qint64{400});
    }

    // Whatever is accepted is within what the database can compile.
    void longQueries() {
        LocalDrive drive;
        const QString id = drive.upload(u"a"_s, "1");
        const auto search = [&drive](const QString& q) { return drive.call(u"files.list"_s, {{u"q"_s, q}}); };
        const QString term = u"title = 'a'"_s;
        const auto chain = [&term](int terms, const QStringList& joints) {
            QString q = term;
            for (int i = 1; i < terms; ++i)
                q += joints[i % joints.size()] + term;
            return q;
        };
        const QStringList same{u" or "_s};
        const QStringList turns{u" or "_s, u" and "_s};
        const auto nested = [&term](int depth, const QString& open) {
            return QString(open.repeated(depth) + term + u")"_s.repeated(depth));
        };
        const QString worst = u"title = 'a' and not (title = 'b' or "_s;
        QCOMPARE(column(search(chain(200, same))["result"_L1].toObject()), QStringList{id});
        QCOMPARE(LocalDrive::reasonOf(search(chain(201, same))), u"invalid"_s);
        QCOMPARE(column(search(chain(21, turns))["result"_L1].toObject()), QStringList{id});
        QCOMPARE(LocalDrive::reasonOf(search(chain(30, turns))), u"invalid"_s);
        QCOMPARE(LocalDrive::reasonOf(search(nested(100000, u"("_s))), u"invalid"_s);
        // At the limit of nesting the worst kind of term must still do.
        int depth = 1;
        while (parseSearch(nested(depth + 1, worst)).ok())
            ++depth;
        QVERIFY(depth >= 5);
        QVERIFY(search(nested(depth, worst)).contains("result"_L1));
    }
};

QTEST_GUILESS_MAIN(LocalSearchTest)
#include "tst_localsearch.moc"
