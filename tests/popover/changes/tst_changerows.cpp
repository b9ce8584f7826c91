// The change list as it is seen: its rows, their places, pictures and dates, and that nothing else is painted again.
#include "tests/popover/changes/ChangeListStage.h"

#include <QSignalSpy>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

using Status = ChangeRecord::Status;

// Which widgets are painted.
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
    void init() { stage_ = std::make_unique<ChangeListStage>(); }
    void cleanup() { stage_.reset(); }

    void equalRecordsPaintNothing() {
        const QList<ChangeRecord> records = addedFiles(16);
        stage_->show(records);
        PaintWatch watch;
        stage_->view.setRecords(records);
        QTest::qWait(0);
        QVERIFY(watch.painted.isEmpty());

        QList<ChangeRecord> changed = records;
        changed[2].title = QStringLiteral("Other.txt");
        changed[3].share += QLatin1Char('x'); // does not show
        stage_->view.setRecords(changed);
        verifyOnlyPainted(watch, 2);
    }

    void rowsFindTheirPlaces_data() {
        QTest::addColumn<bool>("isAnimated");
        QTest::newRow("at once") << false;
        QTest::newRow("on their way") << true;
    }
    void rowsFindTheirPlaces() {
        QFETCH(bool, isAnimated);
        stage_->show(addedFiles(16));
        if (isAnimated)
            stage_->view.tableView().setStyle(QApplication::style());
        QList<ChangeRecord> records = addedFiles(16);
        QPointer<TableRow> gone(&stage_->row(5));
        TableRow& first = stage_->row(0);
        TableRow& last = stage_->row(15);
        records.removeAt(5);
        records.prepend(addedFile(99));
        records.append(records.takeAt(1)); // the first of before
        stage_->view.setRecords(records);
        if (isAnimated) { // and once more before they are there
            QVERIFY(first.y() == 0 && stage_->row(0).opacity() < 1 && gone && gone->isVisible());
            stage_->view.setRecords(records);
        }
        QTRY_VERIFY(gone.isNull());
        QCOMPARE(&stage_->row(15), &first);
        QCOMPARE(&stage_->row(14), &last);
        for (int index = 0; index < 16; ++index) {
            QCOMPARE(stage_->row(index).geometry(), QRect(0, index * rowHeight, 330, rowHeight));
            QCOMPARE(stage_->row(index).opacity(), 1.0);
            QCOMPARE(stage_->row(index).record(), records.at(index));
        }
        stage_->view.setRecords({});
        QTRY_VERIFY(stage_->view.findChildren<TableRow*>().isEmpty());
    }

    void pictures() {
        FakeRowPictures& pictures = stage_->pictures;
        pictures.inMemory.insert(QStringLiteral("f0"), filled(Qt::red));
        QList<ChangeRecord> records = addedFiles(3);
        ChangeRecord summary;
        summary.status = Status::deleted;
        summary.count = 2;
        records.append(summary);
        stage_->show(records);
        QCOMPARE(pictures.wanted, (QStringList{QStringLiteral("f1"), QStringLiteral("f2")}));
        QCOMPARE(stage_->colourAt(0, middleOfPicture), QColor(Qt::red));
        PaintWatch watch;
        pictures.inMemory.insert(QStringLiteral("f2"), filled(Qt::blue));
        pictures.inMemory.insert(QString(), filled(Qt::green));
        Q_EMIT pictures.arrived(QStringLiteral("f2"));
        Q_EMIT pictures.arrived(QString()); // the summary has no identifier, and its own picture
        verifyOnlyPainted(watch, 2);
        QCOMPARE(stage_->colourAt(2, middleOfPicture), QColor(Qt::blue));
        QVERIFY(stage_->row(3).IconFile().isNull());
    }

    void longAndForeignTitlesAreOneLine() {
        const auto looks = [this](const QString& title) {
            ChangeRecord one = addedFile(1);
            one.title = title;
            stage_->view.setRecords({one});
            return stage_->row(0).grab().toImage();
        };
        stage_->view.show();
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
        ManualTimeSource& time = *stage_->time;
        QList<ChangeRecord> records = addedFiles(3);
        records[0].modifiedDate = time.now().addMSecs(-5200);
        records[1].modifiedDate = time.now().addSecs(-185);
        records[2].modifiedDate = {};
        stage_->show(records);
        const auto dates = [this] {
            return QStringList{stage_->row(0).TimeChanges(), stage_->row(1).TimeChanges(),
                               stage_->row(2).TimeChanges()};
        };
        QCOMPARE(dates(), (QStringList{QStringLiteral("5 seconds ago"), QStringLiteral("3 minutes ago"), QString()}));
        PaintWatch watch;
        QCOMPARE(time.nextDelay(), 800ms);
        time.advance(800ms);
        QCOMPARE(dates().at(0), QStringLiteral("6 seconds ago"));
        QCOMPARE(stage_->row(0).accessibleName(), QStringLiteral("File 0 added, 6 seconds ago"));
        verifyOnlyPainted(watch, 0);
        time.advance(55s);
        QCOMPARE(dates(), (QStringList{QStringLiteral("1 minute ago"), QStringLiteral("4 minutes ago"), QString()}));

        stage_->view.hide();
        stage_->view.setRecords(records);
        QCOMPARE(time.pendingTimers(), size_t(0));
        time.advance(2h);
        stage_->view.show();
        QCOMPARE(dates().at(0), QStringLiteral("2 hours ago"));
        QCOMPARE(time.pendingTimers(), size_t(1));
    }

private:
    static constexpr QPoint middleOfPicture{47, 32};

    void verifyOnlyPainted(const PaintWatch& watch, int expected) {
        QTRY_VERIFY(watch.painted.contains(&stage_->row(expected)));
        for (int index = 0; index < stage_->numberOfRows(); ++index)
            QCOMPARE(watch.painted.contains(&stage_->row(index)), index == expected);
    }

    std::unique_ptr<ChangeListStage> stage_;
};

QTEST_MAIN(TestChangeRows)
#include "tst_changerows.moc"
