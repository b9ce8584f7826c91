#include "platform/linux/media/engine/capture/EvenCrop.h"

#include <QTest>

using namespace quenby;

class tst_evencrop : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void crop_data() {
        QTest::addColumn<QRect>("asked");
        QTest::addColumn<QSize>("picture");
        QTest::addColumn<QRect>("crop");
        const QSize screen(1280, 800);
        QTest::newRow("nothing: all") << QRect() << screen << QRect(0, 0, 1280, 800);
        QTest::newRow("all of an odd one") << QRect() << QSize(1365, 767) << QRect(0, 0, 1364, 766);
        QTest::newRow("even, at an odd place") << QRect(7, 9, 100, 50) << screen << QRect(7, 9, 100, 50);
        QTest::newRow("odd grows") << QRect(7, 9, 11, 11) << screen << QRect(7, 9, 12, 12);
        QTest::newRow("one pixel") << QRect(0, 0, 1, 1) << screen << QRect(0, 0, 2, 2);
        QTest::newRow("the last pixel") << QRect(1279, 799, 1, 1) << screen << QRect(1278, 798, 2, 2);
        QTest::newRow("to the edge") << QRect(1269, 0, 11, 10) << screen << QRect(1268, 0, 12, 10);
        QTest::newRow("beyond it") << QRect(-5, 790, 16, 100) << screen << QRect(0, 790, 12, 10);
        QTest::newRow("larger") << QRect(-10, -10, 5000, 5000) << QSize(1365, 800) << QRect(0, 0, 1364, 800);
        QTest::newRow("beside it") << QRect(1280, 0, 10, 10) << screen << QRect();
    }
    void crop() {
        QFETCH(QRect, asked);
        QFETCH(QSize, picture);
        QTEST(evenCrop(asked, picture), "crop");
    }

    // Half the pixels, as from a desktop that hands out points.
    void scaled() {
        QCOMPARE(scaledCrop(QRect(100, 51, 201, 100), QSize(2560, 1600), QSize(1280, 800)), QRect(50, 26, 101, 50));
        QCOMPARE(scaledCrop(QRect(), QSize(2560, 1600), QSize(1280, 800)), QRect());
        QCOMPARE(scaledCrop(QRect(1, 2, 3, 4), QSize(), QSize(1280, 800)), QRect(1, 2, 3, 4));
    }
};

QTEST_APPLESS_MAIN(tst_evencrop)
#include "tst_evencrop.moc"
