// The program on a real display, with a real pointer and keyboard: what lies in the file are exactly the pixels that
// were chosen.
#include "platform/linux/screencapture/CapturePainter.h"
#include "platform/linux/screencapture/InputGrab.h"
#include "platform/linux/screencapture/ProcessScreenCaptureTool.h"
#include "tests/platform/portal/FakePortal.h"
#include "tests/platform/screencapture/CaptureProgram.h"
#include "tests/platform/screencapture/PaintedDesktop.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = CaptureProgram::patience;

// In place of those of the call before. Each has a name and a geometry.
void setMonitors(const QStringList& monitors) {
    static QStringList names;
    for (const QString& name : std::exchange(names, {}))
        outputOf(QStringLiteral("xrandr"), {QStringLiteral("--delmonitor"), name});
    for (const QString& monitor : monitors) {
        names.append(monitor.section(QLatin1Char(' '), 0, 0));
        outputOf(QStringLiteral("xrandr"),
                 {QStringLiteral("--setmonitor"), names.last(), monitor.section(QLatin1Char(' '), 1),
                  names.size() == 1 ? QStringLiteral("screen") : QStringLiteral("none")});
    }
}

} // namespace

class tst_ScreenCapture : public QObject {
    Q_OBJECT

    QString path() const { return folder_->filePath(QStringLiteral("picture.png")); }
    QStringList arguments() const { return {QStringLiteral("-i"), path()}; }
    QStringList files() const {
        return QDir(folder_->path()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }
    QImage picture() const { return QImage(path()).convertToFormat(QImage::Format_RGB32); }
    // Each line is done when the pointer is where the line before has left it.
    static void use(const QStringList& lines) {
        for (const QString& line : lines) {
            if (!line.startsWith(QLatin1Char('@'))) {
                useInput(line);
                continue;
            }
            const QStringList place = line.mid(1).split(QLatin1Char(' '));
            const QPoint expected(place.at(0).toInt(), place.at(1).toInt());
            QTRY_COMPARE_WITH_TIMEOUT(QCursor::pos(), expected, patience);
        }
    }

private Q_SLOTS:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        desktop_ = std::make_unique<PaintedDesktop>(QSize(1280, 800));
        useInput(QStringLiteral("mousemove 640 700"));
        QVERIFY(desktop_->isSeen());
    }
    void cleanup() {
        desktop_.reset();
        setMonitors({});
    }

    void parts_data() {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QRect>("part");
        const auto row = [](const char* name, const char* lines, const QRect& part) {
            QTest::newRow(name) << QString::fromLatin1(lines).split(QLatin1Char('|')) << part;
        };
        row("a drag", "mousemove 100 80 mousedown 1 mousemove 200 150 mousemove 299 179 mouseup 1",
            {100, 80, 200, 100});
        row("to the corner", "mousemove 400 300 mousedown 1 mousemove 200 150 mousemove 0 0 mouseup 1",
            {0, 0, 401, 301});
        row("keys move the pointer and the corner",
            "mousemove 100 100|key Left key shift+Up|@99 90|mousedown 1 mousemove 150 150|@150 150|key Right key Right "
            "key shift+Down|@152 160|mouseup 1 key Return",
            {99, 90, 54, 71});
        row("keys alone", "mousemove 50 60|@50 60|key ctrl+Right key ctrl+shift+Down key Right key KP_Enter",
            {51, 60, 2, 11});
        row("carried by the space bar",
            "mousemove 100 100 mousedown 1 mousemove 150 150 keydown space mousemove 170 160 keyup space mousemove 180 "
            "180 mouseup 1",
            {120, 110, 61, 71});
        row("a double click", "mousemove 100 100 click --repeat 2 --delay 30 1", {0, 0, 1280, 800});
        row("Enter", "key Return", {0, 0, 1280, 800});
    }
    void parts() {
        QFETCH(QStringList, lines);
        QFETCH(QRect, part);
        CaptureProgram program(arguments());
        QVERIFY(program.waitUntilOpen());
        use(lines);
        QCOMPARE(program.waitForEnd(), 0);
        QCOMPARE(files(), QStringList{QStringLiteral("picture.png")});
        QCOMPARE(picture(), desktop_->picture().copy(part));
        QCOMPARE(QImage(path()).text(QStringLiteral("Software")), QStringLiteral("Quenby"));
        QVERIFY(desktop_->isSeen());
    }

    // What is painted bit by bit while the pointer moves is what the model says, everywhere.
    void theScreenShowsTheChoice() {
        CaptureSelection selection({desktop_->rect(), {{desktop_->rect(), 1}}, {}}, QPoint(300, 200));
        const auto isShown = [&] {
            const QImage expected = paintedScene(sceneOf(selection), desktop_->picture(), desktop_->rect());
            return settles([&] { return PaintedDesktop::seen(desktop_->rect()) == expected; });
        };
        useInput(QStringLiteral("mousemove 300 200"));
        CaptureProgram program(arguments());
        QVERIFY(program.waitUntilOpen());
        QVERIFY(isShown());
        useInput(QStringLiteral("mousedown 1 mousemove 400 300 mousemove 700 250 mousemove 600 500"));
        selection.press({300, 200}, {});
        selection.movePointer({600, 500});
        QVERIFY(isShown());
        {
            // Something comes up above it and goes again, as a notification does.
            const PaintedDesktop above(QSize(500, 400), true);
            QVERIFY(above.isSeen());
        }
        QVERIFY(isShown());
        useInput(QStringLiteral("key Escape mouseup 1"));
        QCOMPARE(program.waitForEnd(), 0);
    }

    void windows_data() {
        QTest::addColumn<QPoint>("offset"); // from the upper window's contents; far away: the screen
        QTest::addColumn<int>("chosen");
        QTest::newRow("the upper one where both are") << QPoint(10, 10) << 1;
        QTest::newRow("its frame") << QPoint(50, -8) << 1;
        QTest::newRow("the lower one") << QPoint(-60, -60) << 0;
        QTest::newRow("none") << QPoint(500, 300) << -1;
    }
    void windows() {
        QFETCH(QPoint, offset);
        QFETCH(int, chosen);
        QWidget windows[2];
        for (int i : {0, 1}) {
            windows[i].setGeometry(200 + 100 * i, 200 + 100 * i, 300, 200);
            windows[i].setStyleSheet(i ? QStringLiteral("background: #336699") : QStringLiteral("background: #994411"));
            windows[i].show();
            QVERIFY(QTest::qWaitForWindowActive(&windows[i]));
        }
        QVERIFY(settles([&] { return windows[1].frameGeometry().height() > windows[1].height(); }));
        const QRect all = desktop_->rect();
        const QRect frame = chosen < 0 ? all : windows[chosen].frameGeometry();
        const QPoint pointer = windows[1].geometry().topLeft() + offset;
        useInput(QStringLiteral("mousemove %1 %2").arg(pointer.x()).arg(pointer.y()));
        QImage before;
        QVERIFY(settles([&] { return std::exchange(before, PaintedDesktop::seen(all)) == before; }));

        CaptureProgram program(arguments());
        QVERIFY(program.waitUntilOpen());
        useInput(QStringLiteral("key space click 1"));
        QCOMPARE(program.waitForEnd(), 0);
        QCOMPARE(picture(), before.copy(frame));
    }

    void leaving_data() {
        QTest::addColumn<QString>("input"); // empty: the program is told to end
        QTest::newRow("Escape") << QStringLiteral("key Escape");
        QTest::newRow("Escape in a drag")
            << QStringLiteral("mousemove 100 100 mousedown 1 mousemove 300 300 key Escape mouseup 1");
        QTest::newRow("the right button") << QStringLiteral("click 3");
        QTest::newRow("the end") << QString();
    }
    void leaving() {
        QFETCH(QString, input);
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("as before") == 9);
        file.close();
        CaptureProgram program(arguments());
        QVERIFY(program.waitUntilOpen());
        if (input.isEmpty())
            program.terminate();
        else
            useInput(input);
        QCOMPARE(program.waitForEnd(), 0);
        QCOMPARE(program.words(), QByteArray());
        QCOMPARE(files(), QStringList{QStringLiteral("picture.png")});
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), "as before");
        QVERIFY(desktop_->isSeen());
    }

    void whatIsThereIsReplaced() {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no picture") == 10);
        file.close();
        CaptureProgram program({QStringLiteral("-i"), QStringLiteral("picture.png")}, {}, folder_->path());
        QVERIFY(program.waitUntilOpen());
        useInput(QStringLiteral("key Return"));
        QCOMPARE(program.waitForEnd(), 0);
        QCOMPARE(files(), QStringList{QStringLiteral("picture.png")});
        QCOMPARE(picture(), desktop_->picture());
    }

    void troubles_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("environment");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("word");
        const QString i = QStringLiteral("-i");
        const QString good = QStringLiteral("/tmp/quenby-never-made.png");
        QTest::newRow("no words") << QStringList{} << QStringList{} << 2 << QByteArray("usage");
        QTest::newRow("other words") << QStringList{QStringLiteral("-w"), good} << QStringList{} << 2
                                     << QByteArray("usage");
        QTest::newRow("no folder") << QStringList{i, QStringLiteral("/nowhere/at/all.png")} << QStringList{} << 1
                                   << QByteArray("No such file");
        QTest::newRow("a folder") << QStringList{i, QStringLiteral("/tmp")} << QStringList{} << 1
                                  << QByteArray("directory");
        QTest::newRow("no screen") << QStringList{i, good} << QStringList{QStringLiteral("DISPLAY")} << 1
                                   << QByteArray("no screen");
    }
    void troubles() {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, environment);
        QFETCH(QByteArray, word);
        CaptureProgram program(arguments, environment);
        QTEST(program.waitForEnd(), "code");
        const QByteArray words = program.words();
        QVERIFY2(words.contains(word) && words.endsWith('\n'), words.constData());
    }

    // Nothing can be written there, even by the system's administrator, which is found out only after the choice.
    void aFolderThatTakesNothing() {
        CaptureProgram program({QStringLiteral("-i"), QStringLiteral("/proc/self/picture.png")});
        if (program.waitUntilOpen())
            useInput(QStringLiteral("key Return"));
        QCOMPARE(program.waitForEnd(), 1);
        QVERIFY(program.words().startsWith("The picture could not be saved in /proc/self: "));
    }

    void anotherProgramHasThePointer() {
        const auto display = XDisplay::ofApplication();
        QVERIFY(display);
        auto grab = std::make_unique<InputGrab>(*display);
        bool isTaken = false;
        grab->take(XCB_CURSOR_NONE, [&isTaken](bool answer) { isTaken = answer; });
        QTRY_VERIFY_WITH_TIMEOUT(isTaken, patience);
        CaptureProgram inVain(arguments());
        QCOMPARE(inVain.waitForEnd(), 1);
        QVERIFY(inVain.words().startsWith("Another program keeps the pointer"));

        // Given up in time, it is had.
        CaptureProgram program(arguments());
        QVERIFY(QTest::qWaitFor([] { return CaptureProgram::isOpen(true); }, patience));
        grab.reset();
        QVERIFY(program.waitUntilOpen());
        useInput(QStringLiteral("key Return"));
        QCOMPARE(program.waitForEnd(), 0);
        QCOMPARE(picture(), desktop_->picture());
    }

    void screens_data() {
        QTest::addColumn<QString>("scales");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QRect>("part");
        QTest::addColumn<qreal>("scale");
        const QRect right(600, 40, 679, 701);
        const QString rightAtEnter = QStringLiteral("mousemove 1000 500 key Return");
        QTest::newRow("one") << QStringLiteral("left=1;right=2") << rightAtEnter << right << 2.0;
        QTest::newRow("odd sizes at a fraction") << QStringLiteral("left=2;right=1.5") << rightAtEnter << right << 1.5;
        QTest::newRow("the other") << QStringLiteral("left=1;right=2") << QStringLiteral("mousemove 200 200 key Return")
                                   << QRect(0, 0, 600, 800) << 1.0;
        QTest::newRow("all") << QStringLiteral("left=1;right=2") << QStringLiteral("key ctrl+Return")
                             << QRect(0, 0, 1280, 800) << 2.0;
        QTest::newRow("over the border")
            << QStringLiteral("left=1;right=1.5")
            << QStringLiteral("mousemove 401 201 mousedown 1 mousemove 500 300 mousemove 1001 401 mouseup 1")
            << QRect(401, 201, 601, 201) << 1.5;
        QTest::newRow("to the last pixel")
            << QStringLiteral("left=1;right=1.5")
            << QStringLiteral("mousemove 700 50 mousedown 1 mousemove 900 300 mousemove 1278 740 mouseup 1")
            << QRect(700, 50, 579, 691) << 1.5;
    }
    void screens() {
        QFETCH(QString, scales);
        QFETCH(QString, input);
        QFETCH(QRect, part);
        QFETCH(qreal, scale);
        setMonitors({QStringLiteral("left 600/160x800/210+0+0"), QStringLiteral("right 679/170x701/200+600+40")});
        QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().size(), 2, patience);
        QVERIFY(desktop_->isSeen());
        CaptureProgram program(arguments(), {QStringLiteral("QT_SCREEN_SCALE_FACTORS=") + scales});
        QVERIFY(program.waitUntilOpen());
        useInput(input);
        QCOMPARE(program.waitForEnd(), 0);
        QCOMPARE(picture(), desktop_->picture().copy(part));
        QCOMPARE(qRound(QImage(path()).dotsPerMeterX() * 0.0254), qRound(96 * scale));
    }

    void screensThatChange() {
        CaptureProgram program(arguments());
        QVERIFY(program.waitUntilOpen());
        setMonitors({QStringLiteral("left 600/160x800/210+0+0")});
        QCOMPARE(program.waitForEnd(), 1);
        QVERIFY(program.words().startsWith("The screens changed"));
        QCOMPARE(files(), QStringList());
    }

    // There the desktop itself lets the user choose, and its file becomes ours.
    void onWayland_data() {
        QTest::addColumn<int>("does");
        QTest::addColumn<int>("code");
        QTest::newRow("taken") << int(FakePortal::Does::grant) << 0;
        QTest::newRow("declined") << int(FakePortal::Does::decline) << 0;
        QTest::newRow("trouble") << int(FakePortal::Does::refuse) << 1;
        QTest::newRow("told to end") << int(FakePortal::Does::wait) << 0;
    }
    void onWayland() {
        QFETCH(int, does);
        QFETCH(int, code);
        const auto what = static_cast<FakePortal::Does>(does);
        const QTemporaryDir memory(QStringLiteral("/dev/shm/quenby-XXXXXX")); // another file system
        const QString made = memory.filePath(QStringLiteral("made by the desktop.png"));
        QVERIFY(desktop_->picture().save(made));
        FakePortal portal;
        portal.screenshotAddress = QUrl::fromLocalFile(made).toString(QUrl::FullyEncoded);
        portal.does[QStringLiteral("Screenshot")] = what;
        CaptureProgram program(arguments(), {QStringLiteral("WAYLAND_DISPLAY=wayland-none")});
        if (what == FakePortal::Does::wait) {
            QTRY_VERIFY_WITH_TIMEOUT(!portal.waitingHandle().isEmpty(), patience);
            program.terminate();
        }
        QCOMPARE(program.waitForEnd(), code);
        QCOMPARE(program.words().isEmpty(), code == 0);
        QCOMPARE(files().size(), what == FakePortal::Does::grant ? 1 : 0);
        if (what == FakePortal::Does::grant)
            QCOMPARE(picture(), desktop_->picture());
        QCOMPARE(QFile::exists(made), what != FakePortal::Does::grant);
    }

    // As the program uses it, with the tool that was built.
    void theToolIsAProcess() {
        auto tool = std::make_unique<ProcessScreenCaptureTool>(QList<ProcessScreenCaptureTool::Command>{
            {QStringLiteral(QUENBY_SCREENCAPTURE_PROGRAM), {QStringLiteral("-i")}}});
        int ends = 0;
        const auto start = [&] {
            tool->capture(QFile::encodeName(path()), this, [&ends](const MaybeError& error) {
                QVERIFY(!error);
                ++ends;
            });
            return QTest::qWaitFor([] { return CaptureProgram::isOpen(); }, patience);
        };
        QVERIFY(start());
        useInput(QStringLiteral("mousemove 100 80 mousedown 1 mousemove 200 150 mouseup 1"));
        QTRY_COMPARE_WITH_TIMEOUT(ends, 1, patience);
        QCOMPARE(picture(), desktop_->picture().copy(100, 80, 101, 71));

        // With the tool the overlay goes, and gives back the screen.
        QVERIFY(start());
        tool.reset();
        QVERIFY(!CaptureProgram::isOpen(true));
        QVERIFY(desktop_->isSeen());
        QCOMPARE(ends, 1);
    }

private:
    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<PaintedDesktop> desktop_;
};

QTEST_MAIN(tst_ScreenCapture)
#include "tst_ScreenCapture.moc"
