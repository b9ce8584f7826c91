// A share window with the real web engine and the local Drive's sharing dialog in it.
#include "platform/linux/web/PluginWebViews.h"
#include "tests/localdrive/LocalClient.h"
#include "tests/support/ManualTimeSource.h"
#include "workspace/share/MeasuringScript.h"
#include "workspace/share/ShareFrame.h"
#include "workspace/share/ShareWindow.h"
#include "workspace/share/ShareWindows.h"
#include "workspace/share/ctmWindow.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

constexpr int patience = 30000; // milliseconds; the engine's first page may take long on a busy machine

} // namespace

class TestShareWindowDesktop final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log());
        client_ = std::make_unique<LocalClient>(drive_);
        refreshToken_ = drive_.grant()[QLatin1String("refresh_token")].toString();
        PluginWebViewsPlaces places = PluginWebViewsPlaces::standard(QStringLiteral("quenby-test"));
        places.dataRoot = folder_.filePath(QStringLiteral("data"));
        places.cacheRoot = folder_.filePath(QStringLiteral("cache"));
        webViews_ = std::make_unique<PluginWebViews>(places);
    }
    void init() {
        const QJsonObject resource{{QStringLiteral("title"), QStringLiteral("plan.txt")}};
        const RawReply reply =
            client_->call(QStringLiteral("drive.files.insert"), {{QStringLiteral("resource"), resource}});
        file_ = jsonOf(reply.body)[QLatin1String("result")][QLatin1String("id")].toString();
        time_ = std::make_shared<ManualTimeSource>();
        windows_ = std::make_unique<ShareWindows>(*webViews_, time_);
    }
    void cleanup() { windows_.reset(); }
    void cleanupTestCase() { webViews_.reset(); }

    void dialogIsMeasuredAndPlaced() {
        open();
        QVERIFY(share().done());
        const int height = evaluate(measuringScript()).toString().toInt();
        QVERIFY(height > 100);
        QTRY_COMPARE_WITH_TIMEOUT(window().height(), height + shareWindowMargin, patience);
        const QVariant place = evaluate(QStringLiteral(
            "(() => { const r = document.querySelector('.dialog').getBoundingClientRect();"
            " return r.left + ' ' + r.top + ' ' + (document.documentElement.scrollHeight <= innerHeight); })()"));
        QCOMPARE(place.toString(), QStringLiteral("15 20 true"));
    }

    void doneClosesTheWindow() {
        open();
        click(QStringLiteral("done"));
        QTRY_VERIFY_WITH_TIMEOUT(window().isDismissed(), patience);
        time_->advance(350ms);
        QVERIFY(!window().isVisible());
        time_->advance(6s);
        QVERIFY(windows_->shareFileList().empty());
    }

    void escapeClosesTheWindow() {
        open();
        QTest::keyClick(window().windowHandle(), Qt::Key_Escape);
        QVERIFY(window().isDismissed());
    }

    // The page takes the keyboard by itself, and sharing really happens.
    void somebodyIsAddedByKeys() {
        open();
        const QString focus = QStringLiteral("document.hasFocus() + ' ' + document.activeElement.id");
        QTRY_COMPARE_WITH_TIMEOUT(evaluate(focus).toString(), QStringLiteral("true people"), patience);
        for (const char letter : QByteArray("ada@example.com"))
            QTest::keyClick(window().windowHandle(), letter);
        QTest::keyClick(window().windowHandle(), Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(isSharedWith("ada@example.com"), patience);
        QVERIFY(!window().isDismissed());
    }

    void refusalIsADialogToo() {
        refreshToken_.swap(wrongToken_);
        open();
        QTRY_VERIFY_WITH_TIMEOUT(
            evaluate(measuringScript()).toString().toInt() + shareWindowMargin == window().height(), patience);
        click(QStringLiteral("done"));
        QTRY_VERIFY_WITH_TIMEOUT(window().isDismissed(), patience);
        refreshToken_.swap(wrongToken_);
    }

private:
    ShareWindow& share() { return *windows_->shareFileList().front(); }
    ctmWindow& window() { return share().window(); }

    void open() {
        QUrl address = drive_.url().resolved(QUrl(QStringLiteral("/sharing/share")));
        address.setQuery(QStringLiteral("shareUiType=default&access_token=%1&client=desktop&id=").arg(refreshToken_));
        windows_->shareThisFile(address.toString() + file_, QStringLiteral("plan.txt"));
        QVERIFY(QTest::qWaitForWindowExposed(&window(), patience));
        QVERIFY(QTest::qWaitFor([this] { return share().done(); }, patience));
        // What is clicked stands still.
        const int height = evaluate(measuringScript()).toString().toInt() + shareWindowMargin;
        QVERIFY(QTest::qWaitFor([&] { return window().height() == height; }, patience));
    }
    QVariant evaluate(const QString& script) {
        std::optional<QVariant> answer;
        share().webShare()->evaluate(script, this, [&answer](const QVariant& result) { answer = result; });
        if (!QTest::qWaitFor([&answer] { return answer.has_value(); }, patience))
            return {};
        return *answer;
    }
    void click(const QString& id) {
        const QStringList place =
            evaluate(QStringLiteral("(() => { const r = document.getElementById('%1')"
                                    ".getBoundingClientRect();"
                                    " return (r.left + r.right) / 2 + ' ' + (r.top + r.bottom) / 2;"
                                    " })()")
                         .arg(id))
                .toString()
                .split(QLatin1Char(' '));
        QCOMPARE(place.size(), 2);
        const QPoint inPage(qRound(place[0].toDouble()), qRound(place[1].toDouble()));
        QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {},
                          share().webShare()->widget()->mapTo(&window(), inPage));
    }
    bool isSharedWith(const QByteArray& address) {
        return client_->call(QStringLiteral("drive.permissions.list"), {{QStringLiteral("fileId"), file_}})
            .body.contains(address);
    }

    LocalDriveProcess drive_;
    std::unique_ptr<LocalClient> client_;
    QTemporaryDir folder_;
    QString refreshToken_;
    QString wrongToken_ = QStringLiteral("wrong");
    QString file_;
    std::unique_ptr<PluginWebViews> webViews_;
    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<ShareWindows> windows_;
};

int main(int argc, char** argv) {
    // As the program does: the engine's module comes too late for it, and without it pages never learn that they have
    // the focus.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    TestShareWindowDesktop test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sharewindow_desktop.moc"
