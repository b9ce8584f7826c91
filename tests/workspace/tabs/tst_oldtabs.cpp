// The tabs of the last run: what reaches the settings file, and what is taken from one that says anything at all.
#include "platform/linux/session/IniDefaults.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "workspace/policy/NavigationPolicy.h"
#include "workspace/tabs/OldTabs.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString tabsKey = QStringLiteral("OldTabs");
const QString pageStart = QStringLiteral("https://drive.google.com/");

PageOpenRecord record(const QString& title, const QString& address) { return {.title = title, .url = QUrl(address)}; }

QVariantMap stored(const QString& title, const QString& address) {
    return {{QStringLiteral("title"), title}, {QStringLiteral("url"), address}};
}

// What a program sees that starts with these settings.
std::optional<QList<PageOpenRecord>> readBack(const QVariant& value) {
    FakeDefaults defaults;
    defaults.setValueForKey(tabsKey, value);
    return readOldTabs(defaults);
}

const QList<PageOpenRecord> oddTabs{
    record(QStringLiteral("Google - Drive"), pageStart),
    record(QStringLiteral("a, \"b\"; \\c\\\n\t@Variant(x) [%1] \u00fc \u4e16 \U0001F600") + QChar(1), pageStart),
    record({}, QStringLiteral("https://docs.google.com/a?b=[c]|{d}\",%20%2F;=#x?[y],z")),
    record(QStringLiteral("local"), QStringLiteral("http://127.0.0.1:4711/drive/folders/1")),
    record(QStringLiteral("blank"), QStringLiteral("about:blank")),
};

} // namespace

class OldTabsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void surviveInASettingsFileThatCanBeRead() {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("settings.ini"));
        {
            IniDefaults defaults(path);
            QVERIFY(!readOldTabs(defaults));
            writeOldTabs(defaults, oddTabs);
            writeSelectedTab(defaults, 3);
        }
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        QVERIFY2(text.contains("http://127.0.0.1:4711/drive/folders/1"), text.constData());
        IniDefaults defaults(path);
        QCOMPARE(readOldTabs(defaults).value_or(QList<PageOpenRecord>()), oddTabs);
        QCOMPARE(readSelectedTab(defaults, 5), 3);

        removeOldTabs(defaults);
        QVERIFY(!readOldTabs(defaults));
        QCOMPARE(readSelectedTab(defaults, 5), 0);
    }

    void accountAndWindowAreCarriedButNotReadBack() {
        FakeDefaults defaults;
        writeOldTabs(defaults, {{QStringLiteral("t"), QUrl(pageStart), QStringLiteral("other"), QStringLiteral("w")}});
        QCOMPARE(defaults.valueForKey(tabsKey).toString(),
                 QStringLiteral("[{\"WindowName\":\"w\",\"account\":\"other\",\"title\":\"t\",\"url\":\"%1\"}]")
                     .arg(pageStart));
        QCOMPARE(readOldTabs(defaults), QList{record(QStringLiteral("t"), pageStart)});
    }

    void whatIsThereIsTakenForWhatItCanBe_data() {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QStringList>("titles");
        const auto row = [](const char* name, const QVariant& value, const QStringList& titles) {
            QTest::newRow(name) << value << titles;
        };
        const auto text = [&row](const char* json, const QStringList& titles) {
            row(json, QString::fromUtf8(json), titles);
        };
        const QString good = QStringLiteral("good");
        for (const char* nothing : {"", "[", "{}", "null", "true", "5", "\"https://drive.google.com/\"", "[]", "[[]]",
                                    "[null,1,\"https://drive.google.com/\"]", "[{}]", "[{\"title\":\"t\"}]",
                                    "[{\"url\":5}]", "[{\"url\":[\"https://drive.google.com/\"]}]",
                                    "{\"url\":\"https://drive.google.com/\"}", "@Variant(\\0)"})
            text(nothing, {});
        text("[{\"url\":\"https://a.example/\"},{\"url\":\"https://b.example/\",\"title\":7},1]",
             {QString(), QString()});
        text("[{\"url\":\"https://a.example/\",\"title\":\"good\"},{\"url\":\"", {});
        for (const char* address :
             {"file:///etc/passwd", "javascript:alert(1)", "data:text/html,x", "blob:https://drive.google.com/1",
              "about:config", "https://u:p@drive.google.com/", "https://u@drive.google.com/", "drive.google.com",
              "//drive.google.com/", "https://", "https:///x", "chrome://gpu", " ", "https://a b/"})
            row(address,
                QVariantList{stored(QStringLiteral("bad"), QString::fromLatin1(address)), stored(good, pageStart)},
                {good});
        row("list of maps", QVariantList{stored(good, pageStart), 5, QVariantList{}, stored(good, pageStart)},
            {good, good});
        row("list of texts", QStringList{pageStart, pageStart}, {});
        row("map", stored(good, pageStart), {});
        row("bytes", QByteArray("[{\"url\":\"https://drive.google.com/\"}]"), {});
        row("number", 5, {});
        row("deep", QStringLiteral("[").repeated(100'000), {});
        row("huge",
            QStringLiteral("[{\"url\":\"%1\",\"title\":\"%2\"}]")
                .arg(pageStart, QString(8 * 1024 * 1024, QLatin1Char('x'))),
            {});
    }
    void whatIsThereIsTakenForWhatItCanBe() {
        QFETCH(QVariant, value);
        const std::optional<QList<PageOpenRecord>> records = readBack(value);
        QVERIFY(records);
        QStringList titles;
        for (const PageOpenRecord& read : *records)
            titles.append(read.title);
        QTEST(titles, "titles");
    }

    void thereIsAnEnd() {
        const QString longest = pageStart + QString(longestOldAddress - pageStart.size(), QLatin1Char('a'));
        const QString beyond = longest + QLatin1Char('a');
        // Not beyond as text, but as it is sent.
        const QString encoded = pageStart + QString(longestOldAddress / 2, QChar(0xfc));
        const QString title(longestOldTitle - 1, QLatin1Char('t'));
        const QList<PageOpenRecord> few{record(title + QStringLiteral("uv"), longest), record(title, beyond),
                                        record(title, encoded),
                                        record(title + QStringLiteral("\U0001F600"), pageStart)};
        const QList<PageOpenRecord> kept{record(title + QLatin1Char('u'), longest), record(title, pageStart)};
        QVariantList maps;
        for (const PageOpenRecord& tab : few)
            maps.append(stored(tab.title, tab.url.toString()));
        QCOMPARE(readBack(maps), kept);
        FakeDefaults defaults;
        writeOldTabs(defaults, few);
        QCOMPARE(readOldTabs(defaults), kept);

        // As large as they can be, all of those that are written are read.
        const QString title500 = QString(longestOldTitle, QChar(1));
        writeOldTabs(defaults, QList<PageOpenRecord>(3 * mostOldTabs, record(title500, longest)));
        QCOMPARE(readOldTabs(defaults), QList<PageOpenRecord>(mostOldTabs, record(title500, longest)));
        QCOMPARE(readBack(QVariantList(mostOldTabs + 1, stored(title, pageStart)))->size(), mostOldTabs);
    }

    void nothingToKeepLeavesWhatIsThere() {
        FakeDefaults defaults;
        writeOldTabs(defaults, oddTabs);
        const QVariant before = defaults.valueForKey(tabsKey);
        writeOldTabs(defaults, {});
        writeOldTabs(defaults, {record(QStringLiteral("t"), QStringLiteral("file:///x"))});
        QCOMPARE(defaults.valueForKey(tabsKey), before);
    }

    void addressesAreKeptWithoutSecrets() {
        FakeDefaults defaults;
        const QString untouched = pageStart + QStringLiteral("x?q=a%20b%26&tokens=1#y");
        writeOldTabs(defaults, {record({}, pageStart + QStringLiteral("share?hl=en&access_token=S3CRET&id=1#x")),
                                record({}, pageStart + QStringLiteral("x?a=b#id_token=S3CRET")),
                                record({}, pageStart + QStringLiteral("x?continue=%2Fy%3Fcode%3DS3CRET")),
                                record({}, untouched)});
        QCOMPARE(readOldTabs(defaults).value_or(QList<PageOpenRecord>()),
                 (QList{record({}, pageStart + QStringLiteral("share")), record({}, pageStart + QStringLiteral("x")),
                        record({}, pageStart + QStringLiteral("x")), record({}, untouched)}));
    }

    void selectedTab() {
        FakeDefaults defaults;
        QCOMPARE(readSelectedTab(defaults, 3), 0);
        for (const QVariant& unknown : {QVariant(3), QVariant(-1), QVariant(QStringLiteral("x")), QVariant(QString()),
                                        QVariant(QVariantList{1}), QVariant(QStringLiteral("99999999999999999999"))}) {
            defaults.setValueForKey(QStringLiteral("OldTabsSelected"), unknown);
            QCOMPARE(readSelectedTab(defaults, 3), 0);
        }
        writeSelectedTab(defaults, 2);
        QCOMPARE(readSelectedTab(defaults, 3), 2);
        QCOMPARE(readSelectedTab(defaults, 0), 0);
    }

    // Whatever became of the text, nothing comes out of it that may not stand in a tab.
    void damageIsHarmless() {
        FakeDefaults defaults;
        writeOldTabs(defaults, oddTabs + QList{record(QStringLiteral("t"), QStringLiteral("https://u.p:1/"))});
        const QString sound = defaults.valueForKey(tabsKey).toString();
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        const QString letters = QStringLiteral("@:/\\\"[]{},file0 ");
        int stillRead = 0;
        for (int i = 0; i < 5000; ++i) {
            QString text = sound;
            for (int changes = 1 + random.bounded(3); changes > 0; --changes)
                text[random.bounded(static_cast<int>(text.size()))] =
                    letters.at(random.bounded(static_cast<int>(letters.size())));
            const QList<PageOpenRecord> records = *readBack(text);
            stillRead += !records.isEmpty();
            for (const PageOpenRecord& read : records)
                QVERIFY2(isPageAddress(read.url), qPrintable(text));
        }
        QVERIFY(stillRead > 1000);
    }
};

QTEST_GUILESS_MAIN(OldTabsTest)
#include "tst_oldtabs.moc"
