// Where the popover goes, for trays at every edge and screens of every arrangement.
#include "popover/window/PopoverPlacement.h"

#include <QTest>

using namespace quenby;

namespace {

const QSize usual(330, 432);
const PopoverScreen bare{QRect(0, 0, 1920, 1080), QRect(0, 0, 1920, 1080)};
const PopoverScreen panelBelow{QRect(0, 0, 1920, 1080), QRect(0, 0, 1920, 1040)};
const PopoverScreen panelAbove{QRect(0, 0, 1920, 1080), QRect(0, 32, 1920, 1048)};
const PopoverScreen panelLeft{QRect(0, 0, 1920, 1080), QRect(48, 0, 1872, 1080)};
const PopoverScreen panelRight{QRect(0, 0, 1920, 1080), QRect(0, 0, 1872, 1080)};
// At twice the scale of the first, to its right and lower, with a gap between them.
const PopoverScreen fine{QRect(2200, 300, 1280, 720), QRect(2200, 300, 1280, 680)};
// To the left of the first and above it.
const PopoverScreen negative{QRect(-1600, -900, 1600, 900), QRect(-1600, -900, 1600, 860)};
const QPoint nowhere(-9999, -9999);

} // namespace

class PopoverPlacementTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void place_data() {
        QTest::addColumn<PlacementQuestion>("question");
        QTest::addColumn<PopoverPlace>("expected");
        const auto row = [](const char* name, const PlacementQuestion& question, const QRect& frame, Qt::Edge moving) {
            QTest::newRow(name) << question << PopoverPlace{frame, moving};
        };

        row("panel below", {QRect(1000, 1050, 22, 22), nowhere, {panelBelow}, usual}, QRect(846, 604, 330, 432),
            Qt::TopEdge);
        row("panel below, in the corner", {QRect(1890, 1050, 22, 22), nowhere, {panelBelow}, usual},
            QRect(1586, 604, 330, 432), Qt::TopEdge);
        row("panel above", {QRect(1000, 5, 22, 22), nowhere, {panelAbove}, usual}, QRect(846, 36, 330, 432),
            Qt::BottomEdge);
        row("panel at the left, tray low", {QRect(13, 1040, 22, 22), nowhere, {panelLeft}, usual},
            QRect(52, 630, 330, 432), Qt::TopEdge);
        row("panel at the left, tray high", {QRect(13, 100, 22, 22), nowhere, {panelLeft}, usual},
            QRect(52, 100, 330, 432), Qt::BottomEdge);
        row("panel at the right", {QRect(1885, 1050, 22, 22), nowhere, {panelRight}, usual}, QRect(1538, 640, 330, 432),
            Qt::TopEdge);

        row("strip on the windows' area", {QRect(1700, 0, 60, 23), nowhere, {bare}, usual}, QRect(1565, 27, 330, 432),
            Qt::BottomEdge);
        row("panel below that hides", {QRect(1000, 1050, 22, 22), nowhere, {bare}, usual}, QRect(846, 614, 330, 432),
            Qt::TopEdge);
        row("partly off the screen", {QRect(1900, -10, 60, 23), nowhere, {bare}, usual}, QRect(1586, 17, 330, 432),
            Qt::BottomEdge);
        row("off every screen", {QRect(5000, 4000, 20, 20), nowhere, {bare}, usual}, QRect(1586, 643, 330, 432),
            Qt::TopEdge);

        row("second screen, finer", {QRect(3000, 990, 11, 11), nowhere, {panelBelow, fine}, usual},
            QRect(2840, 544, 330, 432), Qt::TopEdge);
        row("in the gap, nearer to the second", {QRect(2150, 400, 20, 20), nowhere, {panelBelow, fine}, usual},
            QRect(2204, 424, 330, 432), Qt::BottomEdge);
        row("mostly on the second", {QRect(1910, 400, 310, 20), nowhere, {panelBelow, fine}, usual},
            QRect(2204, 424, 330, 432), Qt::BottomEdge);
        row("the panel between two screens",
            {QRect(1000, 1050, 22, 22),
             nowhere,
             {{QRect(0, 1080, 1920, 1080), QRect(0, 1080, 1920, 1080)}, panelBelow},
             usual},
            QRect(846, 604, 330, 432), Qt::TopEdge);
        row("negative coordinates", {QRect(-100, -30, 22, 22), nowhere, {bare, negative}, usual},
            QRect(-334, -476, 330, 432), Qt::TopEdge);

        const PopoverScreen low{QRect(0, 0, 1024, 400), QRect(0, 0, 1024, 368)};
        row("lower than the height", {QRect(900, 373, 22, 22), nowhere, {low}, usual}, QRect(690, 4, 330, 360),
            Qt::TopEdge);
        row("lower, anchor on the area", {QRect(500, 0, 60, 23), nowhere, {low}, usual}, QRect(365, 27, 330, 337),
            Qt::BottomEdge);
        row("no side has room", {QRect(500, 180, 20, 20), nowhere, {low}, usual}, QRect(345, 4, 330, 360), Qt::TopEdge);
        const PopoverScreen narrow{QRect(0, 0, 300, 900), QRect(0, 0, 300, 900)};
        row("narrower than the width", {QRect(200, 0, 20, 20), nowhere, {narrow}, usual}, QRect(4, 24, 292, 432),
            Qt::BottomEdge);

        row("no anchor, at the pointer", {{}, QPoint(500, 500), {bare}, usual}, QRect(335, 505, 330, 432),
            Qt::BottomEdge);
        row("no anchor, pointer low", {{}, QPoint(500, 1000), {bare}, usual}, QRect(335, 564, 330, 432), Qt::TopEdge);
        row("nothing known", {{}, nowhere, {bare, negative}, usual}, QRect(1586, 4, 330, 432), Qt::BottomEdge);
        row("nothing known, panel below", {{}, nowhere, {panelBelow}, usual}, QRect(1586, 604, 330, 432), Qt::TopEdge);
        row("nothing known, right to left", {{}, nowhere, {panelAbove}, usual, Qt::RightToLeft}, QRect(4, 36, 330, 432),
            Qt::BottomEdge);
    }
    void place() {
        QFETCH(PlacementQuestion, question);
        QFETCH(PopoverPlace, expected);
        const PopoverPlace place = placePopover(question);
        QCOMPARE(place.frame, expected.frame);
        QCOMPARE(place.movingEdge, expected.movingEdge);
    }

    // Wherever the anchor is: whole on one screen, and beside the anchor as long as there is room.
    void anywhere() {
        const QList<PopoverScreen> screens{panelBelow, fine, negative};
        for (int x = -1800; x < 3600; x += 97) {
            for (int y = -1000; y < 1300; y += 53) {
                const QRect anchor(x, y, 24, 24);
                const QRect frame = placePopover({anchor, nowhere, screens, usual}).frame;
                const bool isWhole = std::any_of(screens.begin(), screens.end(), [&frame](const PopoverScreen& screen) {
                    return screen.available.contains(frame);
                });
                const QByteArray where = QByteArray::number(x) + ' ' + QByteArray::number(y);
                QVERIFY2(isWhole, where.constData());
                QVERIFY2(!frame.intersects(anchor), where.constData());
                QVERIFY2(frame.width() == usual.width() && frame.height() >= 250, where.constData());
            }
        }
    }
};

QTEST_GUILESS_MAIN(PopoverPlacementTest)
#include "tst_popoverplacement.moc"
