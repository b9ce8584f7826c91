// Files that come out of the web application in the real program: a plain one, one that breaks off in the middle, and
// documents of each kind in their formats. They are saved with the panel, and are what the Drive sends to anybody.

#include "tests/desktop/support/WorkspaceStage.h"
#include "tests/localdrive/LocalClient.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTest>

#include <string_view>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;

const QString startPage = QStringLiteral("/");
const QByteArray plainContent = QByteArray("plain\0bytes\r\n", 13).repeated(100'000);

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString elementOf(const QString& selector) { return QStringLiteral("document.querySelector('%1')").arg(selector); }

} // namespace

class AgentDownloadsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void aPlainFile();
    void nothingIsKeptOfACancelledOne();
    void oneThatBreaksOffIsTold();
    void documents_data();
    void documents();

private:
    // Of the only file in the list.
    bool clickDownload() {
        return stage_.clickIn(startPage, elementOf(QStringLiteral("#actions [aria-label=Download]")));
    }
    WindowId savePanel() { return stage_.input.waitForWindow(QStringLiteral("Save As"), stage_.quenby.pid()); }
    bool saveAs(const QString& name);
    QString saved(const QString& name) const { return stage_.home.path(QStringLiteral("saved/") + name); }
    // What lies where files arrive, and where they were saved.
    QStringList files() const;
    // What the page's link leads to, by a client of the Drive's that is not this program.
    QByteArray contentAt(const QString& link);

    WorkspaceStage stage_;
    QString openedFolders_; // what stands for the file manager notes here
};

void AgentDownloadsTest::initTestCase() {
    openedFolders_ = stage_.home.path(QStringLiteral("opened-folders"));
    const QString opener = stage_.home.makeFile(QStringLiteral("bin/xdg-open"),
                                                "#!/bin/sh\necho \"$1\" >>'" + openedFolders_.toUtf8() + "'\n");
    QVERIFY(QFile::setPermissions(opener, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QProcessEnvironment& environment = stage_.home.environment();
    environment.insert(QStringLiteral("PATH"),
                       stage_.home.path(QStringLiteral("bin:")) + environment.value(QStringLiteral("PATH")));
    QVERIFY(QDir().mkpath(saved({})));
    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
    const LocalClient elsewhere(stage_.drive);
    const QByteArray target = elsewhere.announce(plainContent.size(), QStringLiteral("Plain.bin"));
    QCOMPARE(elsewhere.put(target, plainContent, 0, plainContent.size()).status, 200);
    QVERIFY(stage_.startWithDrive());
}

bool AgentDownloadsTest::saveAs(const QString& name) {
    const WindowId panel = savePanel();
    if (panel == 0 || !stage_.input.activate(panel))
        return false;
    stage_.input.key(QStringLiteral("ctrl+a"));
    return stage_.fillPanel(QStringLiteral("Save As"), saved(name));
}

QStringList AgentDownloadsTest::files() const {
    QStringList names;
    for (const char* folder : {"Downloads", "saved"})
        names += QDir(stage_.home.path(QString::fromLatin1(folder))).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    return names;
}

QByteArray AgentDownloadsTest::contentAt(const QString& link) {
    const LocalClient elsewhere(stage_.drive);
    return RawHttp::exchange(stage_.drive.url(), RawHttp::request("GET", link.toUtf8(), {elsewhere.authorization()}))
        .body;
}

void AgentDownloadsTest::aPlainFile() {
    QVERIFY(stage_.clickIn(startPage, elementOf(QStringLiteral("#rows .file .size"))));
    QVERIFY(clickDownload());
    QVERIFY(saveAs(QStringLiteral("first.bin")));
    QTRY_COMPARE_WITH_TIMEOUT(files(), QStringList{QStringLiteral("first.bin")}, patience);
    QVERIFY(contentOf(saved(QStringLiteral("first.bin"))) == plainContent);
    // There is no file manager that could select it.
    QTRY_VERIFY_WITH_TIMEOUT(contentOf(openedFolders_).contains("/saved"), patience);
    QVERIFY(stage_.inspector.waitForPages(startPage, 1));
}

void AgentDownloadsTest::nothingIsKeptOfACancelledOne() {
    QVERIFY(clickDownload());
    const WindowId panel = savePanel();
    QVERIFY(stage_.input.activate(panel));
    stage_.input.key(QStringLiteral("Escape"));
    QVERIFY(stage_.input.waitUntilGone(panel));
    QTRY_COMPARE_WITH_TIMEOUT(files(), QStringList{QStringLiteral("first.bin")}, patience);
}

void AgentDownloadsTest::oneThatBreaksOffIsTold() {
    QVERIFY(stage_.drive.orderFaults(
        R"([{"match":{"pathPrefix":"/usercontent/"},
             "action":{"stall":{"where":{"afterResponseBytes":500000},"seconds":600}}}])"));
    QVERIFY(clickDownload());
    QVERIFY(saveAs(QStringLiteral("broken.bin")));
    QVERIFY(stage_.alert() == 0);
    stage_.drive.kill();
    QVERIFY(stage_.dismissAlert());
    QTRY_COMPARE_WITH_TIMEOUT(files(), QStringList{QStringLiteral("first.bin")}, patience);

    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
    QVERIFY(clickDownload());
    QVERIFY(saveAs(QStringLiteral("second.bin")));
    QTRY_COMPARE_WITH_TIMEOUT(files(), (QStringList{QStringLiteral("first.bin"), QStringLiteral("second.bin")}),
                              patience);
    QVERIFY(contentOf(saved(QStringLiteral("second.bin"))) == plainContent);
}

void AgentDownloadsTest::documents_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("mnemonic");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<bool>("isText");
    const auto rows = [](const char* kind, const char* mnemonic,
                         std::initializer_list<std::tuple<const char*, const char*, bool>> formats) {
        for (const auto& [link, start, isText] : formats)
            QTest::addRow("%s.%s", kind, link + std::string_view(link).find_last_of("=/") + 1)
                << QString::fromLatin1(kind) << QString::fromLatin1(mnemonic) << QString::fromLatin1(link)
                << QByteArray(start) << isText;
    };
    rows("document", "d", {{"format=txt", "", true}, {"format=docx", "PK\3\4", false}, {"format=pdf", "%PDF-", false}});
    rows("presentation", "p", {{"/export/svg", "<", true}, {"/export/pptx", "PK\3\4", false}});
    rows("spreadsheets", "s", {{"format=csv", "", true}, {"format=xlsx", "PK\3\4", false}});
    rows("drawings", "r", {{"/export/svg", "<", true}, {"/export/png", "\x89PNG", false}});
}

void AgentDownloadsTest::documents() {
    QFETCH(const QString, kind);
    QFETCH(const QString, mnemonic);
    const QString editor = QStringLiteral("/docs/%1/d/").arg(kind);
    const QString text = QStringLiteral("Written by hand");
    if (stage_.inspector.pages(editor).isEmpty())
        QVERIFY(stage_.makeDocument(mnemonic, kind) && stage_.writeInDocument(kind, text));
    QFETCH(const QString, link);
    const QString element = elementOf(QStringLiteral("details.menu a[href*=\"%1\"]").arg(link));
    QVERIFY(stage_.clickIn(editor, elementOf(QStringLiteral("details.menu > summary"))));
    QVERIFY(stage_.clickIn(editor, element));
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY(saveAs(name));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(saved(name)), patience);
    const QByteArray content = contentOf(saved(name));
    QFETCH(const QByteArray, start);
    QVERIFY2(content.startsWith(start), content.left(100).constData());
    QFETCH(const bool, isText);
    QVERIFY(!isText || content.contains(text.toUtf8()));
    const QString address =
        stage_.inspector.evaluate(editor, element + QStringLiteral(".getAttribute('href')")).toString();
    const QByteArray toAnybody = contentAt(address);
    if (start == "%PDF-") // with the time in it
        QVERIFY(content.trimmed().endsWith("%%EOF") && toAnybody.startsWith(start));
    else
        QVERIFY(content == toAnybody);
    QVERIFY(files().filter(QStringLiteral(".part")).isEmpty());
    QCOMPARE(stage_.inspector.pages(editor).size(), 1);
}

QTEST_MAIN(AgentDownloadsTest)
#include "tst_agent_downloads.moc"
