// The review window: what it shows of a recording, and what its buttons and keys do.
#include "recording/review/MovieSaving.h"
#include "recording/review/ShareVideoController.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeFileBrowser.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeMoviePlayer.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "widgets/ProblemPane.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

const QString movieName = QStringLiteral("ScreenCast 2016-05-04 at 03.07.41 PM.mov");

// By what a screen reader calls it.
template <typename Widget>
Widget* named(const QWidget& window, const QString& name) {
    for (Widget* widget : window.findChildren<Widget*>()) {
        if (widget->accessibleName() == name)
            return widget;
    }
    return nullptr;
}

} // namespace

class tst_sharevideocontroller : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> folder_;
    QByteArray movie_;
    std::unique_ptr<FakeMoviePlayers> players_;
    std::unique_ptr<FakeAlerts> alerts_;
    std::unique_ptr<FakeFilePanels> panels_;
    std::unique_ptr<FakeFileBrowser> browser_;
    std::unique_ptr<FakeOpener> opener_;
    std::unique_ptr<ShareVideoController> controller_;

    QWidget& window() const { return controller_->window(); }
    void press(const QString& text) const {
        for (QPushButton* button : window().findChildren<QPushButton*>()) {
            if (button->text().remove(QLatin1Char('&')) == text && button->isVisible())
                return button->click();
        }
        QFAIL(qPrintable(QStringLiteral("There is no button “%1”").arg(text)));
    }
    QByteArray placeFor(const QString& name) const { return QFile::encodeName(folder_->filePath(name)); }
    // The movie goes there; what the user is told of it.
    Alert toldAfterSaving(const QByteArray& destination) {
        controller_->saveToLocalAction();
        if (!panels_->choose({destination}) || !QTest::qWaitFor([this] { return !alerts_->shown().isEmpty(); }, 20'000))
            return {};
        return alerts_->shown().last().alert;
    }
    QString problem() const {
        const auto* pane = window().findChild<ProblemPane*>();
        return pane && pane->isVisible() ? pane->accessibleDescription() : QString();
    }

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        QFile file(folder_->filePath(movieName));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(QByteArray(1536, 'm')), 1536);
        movie_ = QFile::encodeName(file.fileName());
        players_ = std::make_unique<FakeMoviePlayers>();
        players_->setFacts({QSize(1280, 720), 61.97});
        alerts_ = std::make_unique<FakeAlerts>();
        panels_ = std::make_unique<FakeFilePanels>();
        browser_ = std::make_unique<FakeFileBrowser>();
        opener_ = std::make_unique<FakeOpener>();
        controller_ = std::make_unique<ShareVideoController>(
            ShareVideoController::Services{*players_, *alerts_, *panels_, *browser_, *opener_});
        controller_->setUrlVideo(movie_);
    }
    void cleanup() { controller_.reset(); }

    void theFactsAndTheMovieAreShown() {
        controller_->showInFront();
        QVERIFY(window().isVisible());
        QCOMPARE(players_->last()->path(), movie_);
        QCOMPARE(players_->factsReadOf(), movie_);
        QTRY_COMPARE(controller_->videoSize().text(), QStringLiteral("1280x720"));
        QCOMPARE(controller_->videoDuration().text(), QStringLiteral(" 1 minute  1 second"));
        QCOMPARE(controller_->videoFileSize().text(),
                 QLocale().formattedDataSize(1536, 1, QLocale::DataSizeTraditionalFormat));
        QVERIFY(players_->last()->view()->isVisible());
        QCOMPARE(window().windowTitle(), movieName);
        QVERIFY(!players_->last()->isPlaying());
        QVERIFY(controller_->minimizeWindow());
        QVERIFY(!controller_->minimizeWindow());
    }

    void anUnreadableMovieShowsWhatItYields() {
        players_->setFacts({});
        controller_->setUrlVideo(movie_ + ".gone");
        controller_->showInFront();
        QTRY_COMPARE(controller_->videoSize().text(), QStringLiteral("0x0"));
        QCOMPARE(controller_->videoDuration().text(), QStringLiteral("less than 1 second"));
        Q_EMIT players_->last()->failed(QStringLiteral("It is damaged."));
        QCOMPARE(problem(), QStringLiteral("It is damaged."));
        QVERIFY(!named<QToolButton>(window(), QStringLiteral("Play"))->isEnabled());
    }

    void withoutAPlayerTheActionsWorkAllTheSame() {
        players_->setFailure(Error(URLErrorCode::unknown, {{errorKey::reason, QStringLiteral("Install it.")}}));
        controller_->showInFront();
        QCOMPARE(problem(), QStringLiteral("Install it."));
        QTRY_COMPARE(controller_->videoSize().text(), QStringLiteral("1280x720"));
        QTest::keyClick(&window(), Qt::Key_Space);
        QTest::keyClick(&window(), Qt::Key_Right);
        press(QStringLiteral("Open in Movie Player"));
        QCOMPARE(opener_->openedFiles(), QList<QByteArray>{movie_});
        players_->setFailure(std::nullopt);
        press(QStringLiteral("Try Again"));
        QVERIFY(problem().isEmpty());
        QCOMPARE(players_->last()->path(), movie_);
    }

    void theActionsCloseTheWindowAndAskForMore_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("newRecordings");
        QTest::addColumn<int>("uploads");
        QTest::newRow("again") << QStringLiteral("Record Again") << 1 << 0;
        QTest::newRow("upload") << QStringLiteral("Upload to Drive") << 0 << 1;
        QTest::newRow("discard") << QStringLiteral("Discard") << 0 << 0;
    }
    void theActionsCloseTheWindowAndAskForMore() {
        QFETCH(QString, button);
        QFETCH(int, newRecordings);
        QFETCH(int, uploads);
        QSignalSpy recording(controller_.get(), &ShareVideoController::newRecordingRequested);
        QSignalSpy uploading(controller_.get(), &ShareVideoController::uploadRequested);
        QSignalSpy closing(controller_.get(), &ShareVideoController::closed);
        controller_->showInFront();
        const auto requireClosed = [this] { QVERIFY(!window().isVisible()); };
        connect(controller_.get(), &ShareVideoController::newRecordingRequested, this, requireClosed);
        connect(controller_.get(), &ShareVideoController::uploadRequested, this, requireClosed);
        press(button);
        QVERIFY(!window().isVisible());
        QVERIFY(!players_->last()); // it plays no longer
        QCOMPARE(recording.size(), newRecordings);
        QCOMPARE(uploading.size(), uploads);
        if (uploads > 0)
            QCOMPARE(uploading.first().first().toByteArray(), movie_);
        QTRY_COMPARE(closing.size(), 1);
        QVERIFY(QFileInfo::exists(QFile::decodeName(movie_)));
    }

    // Whoever is asked for more may let go of the controller there and then.
    void itMayGoWhileItAsks() {
        connect(controller_.get(), &ShareVideoController::newRecordingRequested, this, [this] { controller_.reset(); });
        controller_->showInFront();
        controller_->newRecordingAction();
        QVERIFY(!controller_);
    }

    void theKeyboardPlaysTheMovie() {
        controller_->showInFront();
        QVERIFY(QTest::qWaitForWindowActive(&window()));
        QTest::keyClick(&window(), Qt::Key_Space); // nothing is known of the movie yet
        QVERIFY(!players_->last()->isPlaying());
        players_->last()->load(4500ms);
        QWidget* const focused = window().focusWidget();
        QTest::keyClick(focused, Qt::Key_Space);
        QVERIFY(players_->last()->isPlaying());
        QVERIFY(named<QToolButton>(window(), QStringLiteral("Pause")));
        QTest::keyClick(focused, Qt::Key_Right);
        QTest::keyClick(focused, Qt::Key_Right);
        QCOMPARE(players_->last()->position(), 2000ms);
        QTest::keyClick(focused, Qt::Key_Left);
        QCOMPARE(players_->last()->position(), 1000ms);
        for (int i = 0; i < 6; ++i)
            QTest::keyClick(focused, Qt::Key_Right);
        QCOMPARE(players_->last()->position(), 4500ms);
        QTest::keyClick(focused, Qt::Key_Space);
        QVERIFY(!players_->last()->isPlaying());
        QTest::keyClick(focused, Qt::Key_Escape); // throws nothing away
        QVERIFY(window().isVisible());
        QSignalSpy uploading(controller_.get(), &ShareVideoController::uploadRequested);
        QTest::keyClick(focused, Qt::Key_Return);
        QCOMPARE(uploading.size(), 1);
    }

    void theFullScreenIsThePicturesAlone() {
        controller_->showInFront();
        QTest::mouseDClick(players_->last()->view(), Qt::LeftButton);
        QTRY_VERIFY(window().isFullScreen());
        QVERIFY(!controller_->videoSize().isVisible());
        QVERIFY(named<QToolButton>(window(), QStringLiteral("Leave Full Screen"))->isVisible());
        QTest::keyClick(&window(), Qt::Key_Escape);
        QTRY_VERIFY(!window().isFullScreen());
        QVERIFY(controller_->videoSize().isVisible());
        QTest::keyClick(&window(), Qt::Key_F);
        QTRY_VERIFY(window().isFullScreen());
    }

    void theSliderFollowsAndLeads() {
        controller_->showInFront();
        players_->last()->load(10s, true);
        auto* slider = named<QSlider>(window(), QStringLiteral("Position"));
        players_->last()->setPosition(2500ms);
        QCOMPARE(slider->value(), 2500);
        players_->last()->play();
        QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(slider->width() - 6, slider->height() / 2));
        QVERIFY(!players_->last()->isPlaying()); // until the slider is let go
        QVERIFY(players_->last()->position() > 9800ms);
        QTest::mouseMove(slider, QPoint(6, slider->height() / 2));
        QCOMPARE(players_->last()->position(), 0ms);
        QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(6, slider->height() / 2));
        QVERIFY(players_->last()->isPlaying());
        auto* volume = named<QSlider>(window(), QStringLiteral("Volume"));
        QVERIFY(volume->isVisible());
        volume->setValue(40);
        QCOMPARE(players_->last()->volume(), 0.4);
        auto* mute = named<QToolButton>(window(), QStringLiteral("Mute"));
        mute->click();
        QCOMPARE(players_->last()->volume(), 0.0);
        QTest::keyClick(&window(), Qt::Key_Up);
        QCOMPARE(players_->last()->volume(), 0.45);
        QVERIFY(!mute->isChecked());
    }

    void aSavedCopyIsShownInItsFolder() {
        controller_->showInFront();
        const QByteArray destination = placeFor(QStringLiteral("chosen name.mov"));
        const Alert told = toldAfterSaving(destination);
        QCOMPARE(panels_->opened().first().window, &window());
        QCOMPARE(QFileInfo(QFile::decodeName(panels_->opened().first().proposal)).fileName(), movieName);
        QVERIFY(!window().isVisible());
        QVERIFY(!alerts_->shown().last().window); // it outlives the window
        QCOMPARE(told.messageText, QStringLiteral("Alert"));
        QCOMPARE(told.informativeText, QString(movieName + QStringLiteral(" successfully saved.")));
        QCOMPARE(told.buttons, (QStringList{QStringLiteral("Show in Finder"), QStringLiteral("Close")}));
        QCOMPARE(QFileInfo(QFile::decodeName(destination)).size(), 1536);
        controller_.reset(); // another recording begins
        alerts_->answer(0);
        QTRY_COMPARE(browser_->revealed, QList<QByteArray>{destination});
    }

    void aCopyThatFailsIsTold() {
        controller_->showInFront();
        const QByteArray taken = placeFor(QStringLiteral("taken.mov"));
        QVERIFY(QFile::copy(QFile::decodeName(movie_), QFile::decodeName(taken)));
        QVERIFY(QFile::resize(QFile::decodeName(taken), 3));
        const Alert told = toldAfterSaving(taken);
        QCOMPARE(told.messageText, QStringLiteral("Alert"));
        QCOMPARE(told.informativeText, QStringLiteral("Error in file saving"));
        QCOMPARE(told.buttons, QStringList{QStringLiteral("Ok")});
        QVERIFY(told.details.contains(QStringLiteral("taken.mov")));
        QVERIFY(!window().isVisible());
        QCOMPARE(QFileInfo(QFile::decodeName(taken)).size(), 3);
    }

    void whenTheUserCancelsOrTheMovieIsGoneNothingHappens() {
        controller_->showInFront();
        controller_->saveToLocalAction();
        QVERIFY(panels_->cancel());
        QVERIFY(QFile::remove(QFile::decodeName(movie_)));
        controller_->saveToLocalAction();
        QVERIFY(panels_->choose({placeFor(QStringLiteral("copy.mov"))}));
        QTRY_VERIFY(!panels_->opened().last().chosen.ticket().isPending());
        QTRY_VERIFY(qApp->findChildren<MovieSaving*>().isEmpty());
        QVERIFY(window().isVisible());
        QVERIFY(alerts_->shown().isEmpty());
        QVERIFY(!QFileInfo::exists(folder_->filePath(QStringLiteral("copy.mov"))));
        // Nor can it be opened; that is told.
        controller_->openInQuickTImePlayerAction();
        QCOMPARE(alerts_->shown().size(), 1);
        QVERIFY(alerts_->shown().first().alert.informativeText.contains(QStringLiteral("not there any more")));
        QVERIFY(window().isVisible());
    }
};

QTEST_MAIN(tst_sharevideocontroller)
#include "tst_sharevideocontroller.moc"
