// The change list as it is seen, pointed at and typed into.
#include "popover/changes/RFOverlayScroller.h"
#include "popover/changes/RowPictures.h"
#include "popover/changes/ScrollView.h"
#include "popover/changes/ShareButton.h"
#include "popover/changes/SharePanel.h"
#include "popover/changes/TableRow.h"
#include "popover/changes/TableView.h"
#include "tests/support/ManualTimeSource.h"

#include <QProxyStyle>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

using Status = ChangeRecord::Status;

class FakeRowPictures final : public RowPictures {
public:
    QImage picture(const ChangeRecord& record) const override { return inMemory.value(record.identifier); }
    void want(const ChangeRecord& record) override { wanted.append(record.identifier); }

    QHash<QString, QImage> inMemory;
    QStringList wanted;
};

class StillStyle final : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override {
        return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, returned);
    }
};

// Which widgets are painted, and where.
class PaintWatch final : public QObject {
public:
    PaintWatch() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType())
            painted.insert(watched);
        return false;
    }
    QSet<QObject*> painted;
};

QImage filled(Qt::GlobalColor colour) {
    QImage image(140, 100, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

} // namespace

class TestChangeRows final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        time_ = std::make_shared<ManualTimeSource>();
        pictures_ = std::make_unique<FakeRowPictures>();
        view_ = std::make_unique<ScrollView>(
            *pictures_, Endpoints::localDrive(QUrl(QStringLiteral("http://127.0.0.1:4711"))), time_);
        view_->setStyle(&still_);
        view_->tableView().setStyle(&still_);
        view_->resize(330, 5 * rowHeight);
    }
    void cleanup() { view_.reset(); }

    void texts_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QByteArray>("status"); // a letter, or nothing
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("spoken");
        QTest::addColumn<bool>("isOpenable");
        const auto row = [](const QString& title, const char* status, int count, const char* shown, const char* spoken,
                            bool isOpenable) {
            QTest::addRow("%s %.30s", status, shown) << title << QByteArray(status) << count << QString::fromUtf8(shown)
                                                     << QString::fromUtf8(spoken) << isOpenable;
        };
        const QString plan = QStringLiteral("Plan.pdf");
        row(plan, "A", 0, "Plan.pdf Added.", "Plan.pdf added, now", true);
        row(plan, "U", 0, "Plan.pdf Updated.", "Plan.pdf updated, now", true);
        row(plan, "R", 0, "Plan.pdf Restored.", "Plan.pdf restored, now", true);
        row(plan, "", 0, "Plan.pdf", "Plan.pdf, now", true);
        row(plan, "T", 0, "Plan.pdf Trashed.", "Plan.pdf trashed, now", false);
        row(plan, "D", 0, "Plan.pdf Deleted.", "Plan.pdf deleted, now", false);
        row({}, "D", 1, "1 file Deleted.", "1 file deleted, now", false);
        row({}, "D", 3, "3 files Deleted.", "3 files deleted, now", false);
        row({}, "D", 0, "0 files Deleted.", "0 files deleted, now", false);
        row(QStringLiteral(" a\n\n<b>b</b>\t&amp;\u0007c\u2028d "), "A", 0, "a <b>b</b> &amp; c d Added.",
            "a <b>b</b> &amp; c d added, now", true);
        row(QStringLiteral("\u202Efdp.\u2066exe\u2069"), "", 0, "fdp.exe", "fdp.exe, now", true);
    }
    void texts() {
        QFETCH(QString, title);
        QFETCH(QByteArray, status);
        QFETCH(int, count);
        QFETCH(bool, isOpenable);
        ChangeRecord record;
        record.title = title;
        record.share = QStringLiteral("http://127.0.0.1/share?id=f1"); // also where there should be none
        record.count = count;
        if (!status.isEmpty())
            record.status = static_cast<Status>(status.at(0));
        const RowTexts texts = rowTexts(record);
        QTEST(texts.title(), "shown");
        QTEST(texts.spoken(QStringLiteral("now")), "spoken");
        QCOMPARE(texts.isOpenable(), isOpenable);
    }

    void pages() {
        const auto address = [](const QString& share, const QString& webURL) {
            return rowPage({QStringLiteral("a.txt"), QStringLiteral("Added."), share}, QUrl(webURL))
                .url.toString(QUrl::FullyEncoded);
        };
        const QString web = QStringLiteral("https://drive.example/");
        QCOMPARE(address(QStringLiteral("https://x/share?token=t&id=f_1-A"), web),
                 QStringLiteral("https://drive.example/file/d/f_1-A/view"));
        QCOMPARE(address(QStringLiteral("https://x/?id=a/../b?c#d%2Fid=e"), web),
                 QStringLiteral("https://drive.example/file/d/a%2F..%2Fb%3Fc%23d%252Fid%3De/view"));
        QCOMPARE(address(QStringLiteral("abcdef"), web.chopped(1)),
                 QStringLiteral("https://drive.example/file/d/def/view"));
    }

    void equalRecordsPaintNothing() {
        const QList<ChangeRecord> records = sixteen();
        show(records);
        PaintWatch watch;
        view_->setRecords(records);
        QTest::qWait(0);
        QVERIFY(watch.painted.isEmpty());

        QList<ChangeRecord> changed = records;
        changed[2].title = QStringLiteral("Other.txt");
        changed[3].share += QLatin1Char('x'); // does not show
        view_->setRecords(changed);
        QTRY_VERIFY(watch.painted.contains(&row(2)));
        verifyRowsPainted(watch, {2});
    }

    void rowsFindTheirPlaces_data() {
        QTest::addColumn<bool>("isAnimated");
        QTest::newRow("at once") << false;
        QTest::newRow("on their way") << true;
    }
    void rowsFindTheirPlaces() {
        QFETCH(bool, isAnimated);
        show(sixteen());
        if (isAnimated)
            view_->tableView().setStyle(QApplication::style());
        QList<ChangeRecord> records = sixteen();
        QPointer<TableRow> gone(&row(5));
        TableRow& first = row(0);
        TableRow& last = row(15);
        records.removeAt(5);
        records.prepend(record(99, Status::added));
        records.append(records.takeAt(1)); // the first of before
        view_->setRecords(records);
        if (isAnimated) { // and once more before they are there
            QVERIFY(first.y() == 0 && row(0).opacity() < 1 && gone && gone->isVisible());
            view_->setRecords(records);
        }
        QTRY_VERIFY(gone.isNull());
        QCOMPARE(&row(15), &first);
        QCOMPARE(&row(14), &last);
        for (int index = 0; index < 16; ++index) {
            QCOMPARE(row(index).geometry(), QRect(0, index * rowHeight, 330, rowHeight));
            QCOMPARE(row(index).opacity(), 1.0);
            QCOMPARE(row(index).record(), records.at(index));
        }
        view_->setRecords({});
        QTRY_VERIFY(view_->findChildren<TableRow*>().isEmpty());
    }

    void keyboard() {
        QList<ChangeRecord> records = sixteen();
        records[1].status = Status::trashed;
        show(records);
        QSignalSpy opened(view_.get(), &ScrollView::openRequested);
        QSignalSpy shared(view_.get(), &ScrollView::shareRequested);
        view_->setFocus(Qt::ActiveWindowFocusReason);
        QVERIFY(row(0).hasFocus() && !row(0).isMarked());
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
        QCOMPARE(shared.takeFirst(), (QVariantList{records.at(4).share, QStringLiteral("File 4 Added.")}));

        // Its row goes; the keyboard stays at its place.
        records.removeAt(4);
        view_->setRecords(records);
        verifyMarked(4);
        press(Qt::Key_Return);
        QCOMPARE(opened.takeFirst().at(0).value<PageOpenRecord>().title, QStringLiteral("File 5 Added."));
        view_->setRecords({record(50, Status::added), record(51, Status::added)});
        verifyMarked(1);
    }

    void mouse() {
        QList<ChangeRecord> records = sixteen();
        records[1].status = Status::deleted;
        show(records);
        QSignalSpy opened(view_.get(), &ScrollView::openRequested);
        QSignalSpy shared(view_.get(), &ScrollView::shareRequested);
        QTest::mouseClick(&row(3), Qt::LeftButton);
        QCOMPARE(opened.takeFirst().at(0).value<PageOpenRecord>().title, QStringLiteral("File 3 Added."));
        QVERIFY(!row(3).isMarked()); // who points needs no mark
        QTest::mouseClick(&row(1), Qt::LeftButton);
        QTest::mouseClick(&row(3), Qt::RightButton);
        QTest::mousePress(&row(3), Qt::LeftButton);
        QTest::mouseRelease(&row(3), Qt::LeftButton, {}, QPoint(20, rowHeight + 20)); // thought better of it
        QVERIFY(opened.isEmpty());

        verifyHover(0);
        verifyHover(1); // nothing to share
        QVERIFY(row(1).shareButtonView().isHidden());
        verifyHover(2);
        QTest::mouseClick(&row(2).shareButton(), Qt::LeftButton);
        QCOMPARE(shared.takeFirst(), (QVariantList{records.at(2).share, QStringLiteral("File 2 Added.")}));
        QVERIFY(opened.isEmpty() && shared.isEmpty());
    }

    // The pointer rests, and the list moves below it.
    void hoverFollowsTheList() {
        show(sixteen());
        verifyHover(2);
        view_->verticalScrollBar()->setValue(2 * rowHeight);
        QVERIFY(row(2).shareButtonView().isHidden());
        QVERIFY(row(4).shareButtonView().isVisible());
        QList<ChangeRecord> records = sixteen();
        records.removeAt(0);
        view_->setRecords(records);
        QVERIFY(row(4).shareButtonView().isVisible());
        QCOMPARE(row(4).record().identifier, QStringLiteral("f5"));
        view_->setRecords(records.mid(0, 1));
        QVERIFY(row(0).shareButtonView().isHidden());
    }

    void pictures() {
        pictures_->inMemory.insert(QStringLiteral("f0"), filled(Qt::red));
        QList<ChangeRecord> records = sixteen().mid(0, 3);
        ChangeRecord summary;
        summary.status = Status::deleted;
        summary.count = 2;
        records.append(summary);
        show(records);
        QCOMPARE(pictures_->wanted, (QStringList{QStringLiteral("f1"), QStringLiteral("f2")}));
        QCOMPARE(pictureColour(0), QColor(Qt::red));
        PaintWatch watch;
        Q_EMIT pictures_->arrived(QStringLiteral("f2"), filled(Qt::blue));
        Q_EMIT pictures_->arrived(QString(), filled(Qt::green)); // the summary has no identifier, and its own picture
        QTRY_VERIFY(watch.painted.contains(&row(2)));
        verifyRowsPainted(watch, {2});
        QCOMPARE(pictureColour(2), QColor(Qt::blue));
        QVERIFY(row(3).IconFile().isNull());
    }

    void longAndForeignTitlesAreOneLine() {
        const auto looks = [this](const QString& title) {
            ChangeRecord one = record(1, Status::added);
            one.title = title;
            view_->setRecords({one});
            return row(0).grab().toImage();
        };
        view_->show();
        QCOMPARE(looks(QStringLiteral("one\ntwo")), looks(QStringLiteral("one two")));
        QVERIFY(looks(QStringLiteral("<b>one</b>")) != looks(QStringLiteral("one")));
        // Nothing of it stands beside the title's place.
        const QImage endless = looks(QString(10'000, QLatin1Char('m')));
        const QImage empty = looks(QStringLiteral("m"));
        const QRect beside(311, 0, 19, rowHeight);
        QCOMPARE(endless.copy(beside), empty.copy(beside));
        QVERIFY(endless != empty);
    }

    void datesStayTrue() {
        QList<ChangeRecord> records = sixteen().mid(0, 3);
        records[0].modifiedDate = time_->now().addMSecs(-5200);
        records[1].modifiedDate = time_->now().addSecs(-185);
        records[2].modifiedDate = {};
        show(records);
        QCOMPARE(row(0).TimeChanges(), QStringLiteral("5 seconds ago"));
        QCOMPARE(row(1).TimeChanges(), QStringLiteral("3 minutes ago"));
        QCOMPARE(row(2).TimeChanges(), QString());
        QCOMPARE(row(0).accessibleName(), QStringLiteral("File 0 added, 5 seconds ago"));
        PaintWatch watch;
        QCOMPARE(time_->nextDelay(), 800ms);
        time_->advance(800ms);
        QCOMPARE(row(0).TimeChanges(), QStringLiteral("6 seconds ago"));
        QCOMPARE(row(0).accessibleName(), QStringLiteral("File 0 added, 6 seconds ago"));
        QTRY_VERIFY(watch.painted.contains(&row(0)));
        verifyRowsPainted(watch, {0});
        time_->advance(55s);
        QCOMPARE(row(0).TimeChanges(), QStringLiteral("1 minute ago"));
        QCOMPARE(row(1).TimeChanges(), QStringLiteral("4 minutes ago"));

        view_->hide();
        view_->setRecords(records);
        QCOMPARE(time_->pendingTimers(), size_t(0));
        time_->advance(2h);
        view_->show();
        QCOMPARE(row(0).TimeChanges(), QStringLiteral("2 hours ago"));
        QCOMPARE(time_->pendingTimers(), size_t(1));
    }

    void scrollerFloatsAndFades() {
        show(sixteen());
        auto& scroller = *view_->findChild<RFOverlayScroller*>();
        QCOMPARE(row(0).width(), view_->width());
        QCOMPARE(scroller.alphaValue(), 0.0);
        view_->verticalScrollBar()->setValue(100);
        QTRY_COMPARE(scroller.alphaValue(), 1.0);
        time_->advance(1400ms);
        view_->verticalScrollBar()->setValue(0); // begins the wait anew
        time_->advance(1400ms);
        QCOMPARE(scroller.alphaValue(), 1.0);
        time_->advance(100ms);
        QTRY_COMPARE(scroller.alphaValue(), 0.0);

        const QPoint hold = scroller.knob().center();
        QTest::mouseMove(view_->windowHandle(), scroller.mapTo(view_.get(), hold));
        QTRY_COMPARE(scroller.alphaValue(), 1.0);
        QTest::mousePress(&scroller, Qt::LeftButton, {}, hold);
        QTest::mouseMove(&scroller, QPoint(-50, scroller.height() * 2));
        QCOMPARE(view_->verticalScrollBar()->value(), view_->verticalScrollBar()->maximum());
        QVERIFY(scroller.rect().contains(scroller.knob()));
        QTest::mouseMove(&scroller, hold);
        QCOMPARE(view_->verticalScrollBar()->value(), 0);
        QTest::mouseRelease(&scroller, Qt::LeftButton, {}, hold);
        QTest::mouseClick(&scroller, Qt::LeftButton, {}, QPoint(hold.x(), scroller.height() - 4));
        QCOMPARE(view_->verticalScrollBar()->value(), view_->height());
        QCOMPARE(scroller.alphaValue(), 1.0);
        QCOMPARE(time_->pendingTimers(), size_t(1)); // that of the dates: the pointer is on the scroller
        QTest::mouseMove(view_->windowHandle(), QPoint(20, 20));
        QTRY_COMPARE(scroller.alphaValue(), 0.0);
        view_->setRecords(sixteen().mid(0, 2));
        QTRY_VERIFY(scroller.isHidden());
    }

private:
    static ChangeRecord record(int number, Status status) {
        ChangeRecord record;
        record.status = status;
        record.title = QStringLiteral("File %1").arg(number);
        record.identifier = QStringLiteral("f%1").arg(number);
        record.share = QStringLiteral("http://127.0.0.1/share?token=t&id=") + record.identifier;
        record.modifiedDate = QDateTime(QDate(2026, 1, 1), QTime(11, 0), Qt::UTC);
        return record;
    }
    static QList<ChangeRecord> sixteen() {
        QList<ChangeRecord> records;
        for (int number = 0; number < 16; ++number)
            records.append(record(number, Status::added));
        return records;
    }

    TableRow& row(int index) { return view_->tableView().row(index); }
    void show(const QList<ChangeRecord>& records) {
        view_->setRecords(records);
        view_->show();
        view_->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(view_.get()));
        QTest::qWait(0);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(view_->windowHandle(), key, modifiers);
    }
    void verifyMarked(int index) {
        for (int other = 0; other < view_->tableView().numberOfRows(); ++other)
            QCOMPARE(row(other).isMarked() && row(other).hasFocus(), other == index);
        QVERIFY(view_->rect().contains(row(index).geometry().translated(view_->tableView().pos())));
    }
    // The pointer goes to the row, which alone is highlighted then.
    void verifyHover(int index) {
        // A pointer that is there already, as the last test left it, would not move.
        QTest::mouseMove(view_->windowHandle(), QPoint(1, view_->height() - 1));
        QTest::mouseMove(view_->windowHandle(), row(index).mapTo(view_.get(), QPoint(150, 30)));
        for (int other = 0; other < view_->tableView().numberOfRows(); ++other)
            QCOMPARE(groundColour(other) == QColor(242, 248, 255), other == index);
    }
    void verifyRowsPainted(const PaintWatch& watch, const QSet<int>& expected) {
        for (int index = 0; index < view_->tableView().numberOfRows(); ++index)
            QCOMPARE(watch.painted.contains(&row(index)), expected.contains(index));
    }
    QColor groundColour(int index) { return row(index).grab().toImage().pixelColor(2, 2); }
    QColor pictureColour(int index) { return row(index).grab().toImage().pixelColor(47, 32); }

    StillStyle still_;
    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<FakeRowPictures> pictures_;
    std::unique_ptr<ScrollView> view_;
};

QTEST_MAIN(TestChangeRows)
#include "tst_changerows.moc"
