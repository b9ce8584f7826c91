// The workspace of the real program, with the web application of the Drive in its tabs: new documents, print views, a
// page that dies, tabs after a kill, and signing out on a page.

#include "tests/desktop/support/WorkspaceStage.h"
#include "tests/localdrive/LocalClient.h"

#include <QApplication>
#include <QTest>

#include <csignal>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;
constexpr int aMoment = 3000; // milliseconds, after which a key is pressed again
constexpr int manyTabs = 20;

QString searchPath(int number) { return QStringLiteral("/drive/search?q=%1.").arg(number); }

} // namespace

class AgentWorkspaceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
        QVERIFY(stage_.startWithDrive());
    }
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void theDriveIsInTheFirstTab();
    void newDocuments_data();
    void newDocuments();
    void aPrintViewHasATabOfItsOwn();
    void aPrintViewPrints();
    void aPageThatDiesIsLoadedAgain();
    void manyTabsSurviveAKill();
    void signingOutOnThePage();

private:
    QStringList keptTitles() const;
    QStringList keptAddresses() const;
    bool closesTabsBut(int count);
    // A new document's page.
    bool asksToPrint();

    WorkspaceStage stage_;
    PageInspector& pages_ = stage_.inspector;
};

QStringList AgentWorkspaceTest::keptTitles() const {
    QStringList titles;
    for (const PageOpenRecord& record : stage_.keptTabs())
        titles.append(record.title);
    return titles;
}

QStringList AgentWorkspaceTest::keptAddresses() const {
    QStringList addresses;
    for (const PageOpenRecord& record : stage_.keptTabs())
        addresses.append(record.url.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority));
    return addresses;
}

bool AgentWorkspaceTest::closesTabsBut(int count) {
    if (!stage_.activateWindow())
        return false;
    for (qsizetype open = pages_.pages({}).size(); open > count; --open) {
        stage_.input.key(QStringLiteral("ctrl+w"));
        if (!pages_.waitForPages({}, int(open) - 1))
            return false;
    }
    return true;
}

void AgentWorkspaceTest::theDriveIsInTheFirstTab() {
    QCOMPARE(pages_.pages({}).constFirst().url, stage_.drive.url().resolved(QUrl(QStringLiteral("/"))));
    QTRY_COMPARE_WITH_TIMEOUT(keptTitles(), QStringList{QStringLiteral("My Drive")}, patience);
}

void AgentWorkspaceTest::newDocuments_data() {
    QTest::addColumn<QString>("mnemonic");
    QTest::addColumn<QString>("mimeType");
    QTest::newRow("document") << "d"
                              << "application/vnd.google-apps.document";
    QTest::newRow("presentation") << "p"
                                  << "application/vnd.google-apps.presentation";
    QTest::newRow("spreadsheets") << "s"
                                  << "application/vnd.google-apps.spreadsheet";
    QTest::newRow("forms") << "f"
                           << "application/vnd.google-apps.form";
    QTest::newRow("drawings") << "r"
                              << "application/vnd.google-apps.drawing";
}

void AgentWorkspaceTest::newDocuments() {
    const QString kind = QString::fromLatin1(QTest::currentDataTag());
    QFETCH(const QString, mnemonic);
    QVERIFY(stage_.makeDocument(mnemonic, kind));
    const LocalClient client(stage_.drive);
    QFETCH(const QString, mimeType);
    const QJsonObject made = jsonOf(client
                                        .call(QStringLiteral("drive.files.list"),
                                              {{QStringLiteral("q"), QStringLiteral("mimeType = '%1'").arg(mimeType)}})
                                        .body);
    const QJsonArray items = made[QLatin1String("result")][QLatin1String("items")].toArray();
    QCOMPARE(items.size(), 1);
    QVERIFY(items[0][QLatin1String("parents")][0][QLatin1String("isRoot")].toBool());
    const QString id = items[0][QLatin1String("id")].toString();
    QTRY_COMPARE_WITH_TIMEOUT(keptAddresses().last(), QStringLiteral("/docs/%1/d/%2/edit").arg(kind, id), patience);
    QVERIFY(closesTabsBut(1));
}

bool AgentWorkspaceTest::asksToPrint() {
    const QString editor = QStringLiteral("/docs/document/d/");
    return stage_.makeDocument(QStringLiteral("d"), QStringLiteral("document")) &&
           stage_.clickIn(editor, QStringLiteral("document.querySelector('details.menu > summary')")) &&
           stage_.clickIn(editor, QStringLiteral("document.querySelector('a[href^=\"/viewer/\"]')"));
}

// As long as neither its page nor the one that leads there has come.
void AgentWorkspaceTest::aPrintViewHasATabOfItsOwn() {
    QVERIFY(stage_.drive.orderFaults(
        R"([{"match":{"pathPrefix":"/viewer/","times":2},"action":{"stall":{"where":"before","seconds":600}}}])"));
    QVERIFY(asksToPrint());
    const QStringList expected{QStringLiteral("My Drive"), QStringLiteral("Untitled document"),
                               QStringLiteral("Google Drive Print")};
    QTRY_COMPARE_WITH_TIMEOUT(keptTitles(), expected, patience);
    QVERIFY(closesTabsBut(1));
    stage_.drive.clearFaults();
}

// Once, although the tab that leads there has become a print view as well.
void AgentWorkspaceTest::aPrintViewPrints() {
    QVERIFY(asksToPrint());
    QVERIFY(pages_.waitForPages(QStringLiteral("/viewer/"), 2));
    const WindowId dialog = stage_.input.waitForWindow(QStringLiteral("Print"), stage_.quenby.pid());
    QVERIFY(dialog != 0 && stage_.input.activate(dialog));
    stage_.input.key(QStringLiteral("Escape"));
    QVERIFY(stage_.input.waitUntilGone(dialog));
    const QString title = QStringLiteral("Untitled document");
    QTRY_COMPARE_WITH_TIMEOUT(keptTitles(), (QStringList{QStringLiteral("My Drive"), title, title}), patience);
    QVERIFY(closesTabsBut(1));
}

void AgentWorkspaceTest::aPageThatDiesIsLoadedAgain() {
    const QList<qint64> processes = stage_.pageProcesses();
    QVERIFY(!processes.isEmpty());
    for (const qint64 process : processes)
        QCOMPARE(::kill(static_cast<pid_t>(process), SIGKILL), 0);
    // The message has a button of that mnemonic; nothing else has.
    const auto isBack = [&] {
        stage_.input.key(QStringLiteral("alt+r"));
        return QTest::qWaitFor(
            [&] {
                return pages_.evaluate({}, QStringLiteral("document.title")) ==
                       QLatin1String("My Drive - Google Drive");
            },
            aMoment);
    };
    QVERIFY(stage_.activateWindow());
    QVERIFY(QTest::qWaitFor(isBack, patience));
}

void AgentWorkspaceTest::manyTabsSurviveAKill() {
    QStringList expected;
    for (int number = 0; number < manyTabs; ++number) {
        if (number > 0)
            stage_.input.key(QStringLiteral("ctrl+t"));
        expected.append(searchPath(number));
        const QString go =
            QStringLiteral("document.readyState === 'complete' && (location.href = '%1')").arg(expected.last());
        const auto hasGone = [&] {
            pages_.evaluate(QStringLiteral("/"), go);
            return pages_.pages(expected.last()).size() == 1;
        };
        QVERIFY(QTest::qWaitFor(hasGone, patience));
    }
    QTRY_COMPARE_WITH_TIMEOUT(keptAddresses(), expected, patience);
    // The engine takes its time with what keeps the pages signed in.
    QTRY_VERIFY_WITH_TIMEOUT(stage_.areCookiesKept(), patience);
    QCOMPARE(::kill(static_cast<pid_t>(stage_.quenby.pid()), SIGKILL), 0);
    QCOMPARE(stage_.quenby.waitForEnd(), 128 + SIGKILL);

    QVERIFY(stage_.startSignedIn());
    QVERIFY(pages_.waitForPages({}, 1));
    QCOMPARE(pages_.pages(expected.last()).size(), 1);
    // The others come when they are looked at; after the last one is the first.
    QVERIFY(stage_.activateWindow());
    for (int number = 0; number < 4; ++number) {
        stage_.input.key(QStringLiteral("ctrl+Page_Down"));
        QVERIFY(pages_.waitForPages({}, number + 2));
        QVERIFY(number == 0 || pages_.pages(expected.at(number)).size() == 1);
    }
    QCOMPARE(keptAddresses(), expected);
}

void AgentWorkspaceTest::signingOutOnThePage() {
    QVERIFY(!stage_.keptSignIn().isEmpty());
    const QString page = searchPath(3);
    QVERIFY(stage_.clickIn(page, QStringLiteral("document.querySelector('.account > summary')")));
    QVERIFY(stage_.clickIn(page, QStringLiteral("document.querySelector('a[href^=\"/accounts/Logout\"]')")));
    QTRY_VERIFY_WITH_TIMEOUT(stage_.keptSignIn().isEmpty(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(stage_.keptTabs().isEmpty(), patience);
    // Nothing is left but the question who wants to sign in now.
    QVERIFY(pages_.waitForPages(QStringLiteral("/o/oauth2/auth?"), 1));
    QVERIFY(pages_.waitForPages({}, 1));
    QCOMPARE(stage_.quenby.terminate(), 0);
}

QTEST_MAIN(AgentWorkspaceTest)
#include "tst_agent_workspace.moc"
