// A recording from the command to the review window, with a capture session that the test plays.
#include "app/recording/InterruptedRecordings.h"
#include "app/recording/RecordingFlow.h"
#include "recording/overlay/OverlayWindow.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeCacheFolders.h"
#include "tests/platform/fakes/FakeCaptureSession.h"
#include "tests/platform/fakes/FakeDisplays.h"
#include "tests/platform/fakes/FakeFileBrowser.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeMoviePlayer.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakeStatusItemHost.h"
#include "tests/support/ManualTimeSource.h"

#include <QApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <sys/stat.h>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class RecordingFlowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules(u"qt.*=false\nquenby.recording=false"_s); }
    void init() {
        alerts_ = std::make_unique<FakeAlerts>();
        caches_ = std::make_unique<FakeCacheFolders>();
        displays_ = std::make_unique<FakeDisplays>();
        sessions_ = std::make_unique<FakeCaptureSessions>();
        time_ = std::make_shared<ManualTimeSource>();
        minimized_ = 0;
        const auto makeHosts = [this] {
            auto hosts = std::make_unique<FakeStatusItemHosts>();
            stopItemHosts_ = hosts.get();
            return hosts;
        };
        flow_ = std::make_unique<RecordingFlow>(
            RecordingFlow::Surroundings{*sessions_, players_, *displays_, *caches_, *alerts_, panels_, browser_,
                                        opener_, makeHosts, time_, [this] { return ++minimized_ == 0; }});
    }
    void cleanup() { flow_.reset(); }

    void fromTheCommandToTheReviewWindow() {
        flow_->startRecordingSelf();
        QCOMPARE(minimized_, 1);
        QVERIFY(flow_->state().isRecordingVideo && flow_->state().isRecordingVideoClicked);
        QCOMPARE(overlays().size(), 1);
        QTRY_VERIFY(stopItem() && stopItem()->face());
        select({10, 20, 300, 200});
        QVERIFY(flow_->state().isRecordingVideo && !flow_->state().isRecordingVideoClicked);
        QTRY_VERIFY(overlays().isEmpty());
        QVERIFY(session()->path().isEmpty()); // not before the overlay is gone
        time_->advance(100ms);
        QVERIFY(session()->path().endsWith(".mov"));
        QCOMPARE(session()->screenInput().cropRect, QRect(10, 580, 300, 200));

        Q_EMIT session()->recordingStarted();
        QVERIFY(flow_->isRecording());
        time_->advance(67s);
        QVERIFY(stopItem()->face()->toolTip().contains(u"1:07"_s));
        StatusItemHost* const item = stopItem();
        Q_EMIT item->clicked();
        Q_EMIT item->clicked(); // a double click
        QVERIFY(!flow_->state().isRecordingVideo);
        QTRY_VERIFY(!stopItemHosts_);
        QCOMPARE(session()->stops(), 0);
        time_->advance(100ms);
        QCOMPARE(session()->stops(), 1);
        flow_->startRecordingSelf(); // too early: the movie would be lost
        QCOMPARE(sessions_->made(), 1);
        finish();
        time_->advance(200ms);
        QTRY_VERIFY(!session());
        QVERIFY(!flow_->isRecording() && reviewWindow() && alerts_->shown().isEmpty());
    }

    void aSecondStartOnlySaysSo() {
        flow_->startRecordingSelf();
        flow_->startRecordingSelf();
        QCOMPARE(sessions_->made(), 1);
        QCOMPARE(alerts_->shown().size(), 1);
        QCOMPARE(alerts_->shown().last().alert.messageText, u"Alert"_s);
        QCOMPARE(alerts_->shown().last().alert.informativeText, u"Video recording is already running."_s);
    }

    void smallSelections_data() {
        QTest::addColumn<QRectF>("selection");
        QTest::addColumn<bool>("isRecorded");
        QTest::newRow("narrow") << QRectF(0, 0, 10, 200) << false;
        QTest::newRow("flat") << QRectF(0, 0, 200, 10) << false;
        QTest::newRow("nothing") << QRectF() << false;
        QTest::newRow("the smallest") << QRectF(5, 5, 11, 11) << true;
    }
    void smallSelections() {
        QFETCH(QRectF, selection);
        QFETCH(bool, isRecorded);
        flow_->startRecordingSelf();
        select(selection);
        time_->advance(100ms);
        QCOMPARE(flow_->state().isRecordingVideo, isRecorded);
        if (isRecorded) {
            QVERIFY(!session()->path().isEmpty());
            return;
        }
        QTRY_VERIFY(!session() && !stopItemHosts_);
        QCOMPARE(alerts_->shown().last().alert.informativeText,
                 u"Video can not be cropped. Please select proper selection."_s);
        alerts_->answer(0); // again
        QTRY_VERIFY(flow_->state().isRecordingVideoClicked);
        select(selection);
        alerts_->answer(1);
        QTest::qWait(0);
        QVERIFY(!flow_->state().isRecordingVideo && !flow_->state().isRecordingVideoClicked);
    }

    void aSecondDisplayIsRecorded() {
        displays_->set({FakeDisplays::display(1, {0, 0, 1280, 800}), FakeDisplays::display(2, {1280, 0, 800, 600}, 2)});
        flow_->startRecordingSelf();
        QCOMPARE(overlays().size(), 2);
        select({0, 0, 100, 50}, 2);
        time_->advance(100ms);
        QCOMPARE(session()->screenInput().display.identifier, 2U);
        QCOMPARE(session()->screenInput().cropRect, QRect(0, 1100, 200, 100));
    }

    // The overlay hears keys as a window of the program does.
    void keysWhileSelecting() {
        flow_->startRecordingSelf();
        press(Qt::Key_Shift);
        QVERIFY(flow_->state().isRecordingVideoClicked);
        press(Qt::Key_Escape);
        QVERIFY(!flow_->state().isRecordingVideo && !flow_->state().isRecordingVideoClicked);
        QTRY_VERIFY(overlays().isEmpty() && !session() && !stopItemHosts_);

        flow_->startRecordingSelf();
        press(Qt::Key_A);
        QVERIFY(flow_->state().isRecordingVideo && !flow_->state().isRecordingVideoClicked);
        QCOMPARE(overlays().size(), 1);
        press(Qt::Key_Escape); // the overlay's own
        QTRY_VERIFY(overlays().isEmpty() && !flow_->state().isRecordingVideo);
    }

    void theStopItemWhileNothingIsRecorded() {
        flow_->startRecordingSelf();
        QTRY_VERIFY(stopItem());
        Q_EMIT stopItem()->clicked();
        time_->advance(100ms);
        QTRY_VERIFY(!stopItemHosts_ && overlays().isEmpty());
        QVERIFY(!flow_->state().isRecordingVideo && alerts_->shown().isEmpty());
    }

    void screensThatChange() {
        flow_->startRecordingSelf();
        displays_->set({FakeDisplays::display(1, {0, 0, 800, 600})});
        QTRY_VERIFY(overlays().isEmpty() && !flow_->state().isRecordingVideo);

        flow_->startRecordingSelf();
        press(Qt::Key_A); // leaves the overlay to the pointer
        displays_->set({FakeDisplays::display(1, {0, 0, 1024, 768})});
        QTRY_VERIFY(overlays().isEmpty() && !flow_->state().isRecordingVideo && !stopItemHosts_);
        displays_->set({FakeDisplays::display(1, {0, 0, 800, 600})});

        record();
        displays_->set({FakeDisplays::display(1, {0, 0, 800, 600}), FakeDisplays::display(2, {800, 0, 800, 600})});
        QCOMPARE(session()->stops(), 0); // what is recorded is still there
        displays_->set({FakeDisplays::display(1, {0, 0, 600, 800})});
        QCOMPARE(session()->stops(), 1);
        finish();
        QVERIFY(alerts_->shown().last().alert.informativeText.contains(u"screens were changed"_s));
        time_->advance(200ms);
        QVERIFY(reviewWindow());
    }

    void recordingsThatEndByThemselves_data() {
        QTest::addColumn<int>("end");
        QTest::newRow("the disk is full") << int(RecordingEnd::diskFull);
        QTest::newRow("the encoder failed") << int(RecordingEnd::encoderFailed);
        QTest::newRow("there is nothing to record") << int(RecordingEnd::sourceGone);
    }
    void recordingsThatEndByThemselves() {
        QFETCH(int, end);
        record();
        finish(RecordingEnd(end));
        QVERIFY(!flow_->state().isRecordingVideo);
        QCOMPARE(alerts_->shown().size(), 1);
        time_->advance(200ms);
        QVERIFY(reviewWindow());
    }

    void failures() {
        sessions_->setFailure(Error(URLErrorCode::unknown, {{errorKey::reason, u"Install it."_s}}));
        flow_->startRecordingSelf();
        QVERIFY(flow_->state().isRecordingVideo && overlays().isEmpty());
        QCOMPARE(alerts_->shown().last().alert.informativeText, u"Install it."_s);
        alerts_->answer(0);
        QTRY_VERIFY(!flow_->state().isRecordingVideo && !stopItemHosts_);

        flow_->startRecordingSelf();
        QTRY_VERIFY(stopItem());
        Q_EMIT stopItem()->clicked();
        sessions_->setFailure({});
        record();
        alerts_->answer(0); // the old message is read at last
        QTest::qWait(0);
        QVERIFY(flow_->state().isRecordingVideo && stopItemHosts_);

        Q_EMIT session()->recordingFailed(Error(errorDomain::posix, 28, {{errorKey::reason, u"Make room."_s}}));
        QCOMPARE(alerts_->shown().last().alert.informativeText, u"Make room."_s);
        QVERIFY(!flow_->state().isRecordingVideo && !flow_->isRecording());

        alerts_->forgetShown();
        record();
        Q_EMIT session()->recordingFailed(Error(errorDomain::posix, 0)); // declined
        QVERIFY(alerts_->shown().isEmpty() && !flow_->state().isRecordingVideo);

        caches_->setFailing(true);
        record();
        QCOMPARE(alerts_->shown().last().alert.informativeText, u"The disk is full."_s);
        QVERIFY(!flow_->state().isRecordingVideo);
    }

    void theSameSecondTwice() {
        record();
        const QString movie = QFile::decodeName(session()->path());
        finish();
        QFile file(movie);
        QVERIFY(file.open(QFile::WriteOnly));
        time_->advance(200ms);
        time_->jumpWallClock(-400ms); // of the delays
        record();
        QVERIFY(alerts_->shown().isEmpty() && !flow_->state().isRecordingVideo);
    }

    void interruptedRecordingsAreShown() {
        const QString folder = caches_->create(u"ScreenCastCache"_s).value();
        const auto make = [&folder](const QString& name, const QByteArray& bytes) {
            QFile file(folder + u'/' + name);
            return file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size();
        };
        const QByteArray header = QByteArray::fromHex("0000000866726565000000086d6f6f76");   // atoms: free, moov
        QVERIFY(make(u".a.mov.part"_s, header) && make(u".b.mov.part"_s, header.first(8)) && // killed too early
                make(u"a.mov"_s, "another"));
        flow_->findInterruptedRecordings();
        flow_->showInterruptedRecordings();
        flow_->startRecordingSelf(); // somebody was faster
        time_->advance(200ms);
        flow_->stopMannually();
        QVERIFY(!reviewWindow() && flow_->areInterruptedWaiting());
        flow_->showInterruptedRecordings();
        time_->advance(200ms);
        QVERIFY(reviewWindow() && !flow_->areInterruptedWaiting());
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), (QStringList{u"a (2).mov"_s, u"a.mov"_s}));
        QCOMPARE(recoverInterruptedRecordings(folder).size(), 2);
    }

    // The movie must not be removed meanwhile.
    void whetherAMovieIsBeingSaved() {
        // A disk that is slow: reading waits until somebody writes.
        const QByteArray movie = QFile::encodeName(caches_->create(u"ScreenCastCache"_s).value()) + "/a.mov";
        QCOMPARE(::mkfifo(movie.constData(), 0600), 0);
        flow_->openShareVideoController(movie);
        const auto buttons = reviewWindow()->findChildren<QPushButton*>();
        const auto save = std::find_if(buttons.begin(), buttons.end(), [](const QPushButton* button) {
            return button->text().remove(u'&').startsWith(u"Save"_s);
        });
        QVERIFY(save != buttons.end());
        (*save)->click();
        QVERIFY(!flow_->isSaving());
        panels_.choose({movie + ".copy"});
        QTRY_VERIFY(flow_->isSaving());
        reviewWindow()->close();
        QTRY_VERIFY(!reviewWindow());
        QVERIFY(flow_->isSaving());
        QFile disk(QFile::decodeName(movie));
        QVERIFY(disk.open(QFile::WriteOnly | QFile::Unbuffered));
        disk.close();
        QTRY_VERIFY(!flow_->isSaving());
        QCOMPARE(alerts_->waiting(), 1);
    }

private:
    FakeCaptureSession* session() const { return sessions_->last(); }
    FakeStatusItemHost* stopItem() const { return stopItemHosts_ ? stopItemHosts_->fake() : nullptr; }
    static QList<OverlayWindow*> overlays() { return windows<OverlayWindow>(); }
    static QWidget* reviewWindow() {
        for (QWidget* window : windows<QWidget>()) {
            if (window->isVisible() && !qobject_cast<OverlayWindow*>(window))
                return window;
        }
        return nullptr;
    }
    template <typename Window>
    static QList<Window*> windows() {
        QList<Window*> found;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* window = qobject_cast<Window*>(widget))
                found.append(window);
        }
        return found;
    }
    static void select(const QRectF& rect, quint32 display = 1) {
        for (OverlayWindow* overlay : overlays()) {
            if (overlay->display().identifier == display)
                Q_EMIT overlay->didSelectRect(rect);
        }
        QTest::qWait(0);
    }
    static void press(Qt::Key key) {
        QTest::keyClick(overlays().first()->windowHandle(), key);
        QTest::qWait(0);
    }
    void record() {
        flow_->startRecordingSelf();
        select({10, 20, 300, 200});
        time_->advance(100ms);
        if (session() && !session()->path().isEmpty())
            Q_EMIT session()->recordingStarted();
    }
    void finish(RecordingEnd end = RecordingEnd::asked) { Q_EMIT session()->recordingFinished(session()->path(), end); }

    std::unique_ptr<FakeAlerts> alerts_;
    std::unique_ptr<FakeCacheFolders> caches_;
    std::unique_ptr<FakeDisplays> displays_;
    std::unique_ptr<FakeCaptureSessions> sessions_;
    FakeMoviePlayers players_;
    FakeFilePanels panels_;
    FakeFileBrowser browser_;
    FakeOpener opener_;
    std::shared_ptr<ManualTimeSource> time_;
    QPointer<FakeStatusItemHosts> stopItemHosts_;
    int minimized_ = 0;
    std::unique_ptr<RecordingFlow> flow_;
};

QTEST_MAIN(RecordingFlowTest)
#include "tst_recordingflow.moc"
