// What is drawn over the picture while somebody chooses.
#include "platform/linux/screencapture/CapturePainter.h"

#include <QPainter>
#include <QRandomGenerator>
#include <QTest>

using namespace quenby;

namespace {

CaptureGround ground() {
    return {QRect(0, 0, 900, 500),
            {{QRect(0, 0, 500, 500), 1}, {QRect(500, 60, 400, 440), 1.5}},
            {QRect(100, 100, 80, 60), QRect(80, 80, 300, 200)}};
}

// No two neighbours are alike.
QImage picture() {
    QImage image(ground().desktop.size(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x & 255, y & 255, (x * 7 + y * 13) & 255));
    return image;
}

// Somebody who does anything but take or leave.
void doAnything(CaptureSelection& selection, CaptureSelection::Time time) {
    auto* random = QRandomGenerator::global();
    const auto number = [random](int end) { return random->bounded(end); };
    const QPoint place(number(900), number(500));
    const CaptureModifiers modifiers{number(2) == 0, number(3) == 0, false};
    switch (number(8)) {
    case 0:
        return selection.press(place, time);
    case 1:
        selection.pressKey(CaptureKey::space, {});
        return selection.releaseKey(CaptureKey::space);
    case 2:
    case 3:
        return selection.pressKey(static_cast<CaptureKey>(number(4)), modifiers);
    default:
        return selection.movePointer(place);
    }
}

QImage crop(const QImage& image, const QRect& part) { return image.copy(part); }

} // namespace

class tst_CaptureScene : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Painting what changed leads to the same as painting everything, and does not paint everything.
    void whatChangedIsEnough() {
        const QImage desktop = picture();
        const QRect all = desktop.rect();
        for (int round = 0; round < 15; ++round) {
            CaptureSelection selection(ground(), QPoint(250, 250));
            CaptureScene scene = sceneOf(selection);
            QImage screen = paintedScene(scene, desktop, all);
            for (int step = 0; step < 20; ++step) {
                doAnything(selection, std::chrono::seconds(step));
                const CaptureScene now = sceneOf(selection);
                const QRegion changed = changedRegion(scene, now) & all;
                scene = now;
                QPainter painter(&screen);
                for (const QRect& part : changed)
                    painter.drawImage(part.topLeft(), paintedScene(scene, desktop, part));
                painter.end();
                QCOMPARE(screen, paintedScene(scene, desktop, all));
            }
        }
        CaptureSelection selection(ground(), QPoint(100, 100));
        selection.press({100, 100}, {});
        selection.movePointer({300, 300});
        const CaptureScene before = sceneOf(selection);
        QVERIFY(changedRegion(before, before).isEmpty());
        selection.movePointer({301, 300});
        qint64 pixels = 0;
        for (const QRect& part : changedRegion(before, sceneOf(selection)))
            pixels += qint64{part.width()} * part.height();
        QVERIFY2(pixels < 25'000, qPrintable(QString::number(pixels)));
    }

    void everythingStaysOnItsScreen() {
        const QList<QPoint> corners{{0, 0},    {499, 0},  {0, 499},   {499, 499},
                                    {500, 60}, {899, 60}, {500, 499}, {899, 499}};
        for (const QPoint& from : corners) {
            for (const QPoint& to : corners) {
                CaptureSelection selection(ground(), from);
                const auto check = [&selection] {
                    const CaptureScene scene = sceneOf(selection);
                    const QRect screen = screenAt(ground().screens, selection.pointer()).pixels;
                    QRect pointer(selection.pointer(), QSize(1, 1));
                    QVERIFY(screen.contains(scene.magnifier->frame));
                    QVERIFY(!scene.magnifier->frame.intersects(pointer));
                    if (scene.readout)
                        QVERIFY(screen.contains(scene.readout->plate));
                    if (scene.readout)
                        QVERIFY(!scene.readout->plate.intersects(scene.magnifier->frame));
                    if (scene.hint)
                        QVERIFY(screen.contains(scene.hint->plate));
                    if (scene.hint)
                        QVERIFY(!scene.hint->plate.intersects(scene.magnifier->frame));
                };
                check();
                selection.press(from, {});
                selection.movePointer(to);
                check();
            }
        }
    }

    // Each pixel around the pointer as a square of its own colour; the chosen part is not darkened, nor are its edges
    // covered.
    void pixelsAreTheirOwn() {
        const QImage desktop = picture();
        CaptureSelection selection(ground(), QPoint(700, 300));
        const CaptureMagnifier magnifier = *sceneOf(selection).magnifier;
        const QImage screen = paintedScene(sceneOf(selection), desktop, desktop.rect());
        const QPoint first = magnifier.frame.topLeft() + QPoint(1, 1) * magnifier.edge;
        QVERIFY(magnifier.cell >= 10);
        for (const QPoint offset : {QPoint(0, 0), QPoint(16, 16), QPoint(8, 8), QPoint(3, 12)}) {
            const QRect cell(first + offset * magnifier.cell, QSize(magnifier.cell, magnifier.cell));
            const QRgb expected = desktop.pixel(QPoint(700, 300) + offset - QPoint(8, 8));
            QImage square(cell.size(), QImage::Format_RGB32);
            square.fill(expected);
            QCOMPARE(crop(screen, cell), square);
        }

        selection.press({40, 50}, {});
        selection.movePointer({90, 70});
        const QRect chosen(40, 50, 51, 21);
        const QImage dragged = paintedScene(sceneOf(selection), desktop, desktop.rect());
        QCOMPARE(crop(dragged, chosen), crop(desktop, chosen));
        QVERIFY(qGray(dragged.pixel(20, 60)) < qGray(desktop.pixel(20, 60)));
    }
};

QTEST_MAIN(tst_CaptureScene)
#include "tst_CaptureScene.moc"
