// What is captured on the desktop and goes into the Drive, in the real program: a screenshot on demand, the clipboard,
// what a screenshot tool saves, and screen recordings, one of which is killed.

#include "core/FolderBookmark.h"
#include "tests/desktop/support/AgentStage.h"
#include "tests/localdrive/LocalClient.h"
#include "tests/support/MovieFrames.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QMimeData>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QSettings>
#include <QTest>

#include <csignal>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;

} // namespace

class AgentCaptureTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void aScreenshotOnDemand();
    void aScreenshotThatIsCancelled();
    void copiedFilesAreUploadedAfterAQuestion();
    void aToolsScreenshotIsUploadedOnce();
    void aRegionIsRecordedReviewedAndUploaded();
    void escapeAbandonsARecording();
    void aKilledRecordingIsShownAtTheNextStart();
    void quitAsksWhileSomethingIsRecorded();

private:
    QRect strip() { return stage_.input.geometry(strips().value(0)); }
    // The rightmost first: the gauge, then the stop item.
    QList<WindowId> strips() {
        QList<WindowId> found = stage_.input.findAll(QStringLiteral("Quenby Status"), stage_.quenby.pid());
        std::sort(found.begin(), found.end(), [this](WindowId one, WindowId other) {
            return stage_.input.geometry(one).right() > stage_.input.geometry(other).right();
        });
        return found;
    }
    bool choose(const QString& mnemonic) { return stage_.chooseFromItemMenu(strip().center(), {mnemonic}); }
    // In the window manager's frames, the uppermost last.
    static bool isAbove(WindowId window, WindowId other) {
        QProcess xprop;
        xprop.start(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST_STACKING")});
        xprop.waitForFinished(patience);
        const QByteArray order = xprop.readAllStandardOutput();
        return other != 0 &&
               order.indexOf(QByteArray::number(window, 16)) > order.indexOf(QByteArray::number(other, 16));
    }
    // Waits for a window that is as large as the screen and on top.
    bool waitForOverlay() {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        return QTest::qWaitFor(
            [&] {
                for (const WindowId window : stage_.input.topWindows())
                    if (!before_.contains(window) && stage_.input.geometry(window) == screen)
                        return true;
                return false;
            },
            patience);
    }
    void drag(const QPoint& from, const QPoint& to) {
        stage_.input.moveTo(from);
        stage_.input.press();
        stage_.input.moveTo((from + to) / 2);
        stage_.input.moveTo(to);
        stage_.input.release();
    }
    // Title and identifier of what lies in the folder of this name.
    QList<QPair<QString, QString>> inFolder(const QString& name) {
        const LocalClient client(stage_.drive);
        QList<QPair<QString, QString>> found;
        for (const QString& folder : client.filesNamed(name)) {
            const QJsonObject list =
                jsonOf(client.call(QStringLiteral("drive.children.list"), {{QStringLiteral("folderId"), folder}}).body);
            for (const QJsonValue child : list[QLatin1String("result")][QLatin1String("items")].toArray()) {
                const QString id = child[QLatin1String("id")].toString();
                const QJsonObject file =
                    jsonOf(client.call(QStringLiteral("drive.files.get"), {{QStringLiteral("fileId"), id}}).body);
                found.append({file[QLatin1String("result")][QLatin1String("title")].toString(), id});
            }
        }
        return found;
    }
    QString recordings() const { return stage_.home.path(QStringLiteral("cache/quenby-local/ScreenCastCache")); }
    // Draws the region and presses the button in its middle; waits until the movie grows.
    bool recordRegion(const QRect& region);
    WindowId reviewWindow() { return stage_.input.waitForWindow(movieName(), stage_.quenby.pid()); }
    QString movieName() const {
        return QDir(recordings()).entryList({QStringLiteral("*.mov")}, QDir::Files, QDir::Time).value(0);
    }

    AgentStage stage_;
    QList<WindowId> before_;
    QString pictures_;
};

void AgentCaptureTest::initTestCase() {
    pictures_ = stage_.home.path(QStringLiteral("Pictures"));
    QVERIFY(QDir().mkpath(pictures_));
    const auto bookmark = makeFolderBookmark(QFile::encodeName(pictures_));
    QVERIFY(bookmark);
    QVERIFY(QDir().mkpath(QFileInfo(stage_.home.settingsPath()).path()));
    QSettings settings(stage_.home.settingsPath(), QSettings::IniFormat);
    settings.setValue(QStringLiteral("screenshotShare"), true);
    settings.setValue(QStringLiteral("DirectoryBookmark"),
                      QVariantMap{{QStringLiteral("path"), pictures_}, {QStringLiteral("bookmarkData"), *bookmark}});
    settings.sync();
    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
    QVERIFY(stage_.startAndSignIn());
}

// --- Pictures and files ---------------------------------------------------------------------------------------------

void AgentCaptureTest::aScreenshotOnDemand() {
    const WindowId window = stage_.waitForWindow();
    QVERIFY(window != 0);
    before_ = stage_.input.topWindows();
    QVERIFY(choose(QStringLiteral("a")));
    QVERIFY(waitForOverlay());
    QVERIFY(!stage_.input.isVisible(window)); // it would be in the picture
    drag({200, 150}, {399, 249});
    QTRY_COMPARE_WITH_TIMEOUT(inFolder(QStringLiteral("Screen Shot")).size(), 1, patience);
    const auto [title, id] = inFolder(QStringLiteral("Screen Shot")).first();
    static const QRegularExpression form(
        QStringLiteral("^Screen Shot \\d{4}-\\d\\d-\\d\\d at \\d\\d\\.\\d\\d\\.\\d\\d [AP]M\\.png$"));
    QVERIFY2(form.match(title).hasMatch(), qPrintable(title));
    const QString copy = stage_.home.path(QStringLiteral("copy.png"));
    stage_.quenby.ask({QStringLiteral("download"), id, QStringLiteral("-o"), copy});
    QCOMPARE(QImage(copy).size(), QSize(200, 100));
}

void AgentCaptureTest::aScreenshotThatIsCancelled() {
    before_ = stage_.input.topWindows();
    QVERIFY(choose(QStringLiteral("a")));
    QVERIFY(waitForOverlay());
    stage_.input.key(QStringLiteral("Escape"));
    QTRY_COMPARE_WITH_TIMEOUT(stage_.input.topWindows().size(), before_.size(), patience);
    QCOMPARE(inFolder(QStringLiteral("Screen Shot")).size(), 1);
    QCOMPARE(stage_.alert(), 0U);
}

void AgentCaptureTest::copiedFilesAreUploadedAfterAQuestion() {
    const QString title = QStringLiteral("Copied file.txt");
    const QString file = stage_.home.makeFile(title, "Copied.");
    auto data = std::make_unique<QMimeData>();
    data->setUrls({QUrl::fromLocalFile(file), QUrl::fromLocalFile(pictures_)});
    QGuiApplication::clipboard()->setMimeData(data.release());
    QVERIFY(choose(QStringLiteral("b")));
    QVERIFY(stage_.dismissAlert());
    QVERIFY(choose(QStringLiteral("b")));
    const WindowId again = stage_.waitForAlert();
    QVERIFY(again != 0 && stage_.input.activate(again));
    stage_.input.key(QStringLiteral("Return"));
    QTRY_COMPARE_WITH_TIMEOUT(inFolder(QStringLiteral("Clip board")).size(), 1, patience);
    QCOMPARE(inFolder(QStringLiteral("Clip board")).first().first, title);
    QCOMPARE(stage_.countInDrive(QStringLiteral("Clip board")), 1);
}

void AgentCaptureTest::aToolsScreenshotIsUploadedOnce() {
    QProcess tool;
    tool.setWorkingDirectory(pictures_);
    tool.setProcessEnvironment(stage_.home.environment());
    tool.start(QStringLiteral("scrot"), QStringList());
    QVERIFY(tool.waitForFinished(patience));
    QCOMPARE(tool.exitCode(), 0);
    const QString name = QDir(pictures_).entryList(QDir::Files).value(0);
    QVERIFY(!name.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(name), 1, patience);
    QVERIFY(QFile::copy(pictures_ + QLatin1Char('/') + name, pictures_ + QStringLiteral("/copy of ") + name));
    // The next one is told after whatever becomes of the copy.
    QTest::qWait(1100); // scrot's names tell seconds
    tool.start(QStringLiteral("scrot"), QStringList());
    QVERIFY(tool.waitForFinished(patience));
    QTRY_COMPARE_WITH_TIMEOUT(inFolder(QStringLiteral("Screen Shot")).size(), 3, patience);
    QCOMPARE(stage_.countInDrive(QStringLiteral("copy of ") + name), 0);
}

// --- Recordings -----------------------------------------------------------------------------------------------------

bool AgentCaptureTest::recordRegion(const QRect& region) {
    before_ = stage_.input.topWindows();
    if (!choose(QStringLiteral("r")) || !waitForOverlay())
        return false;
    drag(region.topLeft(), region.bottomRight() + QPoint(1, 1));
    stage_.input.click(region.center());
    const QStringList unfinished{QStringLiteral(".*.mov.part")};
    return QTest::qWaitFor(
        [&] {
            const QFileInfoList found = QDir(recordings()).entryInfoList(unfinished, QDir::Files | QDir::Hidden);
            return !found.isEmpty() && found.first().size() > 10'000;
        },
        patience);
}

void AgentCaptureTest::aRegionIsRecordedReviewedAndUploaded() {
    QVERIFY(recordRegion({101, 203, 401, 301}));
    QTRY_COMPARE_WITH_TIMEOUT(strips().size(), 2, patience);
    stage_.input.click(stage_.input.geometry(strips().last()).center());
    QTRY_COMPARE_WITH_TIMEOUT(strips().size(), 1, patience);
    const WindowId review = reviewWindow();
    QVERIFY(review != 0);
    const auto facts = movieFacts(recordings() + QLatin1Char('/') + movieName());
    QVERIFY(facts.has_value());
    QCOMPARE(facts->size, QSize(402, 302)); // even
    QCOMPARE(facts->codec, QStringLiteral("h264"));
    QVERIFY(facts->frameCount() > 1);
    QVERIFY(stage_.input.activate(review));
    stage_.input.key(QStringLiteral("alt+u"));
    QVERIFY(stage_.input.waitUntilGone(review));
    QTRY_COMPARE_WITH_TIMEOUT(inFolder(QStringLiteral("Screen Cast")).size(), 1, patience);
    QCOMPARE(inFolder(QStringLiteral("Screen Cast")).first().first, movieName());
}

void AgentCaptureTest::escapeAbandonsARecording() {
    before_ = stage_.input.topWindows();
    QVERIFY(choose(QStringLiteral("r")));
    QVERIFY(waitForOverlay());
    QTRY_COMPARE_WITH_TIMEOUT(strips().size(), 2, patience);
    stage_.input.key(QStringLiteral("Escape"));
    QTRY_COMPARE_WITH_TIMEOUT(strips().size(), 1, patience);
    QTRY_COMPARE_WITH_TIMEOUT(stage_.input.topWindows().size(), before_.size(), patience);
}

void AgentCaptureTest::aKilledRecordingIsShownAtTheNextStart() {
    QVERIFY(QFile::remove(recordings() + QLatin1Char('/') + movieName()));
    QVERIFY(recordRegion({300, 200, 300, 200}));
    QCOMPARE(::kill(static_cast<pid_t>(stage_.quenby.pid()), SIGKILL), 0);
    QCOMPARE(stage_.quenby.waitForEnd(), 128 + SIGKILL);
    QVERIFY(stage_.startSignedIn());
    QTRY_VERIFY_WITH_TIMEOUT(!movieName().isEmpty(), patience);
    const WindowId review = reviewWindow();
    QVERIFY(review != 0);
    QTRY_VERIFY_WITH_TIMEOUT(isAbove(review, stage_.window()), patience);
    const auto facts = movieFacts(recordings() + QLatin1Char('/') + movieName());
    QVERIFY(facts && facts->frameCount() > 1);
    QCOMPARE(facts->size, QSize(300, 200));
}

void AgentCaptureTest::quitAsksWhileSomethingIsRecorded() {
    QVERIFY(stage_.quenby.waitForTrace("gauge"));
    QVERIFY(recordRegion({300, 200, 300, 200}));
    QVERIFY(choose(QStringLiteral("q")));
    const WindowId question = stage_.waitForAlert();
    QVERIFY(question != 0 && stage_.input.activate(question));
    stage_.input.key(QStringLiteral("Return"));
    QCOMPARE(stage_.quenby.waitForEnd(), 0);
    QVERIFY(stage_.startSignedIn());
    QVERIFY(reviewWindow() != 0); // it is not lost
}

QTEST_MAIN(AgentCaptureTest)
#include "tst_agent_capture.moc"
