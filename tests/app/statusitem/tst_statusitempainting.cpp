// What the status item looks like, by the pixels that decide it, at every scale; and how wide it is.

#include "app/statusitem/ApplicationIcon.h"
#include "app/statusitem/StatusItemSizing.h"
#include "app/statusitem/StatusItemView.h"

#include <QPainter>
#include <QTest>

using namespace quenby;

namespace {

constexpr QSize itemSize(80, 17);

StatusItemLook lookWith(bool icon, bool text, unsigned percent = 37) {
    StatusItemLook look;
    look.strsize = QStringLiteral("37%");
    look.displaysize = percent;
    look.showMenubarIcon = icon;
    look.showUsegeText = text;
    look.width = itemSize.width();
    return look;
}

QImage canvas(const QSize& size, qreal scale) {
    QImage image((QSizeF(size) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

QImage painted(const StatusItemView& view, qreal scale, bool isDark = false, QSize size = itemSize) {
    QImage image = canvas(size, scale);
    QPainter painter(&image);
    view.paint(painter, QRect(QPoint(0, 0), size), isDark);
    return image;
}

QColor at(const QImage& image, qreal x, qreal y) {
    const qreal scale = image.devicePixelRatio();
    return image.pixelColor(int(x * scale), int(y * scale));
}

// Whether anything was painted between two columns, in logical pixels.
bool hasInk(const QImage& image, int left, int right) {
    const qreal scale = image.devicePixelRatio();
    for (int x = int(left * scale); x < int(right * scale); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(x, y).alpha() > 40)
                return true;
        }
    }
    return false;
}

bool isLike(const QColor& a, const QColor& b, int distance) {
    return qAbs(a.red() - b.red()) <= distance && qAbs(a.green() - b.green()) <= distance &&
           qAbs(a.blue() - b.blue()) <= distance && a.alpha() == b.alpha();
}

const QColor popoverBlue(72, 90, 254);

} // namespace

class StatusItemPaintingTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void width_data() {
        QTest::addColumn<bool>("icon");
        QTest::addColumn<bool>("text");
        QTest::addColumn<qreal>("width"); // for a text of 30.5
        QTest::newRow("icon and text") << true << true << 59.5;
        QTest::newRow("icon") << true << false << 35.5;
        QTest::newRow("text") << false << true << 27.0;
        QTest::newRow("neither") << false << false << 47.5;
    }
    void width() {
        QFETCH(bool, icon);
        QFETCH(bool, text);
        QTEST(statusItemWidth(30.5, icon, text), "width");
    }

    // The sector grows from the bottom against the clock: right below, right above, left above, left below.
    void sector_data() {
        QTest::addColumn<unsigned>("percent");
        QTest::addColumn<QString>("quarters"); // painted ones
        QTest::addColumn<qreal>("scale");
        for (const qreal scale : {1.0, 1.5, 2.0}) {
            const auto row = [scale](unsigned percent, const char* quarters) {
                QTest::addRow("%u%% at %g", percent, scale) << percent << QString::fromLatin1(quarters) << scale;
            };
            row(0, "----");
            row(25, "#---");
            row(50, "##--");
            row(75, "###-");
            row(100, "####");
            row(250, "####");
        }
    }
    void sector() {
        QFETCH(unsigned, percent);
        QFETCH(qreal, scale);
        StatusItemView view({});
        view.setLook(lookWith(true, false, percent));
        const QImage image = painted(view, scale);
        const QPointF points[] = {{11.5, 11.5}, {11.5, 5.5}, {5.5, 5.5}, {5.5, 11.5}};
        QString quarters;
        for (const QPointF& point : points)
            quarters += QLatin1Char(at(image, point.x(), point.y()).alpha() > 200 ? '#' : '-');
        QTEST(quarters, "quarters");
        QVERIFY(at(image, 8.5, 0.6).alpha() > 150); // the ring, at the top
        QCOMPARE(at(image, 1, 1).alpha(), 0);       // outside of it
        QVERIFY(!hasInk(image, 18, 80));
        // A square of any other size shows the same.
        QImage icon = canvas({51, 51}, scale);
        {
            QPainter painter(&icon);
            view.paintIcon(painter, QRect(0, 0, 51, 51), false);
        }
        for (int i = 0; i < 4; ++i)
            QCOMPARE(at(icon, points[i].x() * 3, points[i].y() * 3).alpha() > 200, quarters[i] == QLatin1Char('#'));
    }

    void places_data() {
        QTest::addColumn<bool>("icon");
        QTest::addColumn<bool>("text");
        QTest::addColumn<bool>("paintsLeft");   // columns 5 to 16: the gauge, or the text that stands alone
        QTest::addColumn<bool>("paintsMiddle"); // 18 to 25
        QTest::addColumn<bool>("paintsRight");  // from 45 on, where only the text beside the gauge reaches
        QTest::newRow("icon and text") << true << true << true << false << true;
        QTest::newRow("icon") << true << false << true << false << false;
        QTest::newRow("text") << false << true << true << true << false;
        QTest::newRow("neither") << false << false << false << false << false;
    }
    void places() {
        QFETCH(bool, icon);
        QFETCH(bool, text);
        StatusItemView view({});
        view.setLook(lookWith(icon, text));
        const QImage image = painted(view, 2);
        QTEST(hasInk(image, 5, 16), "paintsLeft");
        QTEST(hasInk(image, 18, 25), "paintsMiddle");
        QTEST(hasInk(image, 45, 80), "paintsRight");
    }

    void colours_data() {
        QTest::addColumn<bool>("popover");
        QTest::addColumn<bool>("drag");
        QTest::addColumn<bool>("dark");
        QTest::addColumn<QColor>("ink");
        QTest::addColumn<QColor>("ground");
        const QColor grey(128, 128, 128);
        QTest::newRow("light") << false << false << false << QColor(Qt::black) << QColor(Qt::transparent);
        QTest::newRow("dark") << false << false << true << QColor(Qt::white) << QColor(Qt::transparent);
        QTest::newRow("popover") << true << false << false << QColor(Qt::white) << popoverBlue;
        QTest::newRow("popover, dark") << true << false << true << QColor(Qt::white) << popoverBlue;
        QTest::newRow("drag") << false << true << false << QColor(Qt::white) << grey;
        QTest::newRow("drag over the popover's") << true << true << false << QColor(Qt::white) << grey;
    }
    void colours() {
        QFETCH(bool, popover);
        QFETCH(bool, drag);
        QFETCH(bool, dark);
        QFETCH(QColor, ink);
        QFETCH(QColor, ground);
        StatusItemView view({});
        StatusItemLook look = lookWith(true, true, 100);
        look.isPopoverVisible = popover;
        look.drag = drag;
        view.setLook(look);
        const QImage image = painted(view, 2, dark);
        QCOMPARE(at(image, 11.5, 8.5), ink);
        // The backdrop is hardly there in the middle, and plain to see at the top.
        QVERIFY2(isLike(at(image, 22, 9), ground, 16), qPrintable(at(image, 22, 9).name()));
        QCOMPARE(!isLike(at(image, 22, 0), ground, 16), popover);
    }

    void backdropsDiffer() {
        StatusItemView view({});
        StatusItemLook look = lookWith(false, false);
        look.isPopoverVisible = true;
        view.setLook(look);
        QVERIFY(painted(view, 1, true) != painted(view, 1, false));
    }

    void standsInTheMiddleOfAHigherPlaceAndStaysInside() {
        StatusItemView view({});
        view.setLook(lookWith(true, true, 100));
        QImage image = canvas({100, 60}, 1);
        {
            QPainter painter(&image);
            view.paint(painter, QRect(10, 10, 40, 37), false);
        }
        QCOMPARE(at(image, 10 + 11.5, 10 + 18.5), QColor(Qt::black));
        QCOMPARE(at(image, 10 + 8.5, 18).alpha(), 0);
        QVERIFY(hasInk(image, 40, 50) && !hasInk(image, 50, 100));
    }

    void image() {
        StatusItemView view(applicationIcon());
        const QImage before = view.image();
        QCOMPARE(before.size(), QSize(17, 17));
        QVERIFY(at(before, 2, 8).alpha() > 200); // the icon's ground
        view.setLook(lookWith(true, false, 100));
        painted(view, 1, true);
        QCOMPARE(at(view.image(), 8, 8), QColor(Qt::white));
    }
};

QTEST_MAIN(StatusItemPaintingTest)
#include "tst_statusitempainting.moc"
