// The strip on a real screen: where it stands, what it looks like, and how it takes the pointer and files.
#include "platform/linux/desktop/AutomaticStatusItemHosts.h"
#include "platform/linux/desktop/StripHost.h"
#include "tests/platform/contracts/StatusItemHostsContract.h"
#include "tests/platform/desktop/PaintedFace.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/platform/fakes/FakeStatusItemHost.h"

#include <QApplication>
#include <QDrag>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms

// A file manager's window: what is dragged out of it is this list.
class DragSource final : public QWidget {
public:
    explicit DragSource(const QByteArray& uriList)
        : uriList_(uriList) {
        setGeometry(100, 300, 200, 200);
        setWindowTitle(QStringLiteral("Files"));
    }

    bool isDragOver = false;

protected:
    void mouseMoveEvent(QMouseEvent*) override {
        if (isDragOver)
            return;
        auto* drag = new QDrag(this);
        auto* files = new QMimeData;
        files->setData(QStringLiteral("text/uri-list"), uriList_);
        drag->setMimeData(files);
        drag->exec(Qt::CopyAction);
        isDragOver = true;
    }

private:
    QByteArray uriList_;
};

} // namespace

class tst_StripHost : public QObject {
    Q_OBJECT

    // The strip, and what it told.
    struct Stage {
        Stage() {
            QObject::connect(&host, &StatusItemHost::clicked, &host, [this] { log << QStringLiteral("clicked"); });
            QObject::connect(&host, &StatusItemHost::middleClicked, &host, [this] { log << QStringLiteral("middle"); });
            QObject::connect(&host, &StatusItemHost::menuRequested, &host,
                             [this](const QPoint& position) { menuAt = position; });
            QObject::connect(&host, &StatusItemHost::dragEntered, &host, [this] { log << QStringLiteral("entered"); });
            QObject::connect(&host, &StatusItemHost::dragEnded, &host, [this] { log << QStringLiteral("ended"); });
            QObject::connect(&host, &StatusItemHost::dropped, &host, [this](const QList<QByteArray>& paths) {
                log << QStringLiteral("dropped");
                droppedPaths = paths;
            });
            host.show(face, menu);
        }
        QPoint middle() const { return host.geometry().center(); }
        QImage picture() const {
            return QGuiApplication::primaryScreen()->grabWindow(0).toImage().copy(host.geometry());
        }
        bool isShown() const { return qGray(picture().pixel(3, 10)) > 200; }

        PaintedFace face;
        QMenu menu;
        StripHost host;
        QStringList log;
        QPoint menuAt;
        QList<QByteArray> droppedPaths;
    };

    // Drags from the window to a place and lets go there.
    static void drag(const QWidget& from, const QPoint& to) {
        const QPoint start = from.geometry().center();
        auto* input = new QProcess;
        connect(input, &QProcess::finished, input, &QObject::deleteLater);
        // In small steps, as a hand does; the first ones begin the drag.
        QString commands = QStringLiteral("mousemove %1 %2 mousedown 1").arg(start.x()).arg(start.y());
        for (int step = 1; step <= 20; ++step) {
            const QPoint now = start + (to - start) * step / 20;
            commands += QStringLiteral(" mousemove %1 %2 sleep 0.02").arg(now.x()).arg(now.y());
        }
        commands += QStringLiteral(" sleep 0.2 mouseup 1");
        input->start(QStringLiteral("xdotool"), commands.split(QLatin1Char(' ')));
    }

private Q_SLOTS:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }

    void hostsKeepTheirContract() {
        const PaintedFace face;
        FakeStatusItemHosts fake(StatusItemPlace::strip);
        statusItemHostsKeepTheirContract(fake, StatusItemPlace::strip, face);
        AutomaticStatusItemHosts automatic({.place = StatusItemPlace::strip}, makeSystemTimeSource());
        statusItemHostsKeepTheirContract(automatic, StatusItemPlace::strip, face);
    }

    void itHangsOnTheTopEdgeAndFollowsItsFace() {
        Stage stage;
        QTRY_VERIFY_WITH_TIMEOUT(stage.isShown(), patience);
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        const QRect first = stage.host.geometry();
        QCOMPARE(first.top(), 0);
        QVERIFY(first.right() < screen.right() - 100 && first.left() > screen.center().x());
        QVERIFY(first.width() > stage.face.size().width() && first.height() > stage.face.size().height());

        // It grows to the left, and paints what changed.
        stage.face.text = QStringLiteral("1023.99 GB");
        stage.face.isHighlighted = true;
        stage.host.update();
        QCOMPARE(stage.host.geometry().right(), first.right());
        QVERIFY(stage.host.geometry().width() > first.width());
        const auto isBlue = [&stage] { return QColor(stage.picture().pixel(10, 4)).blue() > 200; };
        QTRY_VERIFY_WITH_TIMEOUT(isBlue(), patience);

        const int paints = stage.face.paints;
        QCoreApplication::processEvents();
        QCOMPARE(stage.face.paints, paints);
    }

    void itFollowsTheScreen() {
        Stage stage;
        QTRY_VERIFY_WITH_TIMEOUT(stage.isShown(), patience);
        const QRect first = stage.host.geometry();
        // The right half belongs to no screen any more.
        outputOf(QStringLiteral("xrandr"), {QStringLiteral("--setmonitor"), QStringLiteral("half"),
                                            QStringLiteral("640/170x800/210+0+0"), QStringLiteral("screen")});
        QTRY_COMPARE_WITH_TIMEOUT(stage.host.geometry(), first.translated(-640, 0), patience);
        outputOf(QStringLiteral("xrandr"), {QStringLiteral("--delmonitor"), QStringLiteral("half")});
        QTRY_COMPARE_WITH_TIMEOUT(stage.host.geometry(), first, patience);

        // A panel takes the upper edge for itself.
        QWidget panel;
        panel.setGeometry(0, 0, 1280, 40);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        outputOf(QStringLiteral("xprop"),
                 {QStringLiteral("-id"), QString::number(panel.winId()), QStringLiteral("-f"),
                  QStringLiteral("_NET_WM_STRUT"), QStringLiteral("32c"), QStringLiteral("-set"),
                  QStringLiteral("_NET_WM_STRUT"), QStringLiteral("0, 0, 40, 0")});
        QTRY_COMPARE_WITH_TIMEOUT(stage.host.geometry(), first.translated(0, 40), patience);
    }

    void itTakesThePointerButNotTheKeyboard() {
        QWidget other;
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        Stage stage;
        QTRY_VERIFY_WITH_TIMEOUT(stage.isShown(), patience);
        clickAt(stage.middle());
        clickAt(stage.middle(), 2);
        clickAt(stage.middle(), 3);
        QTRY_VERIFY_WITH_TIMEOUT(!stage.menuAt.isNull(), patience);
        QCOMPARE(stage.log, (QStringList{QStringLiteral("clicked"), QStringLiteral("middle")}));
        QCOMPARE(stage.menuAt.x(), stage.host.geometry().left());
        QVERIFY(stage.menuAt.y() >= stage.host.geometry().bottom());
        QVERIFY(other.isActiveWindow());
    }

    void filesAreDropped_data() {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<bool>("faceTakes");
        QTest::addColumn<QStringList>("expectedLog");
        QTest::addColumn<QList<QByteArray>>("paths");

        const QStringList whole{QStringLiteral("entered"), QStringLiteral("dropped"), QStringLiteral("ended")};

        QTest::newRow("two files, one not in UTF-8") << QByteArray("file:///tmp/a%20b\r\nfile:///tmp/%FF\r\n") << true
                                                     << whole << QList<QByteArray>{"/tmp/a b", "/tmp/\xFF"};
        QTest::newRow("not taken by the face")
            << QByteArray("file:///tmp/a\r\n") << false << QStringList{} << QList<QByteArray>{};
        QTest::newRow("no files") << QByteArray("https://localhost/a\r\n") << true << QStringList{}
                                  << QList<QByteArray>{};
    }
    void filesAreDropped() {
        QFETCH(QByteArray, list);
        QFETCH(bool, faceTakes);
        QFETCH(QStringList, expectedLog);
        DragSource source(list);
        source.show();
        QVERIFY(QTest::qWaitForWindowActive(&source));
        Stage stage;
        stage.face.takesFiles = faceTakes;
        QTRY_VERIFY_WITH_TIMEOUT(stage.isShown(), patience);
        drag(source, stage.middle());
        QTRY_VERIFY_WITH_TIMEOUT(source.isDragOver, patience);
        QTRY_COMPARE_WITH_TIMEOUT(stage.log, expectedLog, patience);
        QTEST(stage.droppedPaths, "paths");
    }
};

QTEST_MAIN(tst_StripHost)
#include "tst_StripHost.moc"
