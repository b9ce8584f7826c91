// The composition: what is captured goes into the Drive, and is not lost on the way.

#include "app/uploads/UploadRequest.h"
#include "recording/review/ReviewWindow.h"
#include "tests/app/agent/AppDelegateStage.h"
#include "workspace/window/AccountView.h"

#include <QAbstractItemView>
#include <QDir>
#include <QSignalSpy>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class AppDelegateCapturesTest : public AppDelegateStage {
    Q_OBJECT

private Q_SLOTS:
    void aScreenshotIsUploaded() {
        signIn();
        choose(u"Capture & Upload Screenshot"_s);
        QVERIFY(window()->isMinimized()); // it would be in the picture
        time_->advance(1s);
        QVERIFY(captureTool_->isOpen() && captureTool_->take());
        QTRY_COMPARE_WITH_TIMEOUT(notifications_->posted().size(), 1, patiently); // it is done with
        choose(u"Quit Quenby"_s);
        QTRY_COMPARE_WITH_TIMEOUT(quit_->size(), 1, patiently);
        delegate_->applicationWillTerminate();
        QVERIFY(!QDir(caches_->path(u"ScreenShotCaches"_s)).exists());
    }

    // How the program ends while a screenshot is on its way into the Drive, and whether its file is still there.
    void capturesOnTheirWay_data() {
        QTest::addColumn<QString>("end");
        QTest::newRow("quit") << u"quit"_s;
        QTest::newRow("the session") << u"session"_s;
        QTest::newRow("a newer program") << u"newer"_s;
    }
    void capturesOnTheirWay() {
        QFETCH(QString, end);
        QVERIFY(
            local_->orderFaults(R"([{"match":{"pathPrefix":"/upload/rpc","times":1000},"action":{"status":503}}])"));
        signIn();
        choose(u"Capture & Upload Screenshot"_s);
        time_->advance(1s);
        QVERIFY(captureTool_->take());
        QTRY_COMPARE_WITH_TIMEOUT(listedUploads(), 1, patiently);
        if (end == u"quit"_s) {
            choose(u"Quit Quenby"_s); // it goes on at the next start
            QCOMPARE(alerts_->waiting(), 0);
        } else if (end == u"session"_s) {
            sessionEnd_->requestEnd();
        } else {
            instance_->playNewerInstance();
        }
        QTRY_COMPARE(quit_->size(), 1);
        const QString over = capture(); // whose upload is over
        const bool isHandedOver = end == u"newer"_s;
        delegate_->applicationWillTerminate();
        QCOMPARE(QFile::exists(over), isHandedOver);
        QCOMPARE(QDir(caches_->path(u"ScreenShotCaches"_s)).entryList(QDir::Files).size(), isHandedOver ? 2 : 1);
        QCOMPARE(uploads(), 0);

        local_->clearFaults();
        makeDelegate();
        launch();
        QTRY_COMPARE_WITH_TIMEOUT(uploads(), 1, patiently);
        QTRY_COMPARE_WITH_TIMEOUT(notifications_->posted().size(), 1, patiently);
        delegate_->applicationWillTerminate(); // not needed any more
        QCOMPARE(QDir(caches_->path(u"ScreenShotCaches"_s)).entryList(QDir::Files).size(), 0);
    }

    // What the next run of the program shows for review is not on its way already.
    void aRecordingOnItsWayWasNotInterrupted() {
        const QString folder = caches_->create(u"ScreenCastCache"_s).value();
        const auto makeMovie = [&folder](const QString& name) {
            QFile movie(folder + name);
            if (!movie.open(QIODevice::WriteOnly) || movie.write("movie") < 0)
                qFatal("A file for the test can't be written.");
            return QFile::encodeName(movie.fileName());
        };
        const auto shown = [] { return topLevel<ReviewWindow>() != nullptr; };
        defaults_->setValueForKey(defaultsKey::uploadsPaused, true);
        const QByteArray uploading = makeMovie(u"/a.mov"_s);
        signIn();
        time_->advance(2s);
        QTRY_VERIFY(shown()); // as long as nobody uploads it
        delegate_->application_openFiles({uploading});
        delegate_->applicationWillTerminate();

        startAgain();
        QTRY_COMPARE(queuedUploads(), 1);
        time_->advance(2s);
        QVERIFY(!shown());
        delegate_->applicationWillTerminate();

        makeMovie(u"/b.mov"_s);
        startAgain();
        QTRY_VERIFY((time_->advance(1s), shown()));
    }

    // The folders of captures are one program's at a time.
    void anotherProgramsFilesStay_data() {
        QTest::addColumn<bool>("isLaunched");
        QTest::newRow("of the next one, which did not wait") << true;
        QTest::newRow("of the last one, which has not ended") << false;
    }
    void anotherProgramsFilesStay() {
        QFETCH(bool, isLaunched);
        if (isLaunched) {
            signIn();
            Q_EMIT instance_->endRequested();
            QCOMPARE(quit_->size(), 1);
        } else {
            instance_->hold();
            launch();
        }
        const QString file = capture();
        delegate_->applicationWillTerminate();
        QVERIFY(QFile::exists(file));
    }

private:
    QString capture() {
        QFile file(caches_->create(u"ScreenShotCaches"_s).value() + u"/capture.png"_s);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("A file for the test can't be written.");
        return file.fileName();
    }
    void signIn() {
        keep(keptGrant(*local_, owner));
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face(), patiently);
        quit_ = std::make_unique<QSignalSpy>(delegate_.get(), &AppDelegate::quitRequested);
    }
    void startAgain() {
        makeDelegate();
        launch();
        QTRY_VERIFY_WITH_TIMEOUT(hosts_->fake() && hosts_->fake()->face(), patiently);
    }
    // In the window's side panel.
    static int listedUploads() {
        const auto* list = window()->accountView().findChild<QAbstractItemView*>();
        return list && list->model() ? list->model()->rowCount() : 0;
    }

    std::unique_ptr<QSignalSpy> quit_;
};

QTEST_MAIN(AppDelegateCapturesTest)
#include "tst_appdelegate_captures.moc"
