// From the command to the picture that is handed to the uploads.

#include "app/agent/CacheFolderNames.h"
#include "app/screenshots/ScreenshotCapture.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeCacheFolders.h"
#include "tests/platform/fakes/FakeScreenCaptureTool.h"
#include "tests/support/ManualTimeSource.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

class ScreenshotCaptureTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        qputenv("TZ", "Asia/Kolkata"); // UTC+05:30
        connect(&capture_, &ScreenshotCapture::minimizeAllWindowsRequested, this, [this] { ++minimized_; });
        connect(&capture_, &ScreenshotCapture::uploadRequested, this,
                [this](const QString& folderName, const QByteArray& path) {
                    QCOMPARE(folderName, QStringLiteral("Screen Shot"));
                    uploads_.append(path);
                });
    }

    // The clock stands still: none takes the other's place, and a cancelled one takes none.
    void capturesOfOneSecondAreAllUploaded() {
        begin();
        QVERIFY(tool_.cancel());
        QCoreApplication::processEvents();
        for (const int width : {1, 2, 3}) {
            begin();
            QVERIFY(tool_.take(QImage(width, 1, QImage::Format_RGB32)));
            QTRY_COMPARE(uploads_.size(), width);
            QCOMPARE(QImage(QFile::decodeName(uploads_.first())).width(), 1);
        }
        const QByteArray folder = QFile::encodeName(caches_.path(cacheFolderName::screenshots));
        QCOMPARE(uploads_, (QList<QByteArray>{folder + "/Screen Shot 2026-01-01 at 05.30.00 PM.png",
                                              folder + "/Screen Shot 2026-01-01 at 05.30.00 PM (2).png",
                                              folder + "/Screen Shot 2026-01-01 at 05.30.00 PM (3).png"}));
        QCOMPARE(alerts_.shown().size(), 0);
    }

    void oneAtATime() {
        const auto before = tool_.paths().size();
        minimized_ = 0;
        capture_.captureAndUploadFile();
        capture_.captureAndUploadFile(); // while the windows leave
        QCOMPARE(tool_.paths().size(), before);
        time_->advance(10s);
        capture_.captureAndUploadFile(); // while the tool is there
        time_->advance(10s);
        QCOMPARE(tool_.paths().size(), before + 1);
        QCOMPARE(minimized_, 1);
        QVERIFY(tool_.cancel());
        QCoreApplication::processEvents();
    }

    void troubleIsTold() {
        minimized_ = 0;
        tool_.setUnavailableBecause(QStringLiteral("Install a tool."));
        capture_.captureAndUploadFile();
        tool_.setUnavailableBecause({});
        caches_.setFailing(true);
        capture_.captureAndUploadFile();
        caches_.setFailing(false);
        QCOMPARE(minimized_, 0); // windows don't go for what can't be done
        begin();
        QVERIFY(tool_.fail(QStringLiteral("The tool ended.")));
        QTRY_COMPARE(alerts_.shown().size(), 3);
        QCOMPARE(alerts_.shown().at(0).alert.informativeText, QStringLiteral("Install a tool."));
        QCOMPARE(alerts_.shown().at(1).alert.informativeText, QStringLiteral("The disk is full."));
        QCOMPARE(alerts_.shown().at(2).alert.informativeText, QStringLiteral("The tool ended."));
        begin();
    }

private:
    void begin() {
        capture_.captureAndUploadFile();
        time_->advance(250ms);
        QVERIFY(tool_.isOpen());
    }

    FakeScreenCaptureTool tool_;
    FakeAlerts alerts_;
    FakeCacheFolders caches_;
    std::shared_ptr<ManualTimeSource> time_ = std::make_shared<ManualTimeSource>(); // 2026-01-01, noon, UTC
    ScreenshotCapture capture_{{tool_, alerts_, caches_, time_}, [] { return nullptr; }};
    int minimized_ = 0;
    QList<QByteArray> uploads_;
};

QTEST_GUILESS_MAIN(ScreenshotCaptureTest)
#include "tst_screenshotcapture.moc"
