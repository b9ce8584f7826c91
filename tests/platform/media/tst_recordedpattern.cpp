// A picture that tells its number and place is recorded from two monitors at odd places, and read back from the movie.
//
// Of times, only the movie's own are exact: a computer that has much else to do may show or take a picture late, and
// then the one before it is repeated. What is bounded therefore are medians of many frames, and what holds however slow
// everything is: a frame cannot show what was not there yet, or what was gone before it was asked for.
#include "platform/linux/desktop/ScreenDisplays.h"
#include "platform/linux/media/PluginMedia.h"
#include "platform/linux/modules/ModuleFile.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/support/MovieFrames.h"
#include "tests/support/MovingPattern.h"
#include "tests/support/PatternProcess.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>

#include <dlfcn.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

using Clock = PatternProcess::Clock;
using Seconds = std::chrono::duration<double>;

constexpr int patience = 60'000; // ms; only a hang takes so long
constexpr int rate = 30;         // of the pattern and of the movie
constexpr int recordedNumbers = 75;

const QRect desktop(0, 0, 1280, 800);
const QRect leftMonitor(0, 0, 619, 800);
const QRect rightMonitor(619, 37, 660, 720);
// In none of them: the pointer would cover the pattern.
const QPoint besideTheMonitors(1000, 790);

void setMonitor(const QString& name, const QRect& pixels) {
    const QString place =
        QStringLiteral("%1/200x%2/200+%3+%4").arg(pixels.width()).arg(pixels.height()).arg(pixels.x()).arg(pixels.y());
    outputOf(QStringLiteral("xrandr"), {QStringLiteral("--setmonitor"), name, place, QStringLiteral("none")});
}

quenby::Display named(const Displays& displays, const QString& name) {
    const QList<quenby::Display> all = displays.all();
    const auto found =
        std::find_if(all.begin(), all.end(), [&name](const quenby::Display& display) { return display.name == name; });
    return found == all.end() ? quenby::Display() : *found;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

} // namespace

class tst_recordedpattern : public QObject {
    Q_OBJECT

public:
    // Before there is an application.
    static void initMain() {
        setMonitor(QStringLiteral("LEFT"), leftMonitor);
        setMonitor(QStringLiteral("RIGHT"), rightMonitor);
    }

private Q_SLOTS:
    void initTestCase() {
        outputOf(QStringLiteral("xdotool"), {QStringLiteral("mousemove"), QString::number(besideTheMonitors.x()),
                                             QString::number(besideTheMonitors.y())});
        QVERIFY(pattern_.start(desktop, rate));
    }

    // For what the framework's modules find under these names. Two that grab the server block each other and the
    // desktop.
    void nothingGrabsTheServer() {
        for (const char* name : {"XGrabServer", "XUngrabServer"}) {
            Dl_info place{};
            QVERIFY(::dladdr(::dlsym(RTLD_DEFAULT, name), &place) != 0);
            QCOMPARE(QFileInfo(QFile::decodeName(place.dli_fname)).canonicalFilePath(),
                     QCoreApplication::applicationFilePath());
        }
    }

    void movieShowsThePattern_data() {
        QTest::addColumn<QString>("monitor");
        QTest::addColumn<QRect>("crop"); // in its pixels
        QTest::addColumn<QRect>("seen"); // in those of the desktop
        QTest::newRow("whole, of odd width") << "LEFT" << QRect() << QRect(0, 0, 618, 800);
        QTest::newRow("whole, beside the first") << "RIGHT" << QRect() << rightMonitor;
        QTest::newRow("odd place") << "LEFT" << QRect(101, 73, 400, 302) << QRect(101, 73, 400, 302);
        QTest::newRow("odd place and size, on the second")
            << "RIGHT" << QRect(11, 13, 301, 203) << QRect(619 + 11, 37 + 13, 302, 204);
        QTest::newRow("beyond the edges")
            << "RIGHT" << QRect(333, 415, 900, 900) << QRect(619 + 332, 37 + 414, 328, 306);
    }
    void movieShowsThePattern() {
        QFETCH(QString, monitor);
        QFETCH(QRect, crop);
        QFETCH(QRect, seen);
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("A recording.mov"));
        Recording recording;
        record(named(displays_, monitor), crop, path, recording);
        if (QTest::currentTestFailed())
            return;

        const auto facts = movieFacts(path);
        QVERIFY(facts);
        QVERIFY(facts->containers.contains(QStringLiteral("mov")));
        QCOMPARE(facts->streams, 1);
        QCOMPARE(facts->codec, QStringLiteral("h264"));
        QCOMPARE(facts->pixelFormat, QStringLiteral("yuv420p"));
        QCOMPARE(facts->size, seen.size());
        QCOMPARE(facts->frameRate, QStringLiteral("30/1"));
        constexpr double exactly = 0.0001; // seconds; files count time in fractions of their own
        QVERIFY2(std::abs(facts->leastStep() - 1.0 / rate) < exactly, qPrintable(QString::number(facts->leastStep())));
        QVERIFY2(std::abs(facts->greatestStep() - 1.0 / rate) < exactly,
                 qPrintable(QString::number(facts->greatestStep())));
        QVERIFY(std::abs(facts->times.front()) < exactly);
        QVERIFY2(std::abs(facts->duration - facts->frameCount() / double(rate)) < 1.0 / rate,
                 qPrintable(QString::number(facts->duration)));

        std::vector<int> numbers;
        readNumbers(path, seen.topLeft(), numbers);
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(static_cast<int>(numbers.size()), facts->frameCount());
        checkOrder(numbers);
        if (QTest::currentTestFailed())
            return;
        checkTimes(numbers, recording);
    }

private:
    struct Recording {
        Clock::time_point asked;
        Clock::time_point started; // when that was told
        Clock::time_point stopped; // when the end was asked for
    };

    void record(const quenby::Display& display, const QRect& crop, const QString& path, Recording& recording) {
        QVERIFY(display.identifier != 0);
        auto made = PluginCaptureSessions(media_).create();
        QVERIFY2(made, made ? "" : qPrintable(made.error().description()));
        const std::unique_ptr<CaptureSession> session = std::move(made).value();
        const QSignalSpy finished(session.get(), &CaptureSession::recordingFinished);
        std::optional<Clock::time_point> started;
        connect(session.get(), &CaptureSession::recordingStarted, this, [&started] { started = Clock::now(); });
        connect(session.get(), &CaptureSession::recordingFailed, this,
                [](const Error& error) { QFAIL(qPrintable(error.description())); });

        session->setScreenInput({.display = display, .cropRect = crop, .maximumFrameRate = rate});
        recording.asked = Clock::now();
        session->startRecording(QFile::encodeName(path));
        QTRY_VERIFY_WITH_TIMEOUT(started || QTest::currentTestFailed(), patience);
        if (QTest::currentTestFailed())
            return;
        recording.started = *started;
        const size_t enough = pattern_.shown().size() + recordedNumbers;
        QTRY_VERIFY_WITH_TIMEOUT(pattern_.shown().size() >= enough, patience);
        recording.stopped = Clock::now();
        session->stopRecording();
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, patience);
        QCOMPARE(finished.first().at(0).toByteArray(), QFile::encodeName(path));
        QCOMPARE(finished.first().at(1).value<RecordingEnd>(), RecordingEnd::asked);
    }

    void readNumbers(const QString& path, const QPoint& place, std::vector<int>& numbers) {
        MovieFrames movie(path);
        for (QImage frame = movie.next(); !frame.isNull(); frame = movie.next()) {
            const auto reading = readPattern(frame);
            QVERIFY2(reading, qPrintable(QStringLiteral("frame %1").arg(numbers.size())));
            QCOMPARE(reading->offset, place);
            QVERIFY(reading->wholeTiles > 0);
            QCOMPARE(reading->readTiles, reading->wholeTiles);
            numbers.push_back(reading->number);
        }
        QCOMPARE(movie.error(), QString());
    }

    void checkOrder(const std::vector<int>& numbers) {
        QVERIFY(std::is_sorted(numbers.begin(), numbers.end()));
        // Half of what the pattern showed meanwhile, or half of what has room in the movie.
        const int shown = numbers.back() - numbers.front() + 1;
        int different = 1;
        for (size_t i = 1; i < numbers.size(); ++i)
            different += numbers[i] != numbers[i - 1];
        QVERIFY2(2 * different >= std::min<int>(shown, static_cast<int>(numbers.size())),
                 qPrintable(QStringLiteral("%1 of %2").arg(different).arg(shown)));
    }

    void checkTimes(const std::vector<int>& numbers, const Recording& recording) {
        const std::vector<Clock::time_point> shown = pattern_.shown();
        const auto cameAt = [&shown](int number) { return shown.at(static_cast<size_t>(number)); };
        QVERIFY(cameAt(numbers.front() + 1) > recording.asked);
        QVERIFY(cameAt(numbers.front()) < recording.started);
        // To the end: what was seen when the end was asked for is in it, or what was seen not long before.
        constexpr Seconds late(1);
        QVERIFY(cameAt(numbers.back()) > recording.stopped - late);

        // When a second of the movie is a second, the times from each frame's picture to the frame are all alike.
        std::vector<double> ages;
        for (size_t i = 0; i < numbers.size(); ++i)
            ages.push_back(double(i) / rate - Seconds(cameAt(numbers[i]) - recording.asked).count());
        const auto quarter = static_cast<std::ptrdiff_t>(ages.size() / 4);
        const double early = median({ages.begin(), ages.begin() + quarter});
        const double end = median({ages.end() - quarter, ages.end()});
        QVERIFY2(std::abs(end - early) < 0.25, qPrintable(QStringLiteral("%1 s").arg(end - early)));
    }

    const std::shared_ptr<LoadedMedia> media_ = std::make_shared<LoadedMedia>(moduleFolders());
    ScreenDisplays displays_;
    PatternProcess pattern_;
};

QTEST_MAIN(tst_recordedpattern)
#include "tst_recordedpattern.moc"
