// The rectangle that is recorded: what a click, a drag and each handle make of it, and that nothing leaves the screen.
#include "recording/RecordingState.h"
#include "recording/selection/SelectionClamp.h"
#include "recording/selection/SelectionHandles.h"
#include "recording/selection/SelectionModel.h"
#include "recording/selection/StartButtonPlace.h"

#include <QRandomGenerator>
#include <QTest>

#include <limits>

using namespace quenby;

namespace {

constexpr QSizeF screen{1000, 600};

// One overlay with its state, and the drags of a pointer on it.
struct Overlay {
    RecordingState state{true, true, false};
    SelectionModel model{state, screen};

    SelectionOutcome click(const QPointF& point) {
        model.press(point);
        return model.release(point);
    }
    SelectionOutcome drag(const QList<QPointF>& path) {
        model.press(path.first());
        for (const QPointF& point : path.mid(1))
            model.drag(point);
        return model.release(path.last());
    }
    // A rectangle is placed, by this drag.
    void place(const QRectF& rectangle) {
        drag({rectangle.topLeft(), rectangle.center(), rectangle.bottomRight()});
        QCOMPARE(model.selectionRect(), rectangle);
    }
};

} // namespace

class SelectionModelTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aClickChoosesTheMainScreen() {
        Overlay overlay;
        overlay.model.setOverlaySize({640, 480}); // of another screen
        overlay.model.press({20, 30});
        QVERIFY(overlay.model.isLabelShown());
        overlay.model.drag({20, 30}); // as some devices tell without having moved
        QCOMPARE(overlay.model.release({20, 30}), SelectionOutcome::fullScreenChosen);
        QCOMPARE(overlay.model.fullScreen(), QRectF(QPointF(0, 0), screen));
        QVERIFY(overlay.state.isRecordingVideo && !overlay.state.isRecordingVideoClicked);
        QVERIFY(!overlay.state.isCropSelection);
    }

    void aDragDrawsARectangle_data() {
        QTest::addColumn<QList<QPointF>>("path");
        QTest::addColumn<QRectF>("expected");
        const QRectF plain(100, 200, 300, 50);
        QTest::newRow("upwards to the right") << QList<QPointF>{{100, 200}, {150, 210}, {400, 250}} << plain;
        QTest::newRow("downwards to the left") << QList<QPointF>{{400, 250}, {390, 240}, {100, 200}} << plain;
        QTest::newRow("downwards to the right") << QList<QPointF>{{100, 250}, {400, 200}} << plain;
        QTest::newRow("in one jump") << QList<QPointF>{{100, 200}, {400, 250}} << plain;
        QTest::newRow("to the corner") << QList<QPointF>{{900, 500}, {1000, 600}} << QRectF(900, 500, 100, 100);
        // The width is kept, the edge is where it stops.
        QTest::newRow("beyond the right edge")
            << QList<QPointF>{{700, 100}, {900, 200}, {1100, 220}} << QRectF(800, 100, 200, 120);
        QTest::newRow("beyond the upper edge")
            << QList<QPointF>{{100, 400}, {200, 500}, {220, 610}} << QRectF(100, 500, 120, 100);
        QTest::newRow("beyond the left and the lower edge")
            << QList<QPointF>{{100, 200}, {-50, -10}} << QRectF(0, 0, 150, 210);
    }
    void aDragDrawsARectangle() {
        QFETCH(QList<QPointF>, path);
        QFETCH(QRectF, expected);
        Overlay overlay;
        QCOMPARE(overlay.drag(path), SelectionOutcome::nothing);
        QCOMPARE(overlay.model.selectionRect(), expected);
        QVERIFY(overlay.state.isCropSelection && overlay.state.isRecordingVideoClicked);
    }

    void whatIsShown() {
        Overlay overlay;
        const auto shown = [&overlay]() -> QString {
            return QString(overlay.model.isLabelShown() ? u'L' : u'-') %
                   QLatin1Char(overlay.model.isOutlineShown() ? 'O' : '-') %
                   QLatin1Char(overlay.model.isStartButtonShown() ? 'B' : '-');
        };
        QCOMPARE(shown(), QStringLiteral("L--")); // waiting
        overlay.model.press({100, 100});
        QCOMPARE(shown(), QStringLiteral("L--")); // pressed
        overlay.model.drag({300, 300});
        QCOMPARE(shown(), QStringLiteral("-O-")); // dragging a new rectangle
        overlay.model.release({300, 300});
        QCOMPARE(shown(), QStringLiteral("-OB")); // placed
        for (const QPointF& point : {QPointF(110, 110), QPointF(300, 300)}) {
            overlay.model.press(point);
            QCOMPARE(shown(), QStringLiteral("-OB"));
            overlay.model.drag(point + QPointF(40, 40));
            QCOMPARE(shown(), QStringLiteral("-O-")); // moving, resizing
            overlay.model.release(point + QPointF(40, 40));
            QCOMPARE(shown(), QStringLiteral("-OB"));
        }
        overlay.click({900, 20}); // beside it
        QCOMPARE(shown(), QStringLiteral("-OB"));
    }

    void itIsMovedAndStopsAtTheEdges() {
        Overlay overlay;
        overlay.place({100, 100, 200, 200});
        overlay.drag({{120, 120}, {170, 90}});
        QCOMPARE(overlay.model.selectionRect(), QRectF(150, 70, 200, 200));
        overlay.drag({{160, 80}, {900, 500}, {1300, 800}});
        QCOMPARE(overlay.model.selectionRect(), QRectF(800, 400, 200, 200));
        overlay.drag({{820, 420}, {0, 0}, {-900, -700}});
        QCOMPARE(overlay.model.selectionRect(), QRectF(0, 0, 200, 200));
        // The button went up somewhere else than the pointer was seen last.
        overlay.model.press({20, 20});
        overlay.model.drag({30, 20});
        overlay.model.release({50, 20});
        QCOMPARE(overlay.model.selectionRect(), QRectF(30, 0, 200, 200));
        // Beside it, a press begins another one.
        overlay.drag({{500, 300}, {600, 350}});
        QCOMPARE(overlay.model.selectionRect(), QRectF(500, 300, 100, 50));
    }

    void theStartButtonTakesItsPress() {
        Overlay overlay;
        const QRectF rectangle(300, 100, 400, 300);
        overlay.place(rectangle);
        const QPointF button = overlay.model.startButton().frame.center();
        overlay.model.press(button);
        overlay.model.drag(button + QPointF(200, 0)); // and lets go elsewhere
        QCOMPARE(overlay.model.release(button + QPointF(200, 0)), SelectionOutcome::nothing);
        QCOMPARE(overlay.model.selectionRect(), rectangle);
        QVERIFY(overlay.model.isStartButtonShown());
        // A drag that comes over it waits there.
        overlay.model.press({310, 110});
        overlay.model.drag(button);
        QCOMPARE(overlay.model.selectionRect(), rectangle);
        overlay.model.release(button);
        QCOMPARE(overlay.click(button), SelectionOutcome::startChosen);
    }

    void handles_data() {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QPointF>("place");
        QTest::addColumn<SelectionCursor>("cursor");
        QTest::addColumn<QRectF>("pulled"); // by (20, 10)
        const auto row = [](const char* name, int tag, QPointF place, SelectionCursor cursor, QRectF pulled) {
            QTest::newRow(name) << tag << place << cursor << pulled;
        };
        using enum SelectionCursor;
        row("lower left", 1, {300, 200}, diagonalUpwards, {320, 210, 180, 90});
        row("lower right", 2, {500, 200}, diagonalDownwards, {300, 210, 220, 90});
        row("upper right", 3, {500, 300}, diagonalUpwards, {300, 200, 220, 110});
        row("upper left", 4, {300, 300}, diagonalDownwards, {320, 200, 180, 110});
        row("lower middle", 5, {400, 200}, resizeUpDownCursor, {300, 210, 200, 90});
        row("right middle", 6, {500, 250}, resizeLeftRightCursor, {300, 200, 220, 100});
        row("upper middle", 7, {400, 300}, resizeUpDownCursor, {300, 200, 200, 110});
        row("left middle", 8, {300, 250}, resizeLeftRightCursor, {320, 200, 180, 100});
    }
    void handles() {
        QFETCH(int, tag);
        QFETCH(QPointF, place);
        QFETCH(QRectF, pulled);
        Overlay overlay;
        overlay.place({300, 200, 200, 100});
        QCOMPARE(frameOfHandle(tag, overlay.model.selectionRect()), QRectF(place - QPointF(5, 5), QSizeF(10, 10)));
        QTEST(overlay.model.cursorAt(place), "cursor");
        // Taken beside its middle, in two steps.
        const QPointF grip = place + QPointF(3, -3);
        overlay.drag({grip, grip + QPointF(15, 2), grip + QPointF(20, 10)});
        QCOMPARE(overlay.model.selectionRect(), pulled);
        // Across the opposite edges nothing is turned over.
        const QPointF middle = pulled.center();
        const QPointF now = frameOfHandle(tag, pulled).center();
        overlay.drag({now, now + (middle - now) * 3});
        const QRectF left = overlay.model.selectionRect();
        QCOMPARE(left.width(), tag == 5 || tag == 7 ? pulled.width() : 30.0);
        QCOMPARE(left.height(), tag == 6 || tag == 8 ? pulled.height() : 30.0);
        QVERIFY(QRectF(QPointF(0, 0), screen).contains(left));
    }

    void handlesAtTheEdges_data() {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QRectF>("before");
        QTest::addColumn<QPointF>("movement");
        QTest::addColumn<QRectF>("after");
        const QRectF large(100, 100, 800, 400);
        QTest::newRow("right edge out") << 6 << large << QPointF(150, 0) << QRectF(100, 100, 900, 400);
        QTest::newRow("upper edge out") << 7 << large << QPointF(0, 150) << QRectF(100, 100, 800, 500);
        QTest::newRow("lower left out") << 1 << large << QPointF(-120, -130) << QRectF(0, 0, 920, 530);
        QTest::newRow("left edge far out")
            << 8 << large << QPointF(-300, 0) << QRectF(70, 100, 900, 400).translated(30, 0);
        // Smaller than a handle leaves it, at the edge.
        QTest::newRow("narrow at the right")
            << 6 << QRectF(990, 10, 10, 10) << QPointF(-5, 0) << QRectF(970, 10, 30, 30);
        QTest::newRow("narrow, pulled out") << 6 << QRectF(990, 10, 10, 50) << QPointF(5, 0) << QRectF(970, 10, 30, 50);
        QTest::newRow("left beyond right at the end")
            << 8 << QRectF(900, 10, 100, 100) << QPointF(95, 0) << QRectF(970, 10, 30, 100);
        QTest::newRow("low at the top") << 5 << QRectF(10, 590, 50, 10) << QPointF(0, 9) << QRectF(10, 570, 50, 30);
    }
    void handlesAtTheEdges() {
        QFETCH(int, tag);
        QFETCH(QRectF, before);
        QFETCH(QPointF, movement);
        QTEST(resizedByHandle(tag, before, movement, screen), "after");
    }

    void cursors() {
        Overlay overlay;
        QCOMPARE(overlay.model.cursorAt({5, 5}), SelectionCursor::cross);
        overlay.place({300, 100, 400, 300});
        QCOMPARE(overlay.model.cursorAt({320, 120}), SelectionCursor::openHand);
        QCOMPARE(overlay.model.cursorAt({500, 250}), SelectionCursor::unchanged); // the button
        QCOMPARE(overlay.model.cursorAt({296, 140}), SelectionCursor::cross);
    }

    void theStartButtonsPlace_data() {
        QTest::addColumn<QRectF>("selection");
        QTest::addColumn<QPointF>("place");
        QTest::addColumn<bool>("isOver");
        QTest::newRow("large enough") << QRectF(100, 100, 154, 67) << QPointF(116.5, 116.5) << true;
        QTest::newRow("not wide enough") << QRectF(200, 100, 153, 67) << QPointF(216, 50) << false;
        QTest::newRow("not high enough") << QRectF(200, 100, 154, 66) << QPointF(216.5, 50) << false;
        QTest::newRow("small") << QRectF(500, 300, 20, 20) << QPointF(449.5, 250) << false;
        QTest::newRow("small at the left") << QRectF(136, 300, 20, 20) << QPointF(172, 293) << false;
        QTest::newRow("room at the left, just") << QRectF(137, 300, 20, 20) << QPointF(86.5, 250) << false;
        QTest::newRow("small at the right") << QRectF(850, 300, 20, 20) << QPointF(713, 293) << false;
        QTest::newRow("room at the right, just") << QRectF(843, 300, 20, 20) << QPointF(792.5, 250) << false;
        QTest::newRow("no room below") << QRectF(500, 50, 20, 20) << QPointF(536, 43) << false;
        QTest::newRow("below, just") << QRectF(500, 51, 20, 20) << QPointF(449.5, 1) << false;
        QTest::newRow("no room below and at the right") << QRectF(900, 50, 20, 20) << QPointF(763, 43) << false;
        QTest::newRow("no room below and at the left") << QRectF(10, 50, 20, 20) << QPointF(46, 43) << false;
        // Where the chosen side has no room either.
        QTest::newRow("in the corner") << QRectF(0, 0, 20, 20) << QPointF(36, 0) << false;
        QTest::newRow("as wide as the screen") << QRectF(0, 300, 1000, 20) << QPointF(439.5, 250) << false;
        QTest::newRow("as wide, at the bottom") << QRectF(0, 0, 1000, 20) << QPointF(439.5, 36) << false;
    }
    void theStartButtonsPlace() {
        QFETCH(QRectF, selection);
        QFETCH(QPointF, place);
        QFETCH(bool, isOver);
        const StartButtonPlace found = startButtonPlace(selection, screen.width(), screen);
        QCOMPARE(found.frame, QRectF(place, QSizeF(121, 34)));
        QCOMPARE(found.isOverSelection, isOver);
    }

    void twoScreensShareTheState() {
        Overlay overlay;
        SelectionModel other(overlay.state, screen);
        overlay.place({100, 100, 100, 100});
        QVERIFY(!other.isLabelShown());
        other.press({50, 50});
        QCOMPARE(other.release({50, 50}), SelectionOutcome::nothing); // it chooses nothing any more
        QVERIFY(!other.isOutlineShown() && !other.isStartButtonShown());
        other.press({50, 50});
        other.drag({90, 80});
        other.release({90, 80});
        QCOMPARE(other.selectionRect(), QRectF(50, 50, 40, 30));
        QCOMPARE(overlay.model.selectionRect(), QRectF(100, 100, 100, 100));
    }

    void aPressThatIsTakenAway() {
        Overlay overlay;
        overlay.model.press({10, 10});
        overlay.model.cancelPress();
        QCOMPARE(overlay.model.release({10, 10}), SelectionOutcome::nothing);
        QVERIFY(overlay.state.isRecordingVideoClicked);
    }

    // Whatever is dragged wherever: on the screen, and by a handle never below the smallest size.
    void randomDragsStayOnTheScreen() {
        const quint32 seed = qEnvironmentVariableIsSet("QUENBY_TEST_SEED")
                                 ? qEnvironmentVariable("QUENBY_TEST_SEED").toUInt()
                                 : QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        const auto between = [&random](qreal low, qreal high) { return low + random.generateDouble() * (high - low); };
        const QRectF whole(QPointF(0, 0), screen);
        const auto anywhere = [&] {
            constexpr qreal wild[]{std::numeric_limits<qreal>::quiet_NaN(), std::numeric_limits<qreal>::infinity(),
                                   -std::numeric_limits<qreal>::infinity(), std::numeric_limits<qreal>::max(),
                                   -std::numeric_limits<qreal>::max()};
            if (random.bounded(200) == 0)
                return QPointF(wild[random.bounded(5)], wild[random.bounded(5)]);
            // Often at the edges, beyond them, and on whole points.
            const QPointF point(between(-200, screen.width() + 200), between(-200, screen.height() + 200));
            return random.bounded(2) ? QPointF(point.toPoint()) : point;
        };
        // Sums of such numbers miss an edge by less than this.
        const QRectF almost = whole.adjusted(-1e-6, -1e-6, 1e-6, 1e-6);
        const auto isOnTheScreen = [&almost](const QRectF& now) {
            return now.width() >= 0 && now.height() >= 0 && now.left() >= almost.left() && now.top() >= almost.top() &&
                   now.right() <= almost.right() && now.bottom() <= almost.bottom();
        };
        for (int round = 0; round < 300; ++round) {
            Overlay overlay;
            const SelectionModel& model = overlay.model;
            const auto told = [&](int drag) {
                const QRectF now = model.selectionRect();
                return QStringLiteral("QUENBY_TEST_SEED=%1, round %2, drag %3: (%4, %5), %6 x %7")
                    .arg(seed)
                    .arg(round)
                    .arg(drag)
                    .arg(now.x())
                    .arg(now.y())
                    .arg(now.width())
                    .arg(now.height())
                    .toUtf8();
            };
            for (int drag = 0; drag < 40; ++drag) {
                const QRectF before = model.selectionRect();
                const int tag = random.bounded(3) == 0 ? random.bounded(1, handleCount + 1) : 0;
                const QPointF start = tag != 0 ? frameOfHandle(tag, before).center() : anywhere();
                const bool isByHandle = model.isOutlineShown() && handleAt(start, before) != 0;
                bool hasMoved = false;
                overlay.model.press(start);
                for (int step = random.bounded(6); step >= 0; --step) {
                    overlay.model.drag(anywhere());
                    const QRectF now = model.selectionRect();
                    hasMoved = hasMoved || now != before;
                    QVERIFY2(isOnTheScreen(now), told(drag).constData());
                    if (isByHandle && hasMoved)
                        QVERIFY2(now.width() >= 30 && now.height() >= 30, told(drag).constData());
                }
                overlay.model.release(anywhere());
                QVERIFY2(isOnTheScreen(model.selectionRect()), told(drag).constData());
                QVERIFY2(!model.isStartButtonShown() || whole.contains(model.startButton().frame),
                         told(drag).constData());
            }
        }
    }
};

QTEST_GUILESS_MAIN(SelectionModelTest)
#include "tst_selectionmodel.moc"
