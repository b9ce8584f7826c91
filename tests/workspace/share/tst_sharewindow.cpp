// The rules of the share windows, on pages that the test plays.
#include "tests/platform/fakes/FakeWebViews.h"
#include "tests/support/ManualTimeSource.h"
#include "widgets/ActivityIndicator.h"
#include "widgets/ProblemPane.h"
#include "workspace/share/MeasuringScript.h"
#include "workspace/share/ShareFrame.h"
#include "workspace/share/ShareWindow.h"
#include "workspace/share/ShareWindows.h"
#include "workspace/share/ctmWindow.h"

#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

const QString address = QStringLiteral("http://127.0.0.1:1/sharing/share?access_token=S3CRET&id=");
const QUrl blank(QStringLiteral("about:blank"));

QStringList logged;
void keepLog(QtMsgType, const QMessageLogContext&, const QString& text) { logged.append(text); }

} // namespace

class TestShareWindow final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qInstallMessageHandler(keepLog); }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }
    void init() {
        logged.clear();
        time_ = std::make_shared<ManualTimeSource>();
        webViews_ = std::make_unique<FakeWebViews>();
        windows_ = std::make_unique<ShareWindows>(*webViews_, time_);
    }
    void cleanup() {
        windows_.reset();
        QVERIFY2(logged.filter(QStringLiteral("S3CRET")).isEmpty(), "the token is in the log");
    }

    void frameFollowsTheDialog_data() {
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<int>("height");
        QTest::addColumn<QRect>("frame");
        // Lower gap (1000 - 400 + 70) / 2 = 335.
        QTest::newRow("even") << QRect(0, 0, 1600, 1000) << 400 << QRect(40, 195, 480, 470);
        // (1000 - 401 + 70) / 2 = 334.5
        QTest::newRow("half a pixel is dropped") << QRect(0, 0, 1600, 1000) << 401 << QRect(40, 195, 480, 471);
        QTest::newRow("second screen") << QRect(0, 500, 1600, 1000) << 400 << QRect(40, 695, 480, 470);
        QTest::newRow("higher than the screen") << QRect(0, 0, 1600, 300) << 400 << QRect(40, -155, 480, 470);
    }
    void frameFollowsTheDialog() {
        QFETCH(QRect, screen);
        QFETCH(int, height);
        QFETCH(QRect, frame);
        QCOMPARE(shareFrame({40, 90, 480, 420}, screen, height), frame);
        QVERIFY(screen.contains(keptInside(frame, screen)));
    }

    void loadingThenFitted() {
        FakeWebView& page = open();
        QCOMPARE(page.loads, QList<QUrl>{QUrl(address + QStringLiteral("f1"))});
        QCOMPARE(window().windowTitle(), QStringLiteral("plan.txt"));
        QTRY_VERIFY(indicator().isAnimating());
        const QRect before = window().geometry();
        pageMeasures(page, 300);
        page.finish();
        QVERIFY(share().done());
        QVERIFY(!indicator().isVisible() && !indicator().isAnimating());
        QCOMPARE(page.scripts, QStringList{measuringScript()});
        QTRY_COMPARE(window().height(), 370);
        QCOMPARE(window().geometry(), shareFrame(before, window().screen()->geometry(), 300));
    }

    // A page that is there but has no dialog keeps its window, until somebody does something in it.
    void noDialogLeavesTheSize() {
        FakeWebView& page = openFinished(0);
        const QRect before = window().geometry();
        QTRY_COMPARE(page.scripts.size(), 1);
        QTest::qWait(0);
        QCOMPARE(window().geometry(), before);
        QVERIFY(!window().isDismissed());
    }

    void clickAfterTheDialogHasGone() {
        FakeWebView& page = openFinished(300);
        page.releaseLeftButton();
        QTRY_COMPARE(page.scripts.size(), 2);
        pageMeasures(page, 350);
        page.releaseLeftButton();
        QTRY_COMPARE(window().height(), 420);
        pageMeasures(page, 0);
        page.releaseLeftButton();
        verifyDismissal(page);
    }

    void keys_data() {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<int>("measured");
        QTest::addColumn<bool>("dismisses");
        QTest::newRow("Escape") << Qt::Key_Escape << 300 << true;
        QTest::newRow("a letter, dialog there") << Qt::Key_A << 300 << false;
        QTest::newRow("a letter, dialog gone") << Qt::Key_A << 0 << true;
        QTest::newRow("a modifier alone") << Qt::Key_Alt << 0 << false;
    }
    void keys() {
        QFETCH(Qt::Key, key);
        QFETCH(int, measured);
        QFETCH(bool, dismisses);
        FakeWebView& page = openFinished(300);
        pageMeasures(page, measured);
        QTest::keyClick(window().windowHandle(), key);
        QTest::qWait(0);
        QCOMPARE(window().isDismissed(), dismisses);
        if (dismisses)
            verifyDismissal(page);
    }

    void keysDoNothingWhileLoading() {
        FakeWebView& page = open();
        QTRY_VERIFY(indicator().isAnimating());
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_A})
            QTest::keyClick(window().windowHandle(), key);
        page.releaseLeftButton();
        QTest::qWait(0);
        QVERIFY(page.scripts.isEmpty() && !window().isDismissed());
    }

    // The answer comes when the page is already being replaced.
    void lateMeasurementIsDropped() {
        FakeWebView& page = openFinished(300);
        page.holdsScripts = true;
        pageMeasures(page, 0);
        page.releaseLeftButton();
        page.navigate(QUrl(QStringLiteral("http://127.0.0.1:1/other")));
        QTRY_VERIFY(indicator().isVisible());
        page.releaseScripts();
        QTest::qWait(0);
        QVERIFY(!window().isDismissed());
    }

    void closedByHandOrByThePage_data() {
        QTest::addColumn<bool>("byPage");
        QTest::newRow("by the window manager") << false;
        QTest::newRow("by the page") << true;
    }
    void closedByHandOrByThePage() {
        QFETCH(bool, byPage);
        FakeWebView& page = openFinished(300);
        if (byPage)
            page.requestClose();
        else
            QVERIFY(window().close()); // refusing would keep the program from ending
        QCOMPARE(logged.contains(QStringLiteral("close now")), !byPage);
        verifyDismissal(page);
    }

    void problemIsToldAndTriedAgain_data() {
        QTest::addColumn<bool>("crashes");
        QTest::newRow("not loaded") << false;
        QTest::newRow("process gone") << true;
    }
    void problemIsToldAndTriedAgain() {
        QFETCH(bool, crashes);
        FakeWebView& page = crashes ? openFinished(300) : open();
        QTRY_VERIFY(share().done() || indicator().isAnimating());
        if (crashes)
            page.loseProcess();
        else
            page.fail(Error(URLErrorCode::cannotConnectToHost,
                            {{errorKey::reason, QStringLiteral("No answer from %1f1").arg(address)}}));
        Q_EMIT page.loadFinished(); // some engines finish what has failed
        QVERIFY(problem().isVisible() && !page.widget()->isVisible() && !indicator().isVisible());
        for (const QLabel* label : problem().findChildren<QLabel*>())
            QVERIFY(!label->text().isEmpty() && !label->text().contains(QStringLiteral("S3CRET")));
        // Keys are for the buttons here.
        QTest::keyClick(window().windowHandle(), Qt::Key_Tab);
        QTest::qWait(0);
        QVERIFY(!window().isDismissed());
        button(QStringLiteral("Try Again"))->click();
        QCOMPARE(page.loads.size(), 2);
        QTRY_VERIFY(!problem().isVisible() && indicator().isAnimating());
        pageMeasures(page, 310);
        page.finish();
        QTRY_COMPARE(window().height(), 380);
    }

    void noEngineSaysWhy() {
        webViews_->unavailable = QStringLiteral("The web engine is missing.");
        windows_->shareThisFile(address, QStringLiteral("plan.txt"));
        QVERIFY(QTest::qWaitForWindowExposed(&window()));
        QCOMPARE(problem().accessibleDescription(), webViews_->unavailable);
        QVERIFY(!button(QStringLiteral("Try Again"))->isVisible());
        QTest::keyClick(window().windowHandle(), Qt::Key_Escape);
        QVERIFY(window().isDismissed());
        time_->advance(6s);
        QVERIFY(windows_->shareFileList().empty());
    }

    void windowsAreIndependent() {
        FakeWebView& first = openFinished(300);
        FakeWebView& second = openFinished(400);
        QCOMPARE(windows_->shareFileList().size(), size_t{2});
        pageMeasures(first, 0);
        first.releaseLeftButton();
        QTRY_VERIFY(window(0).isDismissed());
        QVERIFY(!window(1).isDismissed());
        const QPointer<FakeWebView> remaining(&second);
        time_->advance(6s);
        QCOMPARE(windows_->shareFileList().size(), size_t{1});
        QCOMPARE(share().webShare(), remaining.data());
        windows_->removeMe(nullptr);
        windows_->closeAll();
        time_->advance(6s);
        QVERIFY(windows_->shareFileList().empty());
    }

private:
    ShareWindow& share(size_t index = 0) { return *windows_->shareFileList().at(index); }
    ctmWindow& window(size_t index = 0) { return share(index).window(); }
    ActivityIndicator& indicator() { return *window().findChild<ActivityIndicator*>(); }
    ProblemPane& problem() { return *window().findChild<ProblemPane*>(); }
    QPushButton* button(const QString& text) {
        for (QPushButton* one : problem().findChildren<QPushButton*>())
            if (one->text().remove(QLatin1Char('&')) == text)
                return one;
        return nullptr;
    }

    static void pageMeasures(FakeWebView& page, int height) {
        page.scriptResult = [height](const QString&) { return height > 0 ? QString::number(height) : QVariant(); };
    }
    FakeWebView& open() {
        windows_->shareThisFile(address + QStringLiteral("f1"), QStringLiteral("plan.txt"));
        if (!QTest::qWaitForWindowExposed(&windows_->shareFileList().back()->window()))
            qFatal("no window");
        return webViews_->last();
    }
    FakeWebView& openFinished(int dialogHeight) {
        FakeWebView& page = open();
        ShareWindow& opened = *windows_->shareFileList().back();
        pageMeasures(page, dialogHeight);
        const auto begun = [&] { return opened.window().findChild<ActivityIndicator*>()->isAnimating(); };
        if (!QTest::qWaitFor(begun))
            qFatal("the page does not begin to load");
        page.finish();
        if (dialogHeight > 0 &&
            !QTest::qWaitFor([&] { return opened.window().height() == dialogHeight + shareWindowMargin; }))
            qFatal("the window is not fitted");
        return page;
    }

    // Faded, off the screen after the animation, emptied after five seconds, dropped after one more.
    void verifyDismissal(FakeWebView& page) {
        QTRY_VERIFY(window().isDismissed());
        const QPointer<FakeWebView> watched(&page);
        QTRY_COMPARE(window().windowOpacity(), 0.0);
        time_->advance(350ms);
        QVERIFY(!window().isVisible());
        time_->advance(4649ms);
        QVERIFY(!page.loads.contains(blank));
        time_->advance(1ms);
        QCOMPARE(page.loads.last(), blank);
        time_->advance(999ms);
        QCOMPARE(windows_->shareFileList().size(), size_t{1});
        time_->advance(1ms);
        QVERIFY(windows_->shareFileList().empty());
        QTRY_VERIFY(!watched);
    }

    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<FakeWebViews> webViews_;
    std::unique_ptr<ShareWindows> windows_;
};

QTEST_MAIN(TestShareWindow)
#include "tst_sharewindow.moc"
