// What becomes of a recording when something goes wrong: as a rule there is a movie of what was recorded until then.
#include "tests/platform/media/Recording.h"
#include "tests/support/PatternProcess.h"
#include "tests/support/TroubledDisk.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace quenby;
using namespace quenby::testing;

namespace {

// Fails when it is told to.
class FailingSource final : public CaptureSource {
public:
    void prepare(const CaptureInput&) override { isAsked = true; }
    bool isAsked = false;
};

// The files of the plug-ins that have these elements.
QStringList pluginFiles(const QByteArrayList& elements) {
    QStringList files;
    for (const QByteArray& name : elements) {
        const GstHandle<GstElementFactory> factory(gst_element_factory_find(name.constData()));
        const GstHandle<GstPlugin> plugin(factory ? gst_plugin_feature_get_plugin(GST_PLUGIN_FEATURE(factory.get()))
                                                  : nullptr);
        if (plugin)
            files.append(QFile::decodeName(gst_plugin_get_filename(plugin.get())));
    }
    files.removeDuplicates();
    return files;
}

} // namespace

class tst_recordingfaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(pattern_.start(desktop, 30)); }
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(QStringLiteral("A recording.mov"));
    }

    void encoders_data() {
        QTest::addColumn<QStringList>("encoders");
        QTest::addColumn<bool>("isStopped");
        QTest::addColumn<int>("leastFrames"); // 0: there is no movie
        const QString good = QStringLiteral("x264enc");
        const QString failsAtOnce = QStringLiteral("identity error-after=6 ! x264enc");
        const QString failsLater = QStringLiteral("identity error-after=70 ! x264enc");
        QTest::newRow("the other one") << QStringList{QStringLiteral("openh264enc")} << true << 30;
        QTest::newRow("first not installed") << QStringList{QStringLiteral("nosuchenc"), good} << true << 30;
        QTest::newRow("first fails at the start") << QStringList{failsAtOnce, failsAtOnce, good} << true << 30;
        QTest::newRow("fails in the middle") << QStringList{failsLater, good} << false << 60;
        QTest::newRow("all fail at the start") << QStringList{failsAtOnce, failsAtOnce} << false << 0;
        QTest::newRow("none installed") << QStringList{QStringLiteral("nosuchenc")} << false << 0;
    }
    void encoders() {
        QFETCH(QStringList, encoders);
        QFETCH(bool, isStopped);
        QFETCH(int, leastFrames);
        const Recording recording(path_, {.encoders = encoders});
        if (isStopped) {
            QVERIFY2(recording.hasStarted() && recording.hasPieces(2), qPrintable(recording.reason));
            QVERIFY(recording.stop());
        }
        QVERIFY(recording.hasEnded());
        QCOMPARE(recording.ended, 1);
        if (leastFrames == 0) {
            QVERIFY(recording.reason.contains(QStringLiteral("gstreamer1.0-plugins-ugly")));
            QVERIFY(QDir(folder_->path()).isEmpty(QDir::Files | QDir::Hidden));
            return;
        }
        QCOMPARE(recording.reason, QString());
        QCOMPARE(recording.started, 1);
        QCOMPARE(recording.named, path_);
        QCOMPARE(recording.end, isStopped ? RecordingEnd::asked : RecordingEnd::encoderFailed);
        QVERIFY(isWhole(path_, leastFrames));
    }

    void diskRefuses() {
        const FileSizeLimit limit(600'000);
        const Recording recording(path_, {}, desktop);
        QVERIFY(recording.hasEnded());
        QCOMPARE(recording.reason, QString());
        QCOMPARE(recording.end, RecordingEnd::diskFull);
        const auto facts = movieFacts(path_);
        QVERIFY(facts);
        QVERIFY(facts->frameCount() >= 25);
    }

    void diskFull_data() {
        QTest::addColumn<qint64>("least");
        QTest::addColumn<bool>("isWhole");
        QTest::newRow("nearly") << qint64(4'000'000) << true;
        QTest::newRow("to the last byte") << qint64(0) << false;
    }
    void diskFull() {
        QFETCH(qint64, least);
        const SmallDisk disk(12);
        if (!disk.isThere())
            QSKIP("only root may mount a small disk");
        const QString path = disk.filePath(QStringLiteral("A recording.mov"));
        const Recording recording(path, {.encoders = {}, .leastFreeSpace = least},
                                  least > 0 ? QRect(101, 73, 400, 302) : desktop);
        QVERIFY2(recording.hasStarted() && recording.hasPieces(2), qPrintable(recording.reason));
        disk.fill(least > 0 ? least - 1'000'000 : 200'000);
        QVERIFY(recording.hasEnded());
        QCOMPARE(recording.reason, QString());
        QCOMPARE(recording.named, path);
        QCOMPARE(recording.end, RecordingEnd::diskFull);
        QFETCH(bool, isWhole);
        if (isWhole)
            QVERIFY(::isWhole(path, 50));
        const auto facts = movieFacts(path);
        QVERIFY(facts);
        QVERIFY(facts->frameCount() >= 50);

        const Recording another(disk.filePath(QStringLiteral("Another.mov")));
        QVERIFY(another.hasEnded());
        QVERIFY(another.reason.contains(QStringLiteral("too full")));
    }

    void noFolder() {
        const Recording recording(folder_->filePath(QStringLiteral("gone/A recording.mov")));
        QVERIFY(recording.hasEnded());
        QVERIFY2(recording.reason.contains(folder_->filePath(QStringLiteral("gone"))), qPrintable(recording.reason));
    }

    // It has become smaller between the selection and the start.
    void besideTheScreen() {
        const Recording recording(path_, {}, QRect(1200, 700, 200, 200), QRect(0, 0, 1600, 1200));
        QVERIFY(recording.hasEnded());
        QVERIFY2(recording.reason.contains(QStringLiteral("another size")), qPrintable(recording.reason));
        QVERIFY(QDir(folder_->path()).isEmpty(QDir::Files | QDir::Hidden));
    }

    void nameTakenMeanwhile() {
        const Recording recording(path_);
        QVERIFY(recording.hasStarted());
        QFile other(path_);
        QVERIFY(other.open(QIODevice::WriteOnly) && other.write("another's") > 0);
        other.close();
        QVERIFY(recording.hasPieces(1) && recording.stop());
        QCOMPARE(recording.named, folder_->filePath(QStringLiteral("A recording (2).mov")));
        QVERIFY(isWhole(recording.named, 15));
        QVERIFY(other.open(QIODevice::ReadOnly));
        QCOMPARE(other.readAll(), QByteArray("another's"));
    }

    void smallest() {
        const Recording recording(path_, {}, QRect(1279, 13, 1, 1));
        QVERIFY(recording.hasStarted());
        QVERIFY(recording.hasPieces(1) && recording.stop());
        const auto facts = movieFacts(path_);
        QVERIFY(facts);
        QCOMPARE(facts->size, QSize(2, 2));
    }

    void stoppedAtOnce() {
        const Recording recording(path_);
        QVERIFY(recording.stop());
        recording.session->stopRecording();
        recording.session->startRecording(QFile::encodeName(path_));
        QCOMPARE(recording.ended, 1);
        QVERIFY(QDir(folder_->path()).isEmpty(QDir::Files | QDir::Hidden));
        // What it had begun meanwhile ends, and the next one is not disturbed.
        const Recording another(path_);
        QVERIFY(another.hasStarted() && another.hasPieces(1) && another.stop());
        QVERIFY(isWhole(path_, 15));
        QCOMPARE(recording.ended, 1);
        QCOMPARE(recording.started, 0);
    }

    void stoppedWhileTheSourceFails() {
        RecorderThreads threads;
        auto owned = std::make_unique<FailingSource>();
        FailingSource& source = *owned;
        GstCaptureSession session(std::move(owned), threads.add({}));
        int ended = 0;
        connect(&session, &CaptureSession::recordingFailed, this, [&ended] { ++ended; });
        session.startRecording(QFile::encodeName(path_));
        QVERIFY(QTest::qWaitFor([&source] { return source.isAsked; }, patience));
        session.stopRecording();
        Q_EMIT source.failed(Error(URLErrorCode::unknown));
        QVERIFY(QTest::qWaitFor([&ended] { return ended > 0; }, patience));
        QCoreApplication::processEvents();
        QCOMPARE(ended, 1);
    }

    // With everything else that a recording takes.
    void partMissing_data() {
        QTest::addColumn<QByteArrayList>("installed");
        QTest::addColumn<QString>("missing");
        QTest::addColumn<QString>("package");
        const QByteArrayList all{"appsrc",    "capsfilter",   "qtmux",     "videoconvert", "videocrop",
                                 "videorate", "videotestsrc", "ximagesrc", "x264enc"};
        const auto row = [&](const char* missing, const QString& package) {
            QByteArrayList installed = all;
            installed.removeOne(missing);
            QTest::newRow(missing) << installed << QString::fromLatin1(missing) << package;
        };
        row("qtmux", QStringLiteral("gstreamer1.0-plugins-good"));
        row("videoconvert", QStringLiteral("gstreamer1.0-plugins-base"));
        row("ximagesrc", QStringLiteral("gstreamer1.0-plugins-good"));
        row("x264enc", QStringLiteral("gstreamer1.0-plugins-ugly"));
    }
    void partMissing() {
        QFETCH(QByteArrayList, installed);
        QFETCH(QString, missing);
        QFETCH(QString, package);
        gst_init(nullptr, nullptr);
        for (const QString& file : pluginFiles(installed))
            QVERIFY(QFile::link(file, folder_->filePath(QFileInfo(file).fileName())));
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("GST_PLUGIN_SYSTEM_PATH"), folder_->path());
        environment.insert(QStringLiteral("GST_REGISTRY"), folder_->filePath(QStringLiteral("registry")));
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(QUENBY_RECORD_SCREEN),
                      {path_, QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("64"), QStringLiteral("64")});
        QVERIFY(program.waitForFinished(patience));
        QCOMPARE(program.exitCode(), 1);
        const QString said = QString::fromUtf8(program.readAllStandardError());
        QVERIFY2(
            said.contains(QStringLiteral("missing: %1. Install it (on Debian the package %2)").arg(missing, package)),
            qPrintable(said));
        QVERIFY2(!said.contains(QStringLiteral("no encoder")), qPrintable(said));
    }

    // Nobody asks for it any more, and still it is brought to its end.
    void sessionGone() {
        {
            Recording recording(path_);
            QVERIFY(recording.hasStarted() && recording.hasPieces(1));
            recording.session.reset();
            QCOMPARE(recording.ended, 0);
        }
        QVERIFY(isWhole(path_, 15));
    }

    void programKilled() {
        QProcess program;
        recordInProgram(program, qEnvironmentVariable("DISPLAY"));
        const QString hidden = folder_->filePath(QStringLiteral(".A recording.mov.part"));
        QVERIFY(growsByPieces(hidden, 4));
        program.kill();
        QVERIFY(program.waitForFinished(patience));
        const auto facts = movieFacts(hidden);
        QVERIFY(facts);
        QVERIFY2(facts->frameCount() >= 100, qPrintable(QString::number(facts->frameCount())));
        QVERIFY(!QFile::exists(path_));
    }

    // As a computer that was asleep or has too much to do: the movie stands still for that time, and does not jump.
    void programStalls() {
        QProcess program;
        recordInProgram(program, qEnvironmentVariable("DISPLAY"), QRect(101, 73, 400, 302));
        QVERIFY(growsByPieces(folder_->filePath(QStringLiteral(".A recording.mov.part")), 1));
        const auto id = static_cast<pid_t>(program.processId());
        ::kill(id, SIGSTOP);
        QTest::qWait(2000); // what is tested is the length of this
        ::kill(id, SIGCONT);
        QVERIFY(growsByPieces(folder_->filePath(QStringLiteral(".A recording.mov.part")), 4));
        program.write("\n");
        QVERIFY(program.waitForFinished(patience));
        QCOMPARE(program.exitCode(), 0);
        QVERIFY(isWhole(path_, 110));
    }

    // The X library would end the program for what the server answers then.
    void screenShrinks() {
        QProcess server;
        server.setStandardErrorFile(QProcess::nullDevice());
        server.start(QStringLiteral("Xvfb"),
                     {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
                      QStringLiteral("1280x800x24"), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                      QStringLiteral("-noreset")});
        QVERIFY(server.waitForReadyRead(patience));
        const QString display = u':' + QString::fromLatin1(server.readLine().trimmed());
        QProcess program;
        recordInProgram(program, display, QRect(701, 433, 579, 367));
        QVERIFY(growsByPieces(folder_->filePath(QStringLiteral(".A recording.mov.part")), 2));
        QProcess::execute(QStringLiteral("xrandr"),
                          {QStringLiteral("-display"), display, QStringLiteral("--output"), QStringLiteral("screen"),
                           QStringLiteral("--off"), QStringLiteral("--fb"), QStringLiteral("640x480")});
        QVERIFY(program.waitForFinished(patience));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        const QByteArray gone = QByteArray::number(static_cast<int>(RecordingEnd::sourceGone));
        QCOMPARE(program.readAllStandardOutput().trimmed(), QByteArray("recording\nended: " + gone));
        QVERIFY(isWhole(path_, 45));
        server.terminate();
        QVERIFY(server.waitForFinished(patience));
    }

private:
    void recordInProgram(QProcess& program, const QString& display, const QRect& place = desktop) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), display);
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QStringList arguments{path_};
        for (const int number : {place.x(), place.y(), place.width(), place.height()})
            arguments.append(QString::number(number));
        program.start(QStringLiteral(QUENBY_RECORD_SCREEN), arguments);
        QVERIFY(program.waitForReadyRead(patience));
    }

    PatternProcess pattern_;
    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
};

QTEST_MAIN(tst_recordingfaults)
#include "tst_recordingfaults.moc"
