// The status item in a real panel: by StatusNotifierItem or by XEmbed, whichever the desktop was started with.
#include "platform/linux/desktop/AutomaticStatusItemHosts.h"
#include "tests/platform/desktop/PaintedFace.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/support/Settled.h"

#include <QApplication>
#include <QMenu>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <QDBusConnection>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms

QImage screenPicture() { return QGuiApplication::primaryScreen()->grabWindow(0).toImage(); }

// The panel lies along the lower edge; its tray is at the right end, and has nothing but our item.
QRect trayArea() {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    return {screen.right() - 31, screen.bottom() - 31, 32, 32};
}

QImage trayPicture() { return screenPicture().copy(trayArea().adjusted(4, 4, -4, -4)); }

bool isItemSeen() {
    const QImage picture = trayPicture();
    int darkest = 255;
    int lightest = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int grey = qGray(picture.pixel(x, y));
            darkest = qMin(darkest, grey);
            lightest = qMax(lightest, grey);
        }
    }
    return lightest - darkest > 90;
}

} // namespace

class tst_TrayHost : public QObject {
    Q_OBJECT

    QString panelKind_ = QStringLiteral(QUENBY_TEST_PANEL);
    DesktopPart panel_{QStringLiteral("panel")};
    PaintedFace face_;
    QMenu menu_;
    std::unique_ptr<AutomaticStatusItemHosts> hosts_;
    int newIcons_ = 0; // signals on the bus
    int newToolTips_ = 0;

    StatusItemHost* host() const { return hosts_->host(); }
    bool isIn(StatusItemPlace place) const { return host() && host()->place() == place; }

public Q_SLOTS:
    void countNewIcon() { ++newIcons_; }
    void countNewToolTip() { ++newToolTips_; }

private Q_SLOTS:
    void initTestCase() {
        QApplication::setQuitOnLastWindowClosed(false);
        menu_.addAction(QStringLiteral("First"));
        hosts_ = std::make_unique<AutomaticStatusItemHosts>(
            StatusItemHostsOptions{.place = {}, .patience = std::chrono::milliseconds(300)}, makeSystemTimeSource());
        connect(hosts_.get(), &StatusItemHosts::hostChanged, this, [this] { host()->show(face_, menu_); });
        for (const auto& [signal, slot] :
             {std::pair("NewIcon", SLOT(countNewIcon())), std::pair("NewToolTip", SLOT(countNewToolTip()))}) {
            QDBusConnection::sessionBus().connect({}, QStringLiteral("/StatusNotifierItem"),
                                                  QStringLiteral("org.kde.StatusNotifierItem"), QLatin1String(signal),
                                                  this, slot);
        }
    }
    void cleanupTestCase() { hosts_.reset(); }

    void theTrayThatIsThereShowsTheItem() {
        hosts_->start();
        QTRY_VERIFY_WITH_TIMEOUT(isIn(StatusItemPlace::tray), patience);
        QVERIFY(settles(isItemSeen, patience));
    }

    void clicksArrive() {
        QSignalSpy clicked(host(), &StatusItemHost::clicked);
        QSignalSpy middleClicked(host(), &StatusItemHost::middleClicked);
        const QPoint item = trayArea().center();
        clickAt(item);
        QTRY_COMPARE_WITH_TIMEOUT(clicked.size(), 1, patience);
        clickAt(item, 2);
        QTRY_COMPARE_WITH_TIMEOUT(middleClicked.size(), 1, patience);

        QSignalSpy chosen(menu_.actions().first(), &QAction::triggered);
        clickAt(item, 3);
        // The menu is the panel's or ours, and comes when it likes; without it the keys go nowhere.
        const auto choose = [&chosen] {
            useInput(QStringLiteral("key Down key Return"));
            return !chosen.isEmpty();
        };
        QTRY_VERIFY_WITH_TIMEOUT(choose(), patience);
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(clicked.size(), 1);
        useInput(QStringLiteral("mousemove 10 10"));
    }

    void onlyWhatLooksDifferentIsSent() {
        const bool isOnBus = panelKind_ == QLatin1String("xfce4");
        const QImage before = trayPicture();
        newIcons_ = newToolTips_ = 0;
        for (int i = 0; i < 10; ++i)
            host()->update();
        face_.percent = 60;
        host()->update();
        face_.text = QStringLiteral("6.0 GB");
        host()->update();
        // What was sent before these two has arrived with them.
        QTRY_COMPARE_WITH_TIMEOUT(newToolTips_, isOnBus ? 1 : 0, patience);
        QTRY_COMPARE_WITH_TIMEOUT(newIcons_, isOnBus ? 1 : 0, patience);
        QVERIFY(settles([&] { return trayPicture() != before && isItemSeen(); }, patience));
        // A picture that nobody sees is not painted over and over.
        const int paints = face_.iconPaints;
        host()->update();
        QVERIFY(face_.iconPaints <= paints + 1);
    }

    // The panel keeps its colour, so that in one of the two palettes the gauge is as dark as what is around it.
    void theItemIsSeenOnAPanelThatIsAsDarkAsTheGauge() {
        const QImage light = trayPicture();
        const QPalette former = QApplication::palette();
        QApplication::setPalette(QPalette(QColor(40, 40, 40)));
        QVERIFY(settles([&] { return trayPicture() != light && isItemSeen(); }, patience));
        QApplication::setPalette(former);
        QVERIFY(settles([&] { return trayPicture() == light && isItemSeen(); }, patience));
    }

    void aPanelThatGoesAndComesBack() {
        panel_.end();
        QTRY_VERIFY_WITH_TIMEOUT(isIn(StatusItemPlace::strip), patience);
        QVERIFY(!host()->geometry().isEmpty());
        panel_.start(panelKind_);
        QTRY_VERIFY_WITH_TIMEOUT(isIn(StatusItemPlace::tray), patience);
        QVERIFY(settles(isItemSeen, patience));
        QSignalSpy clicked(host(), &StatusItemHost::clicked);
        clickAt(trayArea().center());
        QTRY_COMPARE_WITH_TIMEOUT(clicked.size(), 1, patience);
    }

    void theUserMovesItAndBack() {
        hosts_->choose(StatusItemPlace::strip);
        QTRY_VERIFY_WITH_TIMEOUT(isIn(StatusItemPlace::strip), patience);
        QVERIFY(settles([] { return !isItemSeen(); }, patience));
        hosts_->choose(StatusItemPlace::tray);
        QTRY_VERIFY_WITH_TIMEOUT(isIn(StatusItemPlace::tray), patience);
        QVERIFY(settles(isItemSeen, patience));
    }
};

QTEST_MAIN(tst_TrayHost)
#include "tst_TrayHost.moc"
