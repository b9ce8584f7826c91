// The search language against an oracle that filters the same files in memory.
#include "localdrive/search/SearchQuery.h"
#include "tests/localdrive/LocalDrive.h"

#include <QSet>

#include <functional>
#include <random>

using namespace quenby::localdrive;

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

const QStringList titles{QStringLiteral("Report"),      QStringLiteral("report 2"),   QStringLiteral("O'Brien's"),
                         QStringLiteral("back\\slash"), QStringLiteral("two\nlines"), QStringLiteral("Ünïcode €"),
                         QStringLiteral("50% _done_"),  QStringLiteral("and"),        QStringLiteral("\"quoted\""),
                         QStringLiteral("𝔲nusual 😀")};
const QStringList mimeTypes{QStringLiteral("text/plain"), QStringLiteral("image/png"), QStringLiteral("image/jpeg")};

QString quoted(QString text) {
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"));
    return QLatin1Char('\'') + text + QLatin1Char('\'');
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
            chain.text = QString(chain.text + (both ? QStringLiteral(" and ") : QStringLiteral(" or ")) + next.text);
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
            return {QString(QStringLiteral("not ") + inner.text),
                    [matches = inner.matches](const Item& item) { return !matches(item); }};
        }
        if (depth > 0 && below(3) == 0) {
            const Expression inner = query(depth - 1);
            return {QString(QStringLiteral("( ") + inner.text + QLatin1Char(')')), inner.matches};
        }
        return comparison();
    }

    Expression comparison() {
        const QString title = titles[below(static_cast<int>(titles.size()))];
        const QString type = mimeTypes[below(static_cast<int>(mimeTypes.size()))];
        const bool flag = below(2) == 0;
        const QString truth = flag ? QStringLiteral("true") : QStringLiteral("false");
        switch (below(10)) {
        case 0:
            return {QString(QStringLiteral("title=") + quoted(title)),
                    [=](const Item& item) { return item.title == title; }};
        case 1:
            return {QString(QStringLiteral("title != ") + quoted(title)),
                    [=](const Item& item) { return item.title != title; }};
        case 2: {
            const QString part = title.mid(below(3), 1 + below(4)).toUpper();
            const QString key = part.isValidUtf16() ? part : QStringLiteral("e");
            return {QString(QStringLiteral("title contains ") + quoted(key)),
                    [=](const Item& item) { return item.title.contains(key, Qt::CaseInsensitive); }};
        }
        case 3:
            return {QString(QStringLiteral("mimeType = ") + quoted(type)),
                    [=](const Item& item) { return item.mimeType == type; }};
        case 4:
            return {QStringLiteral("mimeType contains 'image/'"),
                    [](const Item& item) { return item.mimeType.startsWith(QLatin1String("image/")); }};
        case 5:
            return {QString(QStringLiteral("trashed = ") + truth),
                    [=](const Item& item) { return item.trashed == flag; }};
        case 6:
            return {QString(QStringLiteral("starred!=") + truth),
                    [=](const Item& item) { return item.starred != flag; }};
        case 7:
            return date();
        case 8:
            return {QStringLiteral("'me' in owners"), [](const Item&) { return true; }};
        default:
            return {QString(quoted(flag ? folder_ : QStringLiteral("root")) + QStringLiteral(" in parents")),
                    [=](const Item& item) { return item.inFolder == flag; }};
        }
    }

    Expression date() {
        const QDateTime limit = middle_.addSecs(below(9) - 4);
        const QString value = quoted(limit.toOffsetFromUtc(5400).toString(Qt::ISODateWithMs));
        const auto made = [&](const char* sign, auto compare) {
            return Expression{QStringLiteral("modifiedDate %1 %2").arg(QLatin1String(sign), value),
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
    void findsWhatTheOracleFinds();
    void folderSearchOfUploads();
    void refusesWhatItCannotRead_data();
    void refusesWhatItCannotRead();
    void longQueries();
};

void LocalSearchTest::findsWhatTheOracleFinds() {
    LocalDrive drive;
    const QString folder = drive.makeFolder(QStringLiteral("folder"));
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
        const QJsonObject labels{{QStringLiteral("trashed"), item.trashed}, {QStringLiteral("starred"), item.starred}};
        const QJsonArray parents{QJsonObject{{QStringLiteral("id"), item.inFolder ? folder : QStringLiteral("root")}}};
        const QJsonObject resource{{QStringLiteral("title"), item.title},
                                   {QStringLiteral("mimeType"), item.mimeType},
                                   {QStringLiteral("labels"), labels},
                                   {QStringLiteral("parents"), parents},
                                   {QStringLiteral("modifiedDate"), item.modified.toString(Qt::ISODateWithMs)}};
        item.id = drive.result(QStringLiteral("files.insert"), {{QStringLiteral("resource"), resource}})
                      .value(QLatin1String("id"))
                      .toString();
        items.append(item);
    }

    Generator generator(20140701, start.addSecs(4), folder);
    int between = 0;
    for (int round = 0; round < 1500; ++round) {
        const Expression expression = generator.query(3);
        const QString q = QStringLiteral("(%1) and title != 'folder'").arg(expression.text);
        QSet<QString> expected;
        for (const Item& item : std::as_const(items))
            if (expression.matches(item))
                expected.insert(item.id);
        const QStringList found =
            column(drive.result(QStringLiteral("files.list"),
                                {{QStringLiteral("q"), q}, {QStringLiteral("fields"), QStringLiteral("items(id)")}}));
        if (QSet<QString>(found.begin(), found.end()) != expected || found.size() != expected.size())
            QFAIL(
                qPrintable(QStringLiteral("%1 files instead of %2: %3").arg(found.size()).arg(expected.size()).arg(q)));
        between += !expected.isEmpty() && expected.size() < items.size();
    }
    // Expressions that find all or nothing would prove little.
    QVERIFY(between > 700);
}

void LocalSearchTest::folderSearchOfUploads() {
    LocalDrive drive;
    const QString title = QStringLiteral("Screen Shot");
    const auto search = [&drive, &title] {
        const QString q = QStringLiteral("mimeType='application/vnd.google-apps.folder' and title = '%1' and trashed = "
                                         "false ")
                              .arg(title);
        return column(drive.result(QStringLiteral("children.list"),
                                   {{QStringLiteral("folderId"), QStringLiteral("root")}, {QStringLiteral("q"), q}}));
    };
    QCOMPARE(search(), QStringList());
    drive.makeFolder(QStringLiteral("screen shot"));                 // exact titles only
    drive.upload(title, "a file of that name");                      // folders only
    drive.makeFolder(title, drive.makeFolder(QStringLiteral("up"))); // of the root only
    QCOMPARE(search(), QStringList());
    const QString folder = drive.makeFolder(title);
    QCOMPARE(search(), QStringList{folder});
    drive.result(QStringLiteral("files.trash"), {{QStringLiteral("fileId"), folder}});
    QCOMPARE(search(), QStringList());
}

void LocalSearchTest::refusesWhatItCannotRead_data() {
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

void LocalSearchTest::refusesWhatItCannotRead() {
    QFETCH(QString, query);
    const auto parsed = parseSearch(query);
    QVERIFY(!parsed.ok());
    QCOMPARE(parsed.error().code(), qint64{400});
}

// Whatever is accepted is within what the database can compile.
void LocalSearchTest::longQueries() {
    LocalDrive drive;
    const QString id = drive.upload(QStringLiteral("a"), "1");
    const auto search = [&drive](const QString& q) {
        return drive.call(QStringLiteral("files.list"), {{QStringLiteral("q"), q}});
    };
    const QString term = QStringLiteral("title = 'a'");
    const auto chain = [&term](int terms, const QStringList& joints) {
        QString q = term;
        for (int i = 1; i < terms; ++i)
            q += joints[i % joints.size()] + term;
        return q;
    };
    const QStringList same{QStringLiteral(" or ")};
    const QStringList turns{QStringLiteral(" or "), QStringLiteral(" and ")};
    const auto nested = [&term](int depth, const QString& open) {
        return QString(open.repeated(depth) + term + QStringLiteral(")").repeated(depth));
    };
    const QString worst = QStringLiteral("title = 'a' and not (title = 'b' or ");
    QCOMPARE(column(search(chain(200, same))[QLatin1String("result")].toObject()), QStringList{id});
    QCOMPARE(LocalDrive::reasonOf(search(chain(201, same))), QStringLiteral("invalid"));
    QCOMPARE(column(search(chain(21, turns))[QLatin1String("result")].toObject()), QStringList{id});
    QCOMPARE(LocalDrive::reasonOf(search(chain(30, turns))), QStringLiteral("invalid"));
    QCOMPARE(LocalDrive::reasonOf(search(nested(100000, QStringLiteral("(")))), QStringLiteral("invalid"));
    // At the limit of nesting the worst kind of term must still do.
    int depth = 1;
    while (parseSearch(nested(depth + 1, worst)).ok())
        ++depth;
    QVERIFY(depth >= 5);
    QVERIFY(search(nested(depth, worst)).contains(QLatin1String("result")));
}

QTEST_GUILESS_MAIN(LocalSearchTest)
#include "tst_localsearch.moc"
