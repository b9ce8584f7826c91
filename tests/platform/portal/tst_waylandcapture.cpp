// Recordings of a real Wayland desktop through its portal and PipeWire, and how they end.
#include "platform/linux/desktop/ScreenDisplays.h"
#include "platform/linux/media/engine/capture/GstCaptureSession.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/support/MovieFrames.h"
#include "tests/support/Settled.h"

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <csignal>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 40'000; // ms; only a hang takes so long
const QString output = QStringLiteral("HEADLESS-1");
constexpr QSize screenSize(1280, 800);

QByteArray sway(const QString& command) { return outputOf(QStringLiteral("swaymsg"), {command}); }
void setOutput(const QString& command) { sway(QStringLiteral("output %1 %2").arg(output, command)); }

// What the user chooses when the desktop asks; nothing: declines.
void choose(const QString& screen) {
    QFile file(qEnvironmentVariable("QUENBY_DESKTOP_CHOICE"));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(screen.toLatin1());
}

// As another program takes it.
QImage screenNow() { return QImage::fromData(outputOf(QStringLiteral("grim"), {QStringLiteral("-")}), "PNG"); }

// Shows four quarters of different colours all over the screen.
class Quarters : public QWidget {
protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QSize half = size() / 2;
        painter.fillRect(rect(), Qt::white);
        painter.fillRect(QRect(QPoint(0, 0), half), Qt::red);
        painter.fillRect(QRect(QPoint(half.width(), 0), half), Qt::green);
        painter.fillRect(QRect(QPoint(0, half.height()), half), Qt::blue);
    }
};

// The colours near the four corners, each as the brightest of the quarters' colours that it can be.
QByteArray corners(const QImage& image) {
    const int right = image.width() - 9;
    const int bottom = image.height() - 9;
    QByteArray found;
    for (const QPoint place : {QPoint(8, 8), QPoint(right, 8), QPoint(8, bottom), QPoint(right, bottom)}) {
        const QColor colour = image.pixelColor(place);
        const bool isRed = colour.red() > 160;
        const bool isGreen = colour.green() > 160;
        const bool isBlue = colour.blue() > 160;
        found += isRed && isGreen && isBlue ? 'w' : isRed ? 'r' : isGreen ? 'g' : isBlue ? 'b' : '-';
    }
    return found;
}

} // namespace

class tst_waylandcapture : public QObject {
    Q_OBJECT

    // One recording, and what was told of it.
    struct Recording {
        std::unique_ptr<CaptureSession> session;
        bool hasStarted = false;
        bool hasEnded = false;
        QByteArray path; // empty: it failed
        RecordingEnd end = RecordingEnd::asked;
        qint64 code = -1;
        QString reason;

        Recording(CaptureEngine& engine, const QByteArray& place, const QRect& crop)
            : session(engine.createSession({})) {
            QObject::connect(session.get(), &CaptureSession::recordingStarted, session.get(),
                             [this] { hasStarted = true; });
            QObject::connect(session.get(), &CaptureSession::recordingFinished, session.get(),
                             [this](const QByteArray& movie, RecordingEnd why) {
                                 hasEnded = true;
                                 path = movie;
                                 end = why;
                             });
            QObject::connect(session.get(), &CaptureSession::recordingFailed, session.get(),
                             [this](const Error& error) {
                                 hasEnded = true;
                                 code = error.code();
                                 reason = error.detail(errorKey::reason).toString();
                             });
            session->setScreenInput({ScreenDisplays().main(), crop, 30});
            session->startRecording(place);
        }
    };

    QTemporaryDir folder_;
    Quarters quarters_;
    CaptureEngine engine_;
    int recordings_ = 0;

    std::unique_ptr<Recording> record(const QRect& crop = {}) {
        const QString place = folder_.filePath(QStringLiteral("%1.mov").arg(++recordings_));
        return std::make_unique<Recording>(engine_, QFile::encodeName(place), crop);
    }
    // A desktop need not send a picture before something changes on it.
    bool starts(const Recording& recording) {
        return QTest::qWaitFor(
                   [&] {
                       quarters_.update();
                       return recording.hasStarted || recording.hasEnded;
                   },
                   patience) &&
               recording.hasStarted;
    }
    static bool ends(const Recording& recording) {
        return QTest::qWaitFor([&] { return recording.hasEnded; }, patience);
    }
    static QImage lastPicture(const Recording& recording) {
        MovieFrames frames(QFile::decodeName(recording.path));
        QImage last;
        for (QImage next = frames.next(); !next.isNull(); next = frames.next())
            last = next;
        return frames.error().isEmpty() ? last : QImage();
    }

private Q_SLOTS:
    void initTestCase() {
        quarters_.showFullScreen();
        QVERIFY(settles([] { return corners(screenNow()) == "rgbw"; }));
    }
    void init() { choose(output); }

    void theScreenAndPartsOfIt_data() {
        QTest::addColumn<QRect>("crop");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QByteArray>("colours");
        QTest::newRow("all of it") << QRect() << screenSize << QByteArray("rgbw");
        QTest::newRow("the middle") << QRect(540, 350, 200, 100) << QSize(200, 100) << QByteArray("rgbw");
        QTest::newRow("a quarter") << QRect(640, 0, 640, 400) << QSize(640, 400) << QByteArray("gggg");
        QTest::newRow("odd, over the edge") << QRect(1001, 501, 400, 400) << QSize(280, 300) << QByteArray("wwww");
    }
    void theScreenAndPartsOfIt() {
        QFETCH(QRect, crop);
        const auto recording = record(crop);
        QVERIFY2(starts(*recording), qPrintable(recording->reason));
        recording->session->stopRecording();
        QVERIFY(ends(*recording));
        QVERIFY2(!recording->path.isEmpty(), qPrintable(recording->reason));
        QCOMPARE(recording->end, RecordingEnd::asked);
        const QImage picture = lastPicture(*recording);
        QTEST(picture.size(), "size");
        QTEST(corners(picture), "colours");
    }

    void aScreenThatWasTurned() {
        setOutput(QStringLiteral("transform 90"));
        QVERIFY(settles([] {
            return screenNow().size() == screenSize.transposed() &&
                   QGuiApplication::primaryScreen()->size() == screenSize.transposed();
        }));
        const auto recording = record();
        const bool hasStarted = starts(*recording);
        recording->session->stopRecording();
        const bool hasEnded = ends(*recording);
        const QByteArray shown = corners(screenNow());
        setOutput(QStringLiteral("transform normal"));
        QVERIFY2(hasStarted && hasEnded, qPrintable(recording->reason));
        const QImage picture = lastPicture(*recording);
        QCOMPARE(picture.size(), screenSize.transposed());
        QCOMPARE(corners(picture), shown);
        QVERIFY(settles([] { return QGuiApplication::primaryScreen()->size() == screenSize; }));
    }

    void onceAllowedItIsNotAskedAgain() {
        const auto first = record();
        QVERIFY2(starts(*first), qPrintable(first->reason));
        first->session->stopRecording();
        QVERIFY(ends(*first));
        choose({});
        const auto second = record();
        QVERIFY2(starts(*second), qPrintable(second->reason));
        second->session->stopRecording();
        QVERIFY(ends(*second));
    }

    void declined() {
        CaptureEngine another; // that was never allowed anything
        choose({});
        Recording recording(another, QFile::encodeName(folder_.filePath(QStringLiteral("declined.mov"))), {});
        QVERIFY(ends(recording));
        QVERIFY2(recording.path.isEmpty() && recording.reason.isEmpty(), qPrintable(recording.reason));
        QCOMPARE(recording.code, 0);
        QVERIFY(!QFile::exists(folder_.filePath(QStringLiteral("declined.mov"))));
    }

    void theScreenChanges_data() {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("undo");
        QTest::newRow("smaller") << QStringLiteral("resolution 800x600") << QStringLiteral("resolution 1280x800");
        QTest::newRow("larger") << QStringLiteral("resolution 1920x1080") << QStringLiteral("resolution 1280x800");
        QTest::newRow("turned") << QStringLiteral("transform 270") << QStringLiteral("transform normal");
    }
    void theScreenChanges() {
        QFETCH(QString, change);
        QFETCH(QString, undo);
        const auto recording = record();
        QVERIFY2(starts(*recording), qPrintable(recording->reason));
        setOutput(change);
        const bool hasEnded = QTest::qWaitFor(
            [&] {
                quarters_.update();
                return recording->hasEnded;
            },
            patience);
        setOutput(undo);
        QVERIFY(settles([] { return screenNow().size() == screenSize; }));
        QVERIFY(hasEnded);
        QCOMPARE(recording->end, RecordingEnd::sourceGone);
        QCOMPARE(corners(lastPicture(*recording)), QByteArray("rgbw"));
    }

    // As the last one: the back-end is not there any more.
    void theDesktopFallsSilent() {
        const auto recording = record();
        QVERIFY2(starts(*recording), qPrintable(recording->reason));
        ::kill(qEnvironmentVariableIntValue("QUENBY_DESKTOP_BACKEND_PID"), SIGKILL);
        QVERIFY(ends(*recording));
        QCOMPARE(recording->end, RecordingEnd::sourceGone);
        QCOMPARE(corners(lastPicture(*recording)), QByteArray("rgbw"));
    }
};

QTEST_MAIN(tst_waylandcapture)
#include "tst_waylandcapture.moc"
