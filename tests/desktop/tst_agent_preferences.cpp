// The preferences of the real program: their window, and what the settings do, by whomever they were written. Real keys
// under a window manager, a real session starter, restarts in between.

#include "tests/desktop/support/AgentStage.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QProcess>
#include <QSaveFile>
#include <QTest>
#include <QWidget>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = QuenbyProcess::patience;

// Another program's window, which notes the keys that reach it.
class Elsewhere : public QWidget {
public:
    Elsewhere() {
        setWindowTitle(u"Elsewhere"_s);
        resize(300, 100);
    }
    QList<int> keyCodes;

protected:
    void keyPressEvent(QKeyEvent* event) override { keyCodes.append(int(event->nativeScanCode())); }
};

// Where the letters lie on the virtual keyboard: the second is Z in the German layout, and Y in the American one.
constexpr int keyJ = 44;
constexpr int keyYAmerican = 29;
constexpr int keyYGerman = 52;

void setLayout(const QString& layout) { QCOMPARE(QProcess::execute(u"setxkbmap"_s, {layout}), 0); }

} // namespace

class AgentPreferencesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }
    void cleanupTestCase() { setLayout(u"us"_s); }

    void theFirstStartWritesTheFirstValues();
    void settingsOfAnotherProgramActAtOnce();
    void theShortcutFiresFromElsewhere();
    void theShortcutFollowsTheLayout();
    void theWindowHasThreePanes();
    void theItemMovesWithItsSetting();
    void everythingIsThereAfterARestart();
    void theSessionStartsTheProgramHidden();
    void theLoginItemGoesCleanly();

private:
    // Empty when it is not there.
    QRect strip() {
        const WindowId window = stage_.input.find(u"Quenby Status"_s);
        return window == 0 ? QRect() : stage_.input.geometry(window);
    }
    QString findEntry() const;
    // As another program would: the whole file, replaced in one step.
    void writeSetting(const QByteArray& key, const QByteArray& value);
    // The program has read it afterwards: another setting that is written later is seen in the strip.
    void writeSettingAndWait(const QByteArray& key, const QByteArray& value);
    void hideWorkspace();
    void press(int keyCode, const QString& modifiers = u"ctrl+alt"_s) {
        stage_.input.key(modifiers + u'+' + QString::number(keyCode));
    }
    bool comesToTheFront() { return stage_.waitForWindow() != 0; }
    bool reachesElsewhere(int keyCode);

    AgentStage stage_;
    Elsewhere elsewhere_;
    bool isUsageShown_ = false; // in the strip
};

void AgentPreferencesTest::initTestCase() {
    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
    setLayout(u"us"_s);
    elsewhere_.show();
}

void AgentPreferencesTest::writeSetting(const QByteArray& key, const QByteArray& value) {
    QFile file(stage_.home.settingsPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QList<QByteArray> lines = file.readAll().split('\n');
    lines.removeIf([&key](const QByteArray& line) { return line.startsWith(QByteArray(key + '=')); });
    lines.insert(lines.indexOf("[General]") + 1, key + '=' + value);
    QSaveFile changed(file.fileName());
    QVERIFY(changed.open(QIODevice::WriteOnly) && changed.write(lines.join('\n')) > 0 && changed.commit());
}

void AgentPreferencesTest::writeSettingAndWait(const QByteArray& key, const QByteArray& value) {
    writeSetting(key, value);
    const int before = strip().width();
    isUsageShown_ = !isUsageShown_;
    writeSetting("showUsegeText", isUsageShown_ ? "true" : "false");
    const auto hasFollowed = [&] {
        const int width = strip().width();
        return isUsageShown_ ? width > before : width > 0 && width < before;
    };
    QTRY_VERIFY_WITH_TIMEOUT(hasFollowed(), patience);
}

void AgentPreferencesTest::hideWorkspace() {
    const WindowId window = stage_.waitForWindow();
    QVERIFY(window != 0 && stage_.input.activate(window));
    stage_.input.key(u"ctrl+w"_s);
    QVERIFY(stage_.input.waitUntilGone(window));
    elsewhere_.keyCodes.clear();
    QVERIFY(stage_.input.activate(WindowId(elsewhere_.winId())));
}

bool AgentPreferencesTest::reachesElsewhere(int keyCode) {
    elsewhere_.keyCodes.clear();
    press(keyCode);
    return QTest::qWaitFor([&] { return elsewhere_.keyCodes.contains(keyCode); }, patience);
}

void AgentPreferencesTest::theFirstStartWritesTheFirstValues() {
    QVERIFY(stage_.startAndSignIn());
    for (const char* line : {"notificationDisplay=true", "launchAtLogin=false", "screenshotShare=false",
                             "showMenubarIcon=false", "showUsegeText=false"})
        QTRY_VERIFY2_WITH_TIMEOUT(stage_.isSet(line), line, patience);
    QVERIFY(findEntry().isEmpty());
}

void AgentPreferencesTest::settingsOfAnotherProgramActAtOnce() {
    QTRY_VERIFY_WITH_TIMEOUT(!strip().isEmpty(), patience);
    writeSetting("showMenubarIcon", "true");
    const int before = strip().width();
    writeSetting("showUsegeText", "true");
    QTRY_VERIFY_WITH_TIMEOUT(strip().width() > before, patience);
    writeSetting("showUsegeText", "no truth");
    QTRY_COMPARE_WITH_TIMEOUT(strip().width(), before, patience);
}

void AgentPreferencesTest::theShortcutFiresFromElsewhere() {
    hideWorkspace();
    QVERIFY(reachesElsewhere(keyJ)); // is nobody's yet
    writeSetting("customShortcut", "Ctrl+Alt+J");
    writeSetting("customShortcutEnabled", "true");
    QTRY_VERIFY_WITH_TIMEOUT((press(keyJ), stage_.window() != 0), patience);
    // In front, with the keyboard: what closes a window closes this one.
    QVERIFY(comesToTheFront());
    stage_.input.key(u"ctrl+w"_s);
    QTRY_COMPARE_WITH_TIMEOUT(stage_.window(), 0U, patience);

    writeSettingAndWait("customShortcut", "Ctrl+Alt+Y");
    QVERIFY(stage_.input.activate(WindowId(elsewhere_.winId())));
    QVERIFY(reachesElsewhere(keyJ));
    press(keyYAmerican);
    QVERIFY(comesToTheFront());
    hideWorkspace();

    writeSettingAndWait("customShortcutEnabled", "false");
    QVERIFY(reachesElsewhere(keyYAmerican));
    QCOMPARE(stage_.window(), 0U);
    writeSetting("customShortcutEnabled", "true");
    QTRY_VERIFY_WITH_TIMEOUT((press(keyYAmerican), stage_.window() != 0), patience);
    hideWorkspace();
}

void AgentPreferencesTest::theShortcutFollowsTheLayout() {
    setLayout(u"de"_s);
    QTRY_VERIFY_WITH_TIMEOUT((press(keyYGerman), stage_.window() != 0), patience);
    hideWorkspace();
    QVERIFY(reachesElsewhere(keyYAmerican)); // is Z now
    QCOMPARE(stage_.window(), 0U);
    // No key of this layout makes a Y; the other layout of the keyboard has one.
    setLayout(u"ru,us"_s);
    QTRY_VERIFY_WITH_TIMEOUT((press(keyYAmerican), stage_.window() != 0), patience);
    hideWorkspace();
    setLayout(u"us"_s);
    stage_.input.key(u"Caps_Lock"_s);
    stage_.input.key(u"Num_Lock"_s);
    QTRY_VERIFY_WITH_TIMEOUT((press(keyYAmerican), stage_.window() != 0), patience);
    stage_.input.key(u"Caps_Lock"_s);
    stage_.input.key(u"Num_Lock"_s);
}

void AgentPreferencesTest::theWindowHasThreePanes() {
    QVERIFY(stage_.chooseFromWindowMenu({u"p"_s}));
    const WindowId window = stage_.input.waitForWindow(u"Preferences"_s, stage_.quenby.pid());
    QVERIFY(window != 0 && stage_.input.activate(window));
    const auto geometry = [&] { return stage_.input.geometry(window); };
    QTRY_COMPARE_WITH_TIMEOUT(geometry().height(), 332, patience);
    const int top = geometry().top();
    for (const auto& [key, height] : {std::pair{u"ctrl+2"_s, 230}, {u"ctrl+3"_s, 260}, {u"ctrl+1"_s, 332}}) {
        stage_.input.key(key);
        QTRY_COMPARE_WITH_TIMEOUT(geometry().height(), height, patience);
        QCOMPARE(geometry().top(), top);
    }
    stage_.input.key(u"Escape"_s);
    QVERIFY(stage_.input.waitUntilGone(window));
}

void AgentPreferencesTest::theItemMovesWithItsSetting() {
    hideWorkspace();
    // There is no tray here, and the item stays where it can be seen.
    writeSetting("statusItemPlace", "tray");
    QVERIFY(reachesElsewhere(keyJ)); // some time
    QVERIFY(!strip().isEmpty());
    writeSetting("statusItemPlace", "strip");
    QTRY_VERIFY_WITH_TIMEOUT(!strip().isEmpty(), patience);
}

void AgentPreferencesTest::everythingIsThereAfterARestart() {
    const int width = strip().width();
    writeSetting("launchAtLogin", "true");
    QTRY_VERIFY_WITH_TIMEOUT(!findEntry().isEmpty(), patience);
    QCOMPARE(stage_.quenby.terminate(), 0);
    QVERIFY(stage_.startSignedIn());
    for (const char* line : {"launchAtLogin=true", "showMenubarIcon=true", "customShortcut=Ctrl+Alt+Y",
                             "customShortcutEnabled=true", "statusItemPlace=strip"})
        QVERIFY2(stage_.isSet(line), line);
    QTRY_COMPARE_WITH_TIMEOUT(strip().width(), width, patience);
    hideWorkspace();
    press(keyYAmerican);
    QVERIFY(comesToTheFront());
}

QString AgentPreferencesTest::findEntry() const {
    const QDir folder(stage_.home.path(u"config/autostart"_s));
    const QStringList entries = folder.entryList({u"*.desktop"_s}, QDir::Files);
    return entries.isEmpty() ? QString() : folder.filePath(entries.first());
}

void AgentPreferencesTest::theSessionStartsTheProgramHidden() {
    QCOMPARE(QProcess::execute(u"desktop-file-validate"_s, {findEntry()}), 0);
    QProcess starter;
    QProcessEnvironment environment = stage_.home.environment();
    environment.insert(u"XDG_CONFIG_DIRS"_s, stage_.home.path(u"nothing"_s));
    starter.setProcessEnvironment(environment);
    starter.start(u"dex"_s, {u"--autostart"_s, u"--environment"_s, u"Quenby"_s});
    QVERIFY(starter.waitForFinished(patience)); // and nobody reads any more what the program that it started writes
    // The newcomer takes the place of the one that runs.
    QCOMPARE(stage_.quenby.waitForEnd(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!strip().isEmpty(), patience);
    QCOMPARE(stage_.window(), 0U);
    QVERIFY(stage_.startSignedIn());
}

void AgentPreferencesTest::theLoginItemGoesCleanly() {
    writeSetting("launchAtLogin", "false");
    QTRY_VERIFY_WITH_TIMEOUT(findEntry().isEmpty(), patience);
    QCOMPARE(stage_.quenby.terminate(), 0);
}

QTEST_MAIN(AgentPreferencesTest)
#include "tst_agent_preferences.moc"
