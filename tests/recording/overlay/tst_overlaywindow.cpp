// The overlay on a real screen, under a real window manager, with the pointer and keys of the display's server: what is
// chosen, where the windows stand, what can be seen, and how little is painted again.
#include "recording/RecordingState.h"
#include "recording/overlay/DrawMouseBoxView.h"
#include "recording/overlay/OverlayWindow.h"
#include "recording/selection/SelectionHandles.h"
#include "tests/desktop/support/DesktopInput.h"
#include "tests/platform/fakes/FakeDisplays.h"
#include "tests/support/Settled.h"

#include <QApplication>
#include <QLineEdit>
#include <QPaintEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QVariantAnimation>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr QSize screen{1280, 800};
// Of FakeDisplays::picture(): as it is, and under the overlay.
const QColor clear(0, 128, 128);
const QColor dimmed(0, 64, 64);
// From clear, for the handles, the outline and the label, which are painted over it.
constexpr int tolerance = 2;

const QString other = QStringLiteral("Another Window");

// A rectangle as the overlay tells it, from one of the screen, whose y grows downwards.
QRectF fromBelow(const QRect& rectangle, int height = screen.height()) {
    return {QPointF(rectangle.x(), height - rectangle.y() - rectangle.height()), QSizeF(rectangle.size())};
}

bool isAlike(const QColor& a, const QColor& b) {
    return qAbs(a.red() - b.red()) <= tolerance && qAbs(a.green() - b.green()) <= tolerance &&
           qAbs(a.blue() - b.blue()) <= tolerance;
}

// What was painted, in points.
class PaintRecorder final : public QObject {
public:
    QList<QRegion> regions;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            regions.append(static_cast<QPaintEvent*>(event)->region());
        return false;
    }
};

qint64 areaOf(const QRegion& region) {
    qint64 area = 0;
    for (const QRect& rectangle : region)
        area += qint64(rectangle.width()) * rectangle.height();
    return area;
}

} // namespace

class OverlayWindowTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        state_ = {true, true, false};
        displays_.set({FakeDisplays::display(1, QRect(QPoint(0, 0), screen))});
    }
    void cleanup() {
        input_.savePictureOfFailure();
        overlays_.clear();
        if (QTest::currentTestFailed())
            input_.release();
    }

    void aClickChoosesTheMainScreen() {
        const QSize half(640, 800);
        displays_.set({FakeDisplays::display(1, {{0, 0}, half}), FakeDisplays::display(2, {{640, 0}, half})});
        present();
        QSignalSpy chosen(overlays_[1].get(), &OverlayWindow::didSelectRect);
        input_.click({900, 300});
        QTRY_COMPARE(chosen.size(), 1);
        QCOMPARE(chosen[0][0].toRectF(), QRectF({0, 0}, half));
        QVERIFY(state_.isRecordingVideo && !state_.isRecordingVideoClicked && !state_.isCropSelection);
        // Until it is closed nothing else is chosen.
        QSignalSpy abandoned(overlays_[0].get(), &OverlayWindow::abandoned);
        input_.click({900, 300});
        input_.key(QStringLiteral("Escape"));
        QTRY_COMPARE(abandoned.size(), 1);
        QCOMPARE(chosen.size(), 1);
    }

    void eachCoversItsDisplay() {
        QWidget panel(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        panel.setAttribute(Qt::WA_X11NetWmWindowTypeDock);
        panel.setGeometry(0, 770, 1280, 30);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        displays_.set({FakeDisplays::display(1, {300, 0, 980, 800}), FakeDisplays::display(2, {0, 200, 300, 600})});
        present();
        for (const auto& overlay : overlays_)
            QCOMPARE(input_.geometry(WindowId(overlay->winId())), overlay->display().frame);
        QVERIFY(settles([this] { return isAlike(pixel({600, 785}), dimmed) && isAlike(pixel({100, 785}), dimmed); }));

        // A rectangle on the second is told in its own coordinates.
        QSignalSpy chosen(overlays_[1].get(), &OverlayWindow::didSelectRect);
        drag({50, 300}, {250, 500});
        QTRY_VERIFY(isStartShown(1));
        QVERIFY(settles([this] { return isAlike(pixel({240, 490}), clear); }));
        QVERIFY(!button(0)->isVisible());
        input_.click(middleOf(button(1)));
        QTRY_COMPARE(chosen.size(), 1);
        QCOMPARE(chosen[0][0].toRectF(), fromBelow({50, 100, 200, 200}, 600));
    }

    void aRectangleIsDrawnAndMoved() {
        present();
        QVERIFY(label()->isVisible());
        QVERIFY(settles([this] { return isAlike(pixel({5, 5}), dimmed) && isAlike(pixel({800, 600}), dimmed); }));
        input_.moveTo({900, 700});
        input_.press();
        input_.moveTo({600, 500});
        input_.moveTo({500, 400});
        QTRY_COMPARE(selection(), fromBelow({500, 400, 400, 300}));
        QVERIFY(!label()->isVisible() && !button()->isVisible() && state_.isCropSelection);
        input_.release();
        QTRY_VERIFY(button()->isVisible());
        QCOMPARE(button()->geometry(), QRect(640, 533, 121, 34));
        QVERIFY(settles([this] { return showsHoleAt({500, 400, 400, 300}); }));

        drag({520, 420}, {320, 220});
        QTRY_COMPARE(selection(), fromBelow({300, 200, 400, 300}));
        QVERIFY(settles([this] { return showsHoleAt({300, 200, 400, 300}) && isAlike(pixel({800, 600}), dimmed); }));
        // To the edge of the screen, and no further; from the last pixel on.
        drag({320, 220}, {1279, 799});
        QTRY_COMPARE(selection(), fromBelow({880, 500, 400, 300}));
        QTRY_VERIFY(button()->isVisible() && button()->geometry() == QRect(1020, 633, 121, 34)); // and let go

        QSignalSpy chosen(overlays_[0].get(), &OverlayWindow::didSelectRect);
        // Whoever lets go elsewhere has not pressed it.
        drag(middleOf(button()), {100, 100});
        QCOMPARE(selection(), fromBelow({880, 500, 400, 300}));
        input_.click(middleOf(button()));
        QTRY_COMPARE(chosen.size(), 1);
        QCOMPARE(chosen[0][0].toRectF(), fromBelow({880, 500, 400, 300}));
    }

    void eachHandleResizes() {
        present();
        drag({400, 300}, {700, 500});
        QTRY_COMPARE(selection(), fromBelow({400, 300, 300, 200}));
        constexpr QPoint pull(23, 17);
        for (int tag = 1; tag <= handleCount; ++tag) {
            const QRectF before = selection();
            const SelectionEdges edges = edgesOfHandle(tag);
            const QPointF handle = frameOfHandle(tag, before).center();
            const QPoint place(qRound(handle.x()), qRound(screen.height() - handle.y()));
            input_.moveTo(place);
            QTRY_COMPARE(view().cursor().shape(), expectedCursor(edges));
            input_.press();
            input_.moveTo(place + pull / 2);
            input_.moveTo(place + pull);
            const QRectF after = before.adjusted(
                edges & SelectionEdge::left ? pull.x() : 0, edges & SelectionEdge::lower ? -pull.y() : 0,
                edges & SelectionEdge::right ? pull.x() : 0, edges & SelectionEdge::upper ? -pull.y() : 0);
            QTRY_COMPARE(selection(), after);
            QVERIFY(!button()->isVisible());
            input_.release();
            QTRY_VERIFY(button()->isVisible());
        }
        QVERIFY(settles([this] { return showsHoleAt(onScreen(selection())); }));
    }

    void cursors() {
        present();
        input_.moveTo({20, 20});
        QTRY_COMPARE(view().cursor().shape(), Qt::CrossCursor);
        drag({400, 300}, {700, 500});
        input_.moveTo({430, 330});
        QTRY_COMPARE(view().cursor().shape(), Qt::OpenHandCursor);
        input_.moveTo(middleOf(button()));
        QTRY_VERIFY(button()->underMouse());
        QCOMPARE(button()->cursor().shape(), Qt::OpenHandCursor); // unchanged
        input_.moveTo({20, 20});
        QTRY_COMPARE(view().cursor().shape(), Qt::CrossCursor);
    }

    void keysComeToTheOverlayAndGoBack() {
        QLineEdit field;
        field.setWindowTitle(other);
        field.show();
        QVERIFY(QTest::qWaitForWindowActive(&field));
        present();
        QTRY_VERIFY(overlays_[0]->isActiveWindow());
        QSignalSpy abandoned(overlays_[0].get(), &OverlayWindow::abandoned);
        input_.key(QStringLiteral("a"));
        drag({400, 300}, {700, 500});
        QCOMPARE(abandoned.size(), 0);
        input_.key(QStringLiteral("Escape"));
        QTRY_COMPARE(abandoned.size(), 1);

        // With the pointer held, too; and afterwards nobody holds anything.
        input_.moveTo({450, 350});
        input_.press();
        overlays_.clear();
        input_.release();
        QTRY_VERIFY(field.isActiveWindow());
        input_.key(QStringLiteral("b"));
        QTRY_COMPARE(field.text(), QStringLiteral("b"));
    }

    void itMayBeDeletedByWhomItTells() {
        present();
        connect(overlays_[0].get(), &OverlayWindow::abandoned, this, [this] { overlays_.clear(); });
        input_.key(QStringLiteral("Escape"));
        QTRY_VERIFY(overlays_.empty());
        present();
        connect(overlays_[0].get(), &OverlayWindow::didSelectRect, this, [this] { overlays_.clear(); });
        drag({400, 300}, {700, 500});
        QTRY_VERIFY(button()->isVisible());
        input_.click(middleOf(button()));
        QTRY_VERIFY(overlays_.empty());
    }

    void onlyWhatChangedIsPainted() {
        present();
        drag({100, 100}, {1100, 700});
        QTRY_VERIFY(button()->isVisible());
        QVERIFY(settles([this] { return showsHoleAt({100, 100, 1000, 600}); }));
        auto* const walk = view().findChild<QVariantAnimation*>(QStringLiteral("linePhase"));
        QCOMPARE(walk->state(), QAbstractAnimation::Running);

        PaintRecorder recorder;
        view().installEventFilter(&recorder);
        QTRY_VERIFY(recorder.regions.size() > 10);
        const QRegion around = QRegion(97, 97, 1006, 606) - QRegion(103, 103, 994, 594);
        for (const QRegion& region : recorder.regions)
            QVERIFY((region - around).isEmpty());

        recorder.regions.clear();
        input_.moveTo({150, 150});
        input_.press();
        for (int step = 1; step <= 20; ++step)
            input_.moveTo({150 + 2 * step, 150 + step});
        QTRY_COMPARE(selection(), fromBelow({140, 120, 1000, 600}));
        input_.release();
        QTRY_VERIFY(button()->isVisible());
        for (const QRegion& region : recorder.regions)
            QVERIFY2(areaOf(region) < screen.width() * screen.height() / 10,
                     qPrintable(QString::number(areaOf(region))));
        QVERIFY(settles([this] { return showsHoleAt({140, 120, 1000, 600}); }));

        overlays_[0]->hide();
        QCOMPARE(walk->state(), QAbstractAnimation::Stopped);
    }

    void whatLiesBelowShinesThroughWhereItCan() {
        DrawMouseBoxView view(state_, screen, nullptr);
        view.resize(screen);
        QImage image(screen, QImage::Format_ARGB32_Premultiplied);
        QTest::mousePress(&view, Qt::LeftButton, {}, {100, 100});
        QTest::mouseMove(&view, {300, 260});
        QTest::mouseRelease(&view, Qt::LeftButton, {}, {300, 260});
        image.fill(Qt::transparent);
        view.render(&image, {}, {}, QWidget::DrawChildren);
        QCOMPARE(image.pixelColor(120, 120), QColor(Qt::transparent));
        QVERIFY(qAbs(image.pixelColor(400, 400).alpha() - 128) <= 1);
    }

    void itSurvivesAnotherSize() {
        present();
        drag({100, 100}, {1100, 700});
        QTRY_VERIFY(button()->isVisible());
        overlays_[0]->resize(400, 300);
        QTRY_COMPARE(view().size(), QSize(400, 300));
        QVERIFY(view().rect().contains(button()->geometry()));
        QVERIFY(view().rect().contains(label()->geometry()));
        QVERIFY(label()->font().pixelSize() >= 12);
        QVERIFY(settles([this] { return isAlike(pixel({50, 150}), dimmed) && isAlike(pixel({300, 150}), clear); }));
    }

private:
    // One for each of the displays, the first with the keyboard.
    void present() {
        for (const quenby::Display& display : displays_.all())
            overlays_.push_back(std::make_unique<OverlayWindow>(display, displays_.main(), displays_, state_));
        for (const auto& overlay : overlays_)
            overlay->present(overlay == overlays_.front());
        for (const auto& overlay : overlays_)
            QVERIFY(QTest::qWaitForWindowExposed(overlay.get()));
        QTRY_VERIFY(overlays_.front()->isActiveWindow());
    }
    void drag(const QPoint& from, const QPoint& to) {
        input_.moveTo(from);
        input_.press();
        input_.moveTo((from + to) / 2);
        input_.moveTo(to);
        input_.release();
    }

    DrawMouseBoxView& view(size_t index = 0) { return overlays_[index]->view(); }
    QWidget* label() { return view().findChild<QWidget*>(QStringLiteral("btnFullRecording")); }
    QWidget* button(size_t index = 0) { return view(index).findChild<QWidget*>(QStringLiteral("buttonOk")); }
    bool isStartShown(size_t index) { return button(index)->isVisible(); }
    static QPoint middleOf(const QWidget* widget) { return widget->mapToGlobal(widget->rect().center()); }
    QRectF selection() { return view().selection().selectionRect(); }
    static QRect onScreen(const QRectF& selection) {
        return QRectF(selection.x(), screen.height() - selection.bottom(), selection.width(), selection.height())
            .toRect();
    }
    static Qt::CursorShape expectedCursor(SelectionEdges edges) {
        using enum SelectionEdge;
        if (edges == SelectionEdges(left) || edges == SelectionEdges(right))
            return Qt::SizeHorCursor;
        if (edges == SelectionEdges(lower) || edges == SelectionEdges(upper))
            return Qt::SizeVerCursor;
        return edges == (left | lower) || edges == (right | upper) ? Qt::SizeBDiagCursor : Qt::SizeFDiagCursor;
    }

    static QImage picture() { return QGuiApplication::primaryScreen()->grabWindow(0).toImage(); }
    static QColor pixel(const QPoint& point) { return picture().pixelColor(point); }
    // Clear to its edges, and dimmed from there on; off the handles and the outline.
    static bool showsHoleAt(const QRect& rectangle) {
        const QImage seen = picture();
        const QRect inside = rectangle.adjusted(2, 2, -2, -2);
        const QRect outside = rectangle.adjusted(-3, -3, 3, 3);
        const auto isAllAround = [&seen](const QRect& edge, const QColor& colour) {
            const int x = edge.left() + edge.width() / 3;
            const int y = edge.top() + edge.height() / 3;
            for (const QPoint& point : {QPoint(edge.left(), y), {edge.right(), y}, {x, edge.top()}, {x, edge.bottom()}})
                if (seen.rect().contains(point) && !isAlike(seen.pixelColor(point), colour))
                    return false;
            return true;
        };
        return isAllAround(inside, clear) && isAllAround(outside, dimmed);
    }

    DesktopInput input_;
    FakeDisplays displays_;
    RecordingState state_;
    std::vector<std::unique_ptr<OverlayWindow>> overlays_;
};

QTEST_MAIN(OverlayWindowTest)
#include "tst_overlaywindow.moc"
