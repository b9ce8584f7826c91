// The change list as it is pointed at, scrolled and typed into.
#include "popover/changes/RFOverlayScroller.h"
#include "popover/changes/ShareButton.h"
#include "popover/changes/SharePanel.h"
#include "tests/popover/changes/ChangeListStage.h"

#include <QScrollBar>
#include <QSignalSpy>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

using Status = ChangeRecord::Status;

} // namespace

class TestChangeRowsInput final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { stage_ = std::make_unique<ChangeListStage>(); }
    void cleanup() { stage_.reset(); }

    void keyboard() {
        QList<ChangeRecord> records = addedFiles(16);
        records[1].status = Status::trashed;
        stage_->show(records);
        QSignalSpy opened(&stage_->view, &ScrollView::openRequested);
        QSignalSpy shared(&stage_->view, &ScrollView::shareRequested);
        stage_->view.setFocus(Qt::OtherFocusReason);
        press(Qt::Key_Return); // nobody sees yet what it would open
        QVERIFY(opened.isEmpty());
        verifyMarked(0);
        press(Qt::Key_Up);
        verifyMarked(0);
        press(Qt::Key_Down);
        verifyMarked(1);
        press(Qt::Key_Return);
        press(Qt::Key_Return, Qt::ShiftModifier);
        QVERIFY(opened.isEmpty() && shared.isEmpty());
        press(Qt::Key_End);
        verifyMarked(15);
        press(Qt::Key_PageUp);
        verifyMarked(11);
        press(Qt::Key_Home);
        press(Qt::Key_PageDown);
        verifyMarked(4);
        press(Qt::Key_Enter);
        QCOMPARE(opened.takeFirst().at(0).value<PageOpenRecord>(),
                 (PageOpenRecord{QStringLiteral("File 4 Added."),
                                 QUrl(QStringLiteral("http://127.0.0.1:4711/file/d/f4/view"))}));
        press(Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(shared.takeFirst(), (QVariantList{QStringLiteral("f4"), QStringLiteral("File 4 Added.")}));

        // Its row goes; the keyboard stays at its place.
        records.removeAt(4);
        stage_->view.setRecords(records);
        verifyMarked(4);
        press(Qt::Key_Return);
        QCOMPARE(opened.takeFirst().at(0).value<PageOpenRecord>().title, QStringLiteral("File 5 Added."));
        stage_->view.setRecords({addedFile(50), addedFile(51)});
        verifyMarked(1);
    }

    // Whatever happens to the row with the keys' focus, nothing tells of it before a key was pressed.
    void noMarkWithoutAKey_data() {
        QTest::addColumn<bool>("isPointed"); // and with which button
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::newRow("opened") << false << Qt::NoButton;
        QTest::newRow("clicked on") << true << Qt::LeftButton;
        QTest::newRow("clicked on otherwise") << true << Qt::RightButton;
    }
    void noMarkWithoutAKey() {
        QFETCH(bool, isPointed);
        QFETCH(Qt::MouseButton, button);
        stage_->show(addedFiles(3));
        stage_->view.setFocus(Qt::OtherFocusReason);
        if (isPointed)
            QTest::mouseClick(stage_->view.windowHandle(), button, {},
                              stage_->row(1).mapTo(&stage_->view, QPoint(150, 30)));
        const int focused = isPointed ? 1 : 0;
        QVERIFY(stage_->row(focused).hasFocus());
        verifyMarked(-1);
        stage_->view.setRecords({addedFile(7), addedFile(8)});
        QTRY_COMPARE(stage_->view.findChildren<TableRow*>().size(), 2); // and the old ones are gone
        QVERIFY(stage_->row(focused).hasFocus());
        verifyMarked(-1);

        press(Qt::Key_Home);
        verifyMarked(focused);
        stage_->view.hide();
        stage_->view.setRecords({addedFile(9)});
        stage_->view.show();
        stage_->view.setFocus(Qt::OtherFocusReason);
        verifyMarked(-1);
    }

    void mouse() {
        QList<ChangeRecord> records = addedFiles(16);
        records[1].status = Status::deleted;
        stage_->show(records);
        QSignalSpy opened(&stage_->view, &ScrollView::openRequested);
        QSignalSpy shared(&stage_->view, &ScrollView::shareRequested);
        QTest::mouseClick(&stage_->row(3), Qt::LeftButton);
        QCOMPARE(opened.takeFirst().at(0).value<PageOpenRecord>().title, QStringLiteral("File 3 Added."));
        QTest::mouseClick(&stage_->row(1), Qt::LeftButton);
        QTest::mouseClick(&stage_->row(3), Qt::RightButton);
        QTest::mousePress(&stage_->row(3), Qt::LeftButton);
        // Thought better of it.
        QTest::mouseRelease(&stage_->row(3), Qt::LeftButton, {}, QPoint(20, rowHeight + 20));
        QVERIFY(opened.isEmpty());

        verifyHover(0);
        verifyHover(1); // nothing to share
        QVERIFY(stage_->row(1).shareButtonView().isHidden());
        verifyHover(2);
        QTest::mouseClick(&stage_->row(2).shareButton(), Qt::LeftButton);
        QCOMPARE(shared.takeFirst(), (QVariantList{QStringLiteral("f2"), QStringLiteral("File 2 Added.")}));
        QVERIFY(opened.isEmpty() && shared.isEmpty());
    }

    // The pointer rests, and the list moves below it.
    void hoverFollowsTheList() {
        stage_->show(addedFiles(16));
        verifyHover(2);
        stage_->view.verticalScrollBar()->setValue(2 * rowHeight);
        QVERIFY(stage_->row(2).shareButtonView().isHidden());
        QVERIFY(stage_->row(4).shareButtonView().isVisible());
        QList<ChangeRecord> records = addedFiles(16);
        records.removeAt(0);
        stage_->view.setRecords(records);
        QVERIFY(stage_->row(4).shareButtonView().isVisible());
        QCOMPARE(stage_->row(4).record().identifier, QStringLiteral("f5"));
        stage_->view.setRecords(records.mid(0, 1));
        QVERIFY(stage_->row(0).shareButtonView().isHidden());
    }

    void scrollerFloatsAndFades() {
        stage_->show(addedFiles(16));
        ScrollView& view = stage_->view;
        auto& scroller = *view.findChild<RFOverlayScroller*>();
        QCOMPARE(stage_->row(0).width(), view.width());
        QCOMPARE(scroller.alphaValue(), 0.0);
        view.verticalScrollBar()->setValue(100);
        QTRY_COMPARE(scroller.alphaValue(), 1.0);
        stage_->time->advance(1400ms);
        view.verticalScrollBar()->setValue(0); // begins the wait anew
        stage_->time->advance(1400ms);
        QCOMPARE(scroller.alphaValue(), 1.0);
        stage_->time->advance(100ms);
        QTRY_COMPARE(scroller.alphaValue(), 0.0);

        const QPoint hold = scroller.knob().center();
        QTest::mouseMove(view.windowHandle(), scroller.mapTo(&view, hold));
        QTRY_COMPARE(scroller.alphaValue(), 1.0);
        QTest::mousePress(&scroller, Qt::LeftButton, {}, hold);
        QTest::mouseMove(&scroller, QPoint(-50, scroller.height() * 2));
        QCOMPARE(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
        QVERIFY(scroller.rect().contains(scroller.knob()));
        QTest::mouseMove(&scroller, hold);
        QCOMPARE(view.verticalScrollBar()->value(), 0);
        QTest::mouseRelease(&scroller, Qt::LeftButton, {}, hold);
        QTest::mouseClick(&scroller, Qt::LeftButton, {}, QPoint(hold.x(), scroller.height() - 4));
        QCOMPARE(view.verticalScrollBar()->value(), view.height());
        QCOMPARE(scroller.alphaValue(), 1.0);
        QCOMPARE(stage_->time->pendingTimers(), size_t(1)); // that of the dates: the pointer is on the scroller
        QTest::mouseMove(view.windowHandle(), QPoint(20, 20));
        QTRY_COMPARE(scroller.alphaValue(), 0.0);
        view.setRecords(addedFiles(2));
        QTRY_VERIFY(scroller.isHidden());
    }

private:
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(stage_->view.windowHandle(), key, modifiers);
    }
    // -1: none is.
    void verifyMarked(int index) {
        for (int other = 0; other < stage_->numberOfRows(); ++other)
            QCOMPARE(stage_->row(other).isMarked(), other == index);
        if (index < 0)
            return;
        QVERIFY(stage_->row(index).hasFocus());
        QVERIFY(stage_->view.rect().contains(stage_->row(index).geometry().translated(stage_->view.tableView().pos())));
    }
    // The pointer goes to the row, which alone is highlighted then.
    void verifyHover(int index) {
        QWindow* const window = stage_->view.windowHandle();
        // A pointer that is there already, as the last test left it, would not move.
        QTest::mouseMove(window, QPoint(1, stage_->view.height() - 1));
        QTest::mouseMove(window, stage_->row(index).mapTo(&stage_->view, QPoint(150, 30)));
        for (int other = 0; other < stage_->numberOfRows(); ++other)
            QCOMPARE(stage_->colourAt(other, {2, 2}) == QColor(242, 248, 255), other == index);
    }

    std::unique_ptr<ChangeListStage> stage_;
};

QTEST_MAIN(TestChangeRowsInput)
#include "tst_changerowsinput.moc"
