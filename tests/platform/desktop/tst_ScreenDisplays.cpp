// Two monitors of odd sizes on a real X server, at scales that divide none of them. The scale is the program's:
// QUENBY_TEST_SCALES says what the toolkit is told, with commas in place of semicolons; empty: nothing.
#include "platform/linux/desktop/ScreenDisplays.h"
#include "platform/linux/x11/ScreenMonitors.h"
#include "tests/platform/desktop/VirtualDesktop.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <xcb/xcb.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms; only a hang takes so long

const QRect leftMonitor(0, 0, 617, 799);
const QRect rightMonitor(617, 0, 663, 401);

// The server makes a monitor of every output ("screen" is the only one here) that no other stands for.
void setMonitor(const QString& name, const QRect& pixels, const QString& output = QStringLiteral("none")) {
    const QString place =
        QStringLiteral("%1/200x%2/200+%3+%4").arg(pixels.width()).arg(pixels.height()).arg(pixels.x()).arg(pixels.y());
    outputOf(QStringLiteral("xrandr"), {QStringLiteral("--setmonitor"), name, place, output});
}
void removeMonitor(const QString& name) { outputOf(QStringLiteral("xrandr"), {QStringLiteral("--delmonitor"), name}); }

// Fills a part of the root window.
void paint(const QRect& pixels, quint32 colour) {
    xcb_connection_t* const connection = qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const xcb_gcontext_t context = xcb_generate_id(connection);
    const uint32_t values[] = {colour, XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS};
    xcb_create_gc(connection, context, root, XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE, values);
    const xcb_rectangle_t rectangle{static_cast<int16_t>(pixels.x()), static_cast<int16_t>(pixels.y()),
                                    static_cast<uint16_t>(pixels.width()), static_cast<uint16_t>(pixels.height())};
    xcb_poly_fill_rectangle(connection, root, context, 1, &rectangle);
    xcb_free_gc(connection, context);
    xcb_flush(connection);
}

quenby::Display named(const Displays& displays, const char* name) {
    const QList<quenby::Display> all = displays.all();
    for (const quenby::Display& display : all) {
        if (display.name == QLatin1String(name))
            return display;
    }
    return {};
}

} // namespace

class tst_ScreenDisplays : public QObject {
    Q_OBJECT

public:
    // Before there is an application.
    static void initMain() {
        setMonitor(QStringLiteral("LEFT"), leftMonitor, QStringLiteral("screen"));
        setMonitor(QStringLiteral("RIGHT"), rightMonitor);
        if (*QUENBY_TEST_SCALES)
            qputenv("QT_SCREEN_SCALE_FACTORS", QByteArray(QUENBY_TEST_SCALES).replace(',', ';'));
    }

private Q_SLOTS:
    void init() { displays_ = std::make_unique<ScreenDisplays>(); }
    void cleanup() {
        if (!named(*displays_, "THIRD").name.isEmpty())
            removeMonitor(QStringLiteral("THIRD"));
        QTRY_COMPARE_WITH_TIMEOUT(displays_->all().size(), 2, patience);
        displays_.reset();
    }

    void pixelsAreExact() {
        QCOMPARE(displays_->all().size(), 2);
        const quenby::Display left = named(*displays_, "LEFT");
        const quenby::Display right = named(*displays_, "RIGHT");
        QCOMPARE(left.pixels, leftMonitor);
        QCOMPARE(right.pixels, rightMonitor);
        QVERIFY(left.identifier != right.identifier && left.identifier != 0 && right.identifier != 0);
        for (const quenby::Display& display : {left, right}) {
            QScreen* const screen = displays_->screen(display);
            QVERIFY(screen);
            QCOMPARE(screen->name(), display.name);
            QCOMPARE(screen->geometry(), display.frame);
            QCOMPARE(screen->devicePixelRatio(), display.scale);
            QVERIFY(qAbs(display.frame.width() * display.scale - display.pixels.width()) < display.scale);
        }
        QCOMPARE(displays_->screen(displays_->main()), QGuiApplication::primaryScreen());
        const QByteArray scales = QUENBY_TEST_SCALES; // or the test tests less than it says
        QCOMPARE(right.scale, scales.isEmpty() ? 1.0 : scales.split('=').last().toDouble());
    }

    void picturesAreOfOneDisplay() {
        for (const char* name : {"LEFT", "RIGHT"}) {
            const quenby::Display display = named(*displays_, name);
            const quint32 edge = 0x00c832;
            const quint32 beside = 0x0000ff;
            paint(QRect(0, 0, 1280, 800), beside);
            paint(display.pixels, edge);
            paint(display.pixels.adjusted(1, 1, -1, -1), 0xff0000);
            const QImage picture = displays_->picture(display);
            QCOMPARE(picture.size(), display.pixels.size());
            QCOMPARE(picture.devicePixelRatio(), 1.0);
            const QRect inside = picture.rect();
            for (const QPoint& corner :
                 {inside.topLeft(), inside.topRight(), inside.bottomLeft(), inside.bottomRight()})
                QCOMPARE(picture.pixel(corner) & 0xffffff, edge);
            QCOMPARE(picture.pixel(1, 1) & 0xffffff, 0xff0000u);
            QCOMPARE(picture.pixel(inside.bottomRight() - QPoint(1, 1)) & 0xffffff, 0xff0000u);
        }
        quenby::Display gone = named(*displays_, "LEFT");
        gone.identifier = 4711;
        QVERIFY(displays_->picture(gone).isNull());
        QVERIFY(!displays_->screen(gone));
    }

    void changesAreToldOnce() {
        const quint32 left = named(*displays_, "LEFT").identifier;
        QSignalSpy changed(displays_.get(), &Displays::changed);
        setMonitor(QStringLiteral("THIRD"), QRect(617, 401, 333, 331));
        QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 1, patience);
        QCOMPARE(displays_->all().size(), 3);
        QCOMPARE(named(*displays_, "THIRD").pixels, QRect(617, 401, 333, 331));
        QCOMPARE(named(*displays_, "LEFT").identifier, left);
        const quint32 third = named(*displays_, "THIRD").identifier;

        removeMonitor(QStringLiteral("THIRD"));
        QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 2, patience);
        QCOMPARE(displays_->all().size(), 2);
        setMonitor(QStringLiteral("THIRD"), QRect(617, 401, 333, 331));
        QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 3, patience);
        QVERIFY(named(*displays_, "THIRD").identifier != third); // not the same display, as far as anyone knows

        for (QScreen* screen : QGuiApplication::screens())
            Q_EMIT screen->geometryChanged(screen->geometry());
        QCoreApplication::processEvents();
        QCOMPARE(changed.size(), 3);
    }

    // What an X server tells that this one doesn't.
    void matching() {
        const QRect root(0, 0, 4000, 2000);
        const QRect frame(100, 0, 911, 512); // of 1366 x 768 at 1.5
        const QRect wanted(100, 0, 1366, 768);
        const auto pixels = [&](const QList<ScreenMonitor>& monitors) {
            return pixelsOfScreen(QStringLiteral("B"), frame, 1.5, monitors, root);
        };
        QCOMPARE(pixels({{QStringLiteral("A"), QRect(0, 0, 1366, 768)}, {QStringLiteral("B"), wanted}}), wanted);
        // Two that show the same: the one of this name.
        QCOMPARE(pixels({{QStringLiteral("A"), QRect(100, 0, 1367, 768)}, {QStringLiteral("B"), wanted}}), wanted);
        QCOMPARE(pixels({{QStringLiteral("other"), wanted}}), wanted);
        // The server is ahead of the toolkit, or knows no monitors: about, and within the desktop.
        QCOMPARE(pixels({{QStringLiteral("B"), QRect(100, 0, 2000, 1000)}}), QRect(100, 0, 1367, 768));
        QCOMPARE(pixelsOfScreen({}, frame, 1.5, {}, QRect(0, 0, 1466, 768)), wanted);
    }

private:
    std::unique_ptr<ScreenDisplays> displays_;
};

QTEST_MAIN(tst_ScreenDisplays)
#include "tst_ScreenDisplays.moc"
