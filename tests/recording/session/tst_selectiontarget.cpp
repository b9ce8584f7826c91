// Which display and which pixels a selection means, and where its movie may lie.
#include "platform/CaptureSession.h"
#include "recording/session/MoviePlace.h"
#include "recording/session/SelectionTarget.h"
#include "tests/platform/fakes/FakeDisplays.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

// The main one, one to its right whose lower edge is higher, one at twice the scale below the main one.
const QList<quenby::Display> desk{FakeDisplays::display(1, {0, 0, 1280, 800}),
                                  FakeDisplays::display(2, {1280, -100, 800, 600}),
                                  FakeDisplays::display(3, {0, 800, 640, 400}, 2)};

} // namespace

class SelectionTargetTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void display_data() {
        QTest::addColumn<QPointF>("corner"); // lower left, as the main display counts
        QTest::addColumn<quint32>("display");
        QTest::newRow("lower left of the main one") << QPointF(0, 0) << 1U;
        QTest::newRow("its last point") << QPointF(1279.5, 799.5) << 1U;
        QTest::newRow("the right edge is the neighbour's") << QPointF(1280, 300) << 2U;
        QTest::newRow("where the neighbour begins") << QPointF(1300, 299.5) << 0U;
        QTest::newRow("above the main one's top") << QPointF(1300, 899) << 2U;
        QTest::newRow("the top edge is no longer in") << QPointF(1300, 900) << 0U;
        QTest::newRow("below the main one") << QPointF(0, -1) << 3U;
        QTest::newRow("lower left of the one below") << QPointF(0, -400) << 3U;
        QTest::newRow("beside it") << QPointF(640, -1) << 0U;
    }
    void display() {
        QFETCH(QPointF, corner);
        QFETCH(quint32, display);
        const auto found = displayUnder({corner, QSizeF(20, 20)}, desk, desk.first());
        QCOMPARE(found ? found->identifier : 0U, display);
    }
    void displaysThatShowTheSameAreNotToldApart() {
        quenby::Display mirror = desk.first();
        mirror.identifier = 9;
        QVERIFY(!displayUnder({5, 5, 20, 20}, {desk.first(), mirror}, desk.first()));
    }
    // Whatever display the overlay is on, its own lower left corner is found again.
    void everyOverlayFindsItsDisplay() {
        for (const quenby::Display& display : desk) {
            const auto found =
                displayUnder(QRectF(lowerLeft(display, desk.first()), QSizeF(30, 30)), desk, desk.first());
            QVERIFY(found);
            QCOMPARE(*found, display);
        }
    }

    void pixels_data() {
        QTest::addColumn<quenby::Display>("on");
        QTest::addColumn<QRectF>("selection");
        QTest::addColumn<QRect>("expected");
        QTest::newRow("all of it") << desk[0] << QRectF(0, 0, 1280, 800) << QRect(0, 0, 1280, 800);
        QTest::newRow("lower left corner") << desk[0] << QRectF(0, 0, 11, 13) << QRect(0, 787, 11, 13);
        QTest::newRow("twice the scale") << desk[2] << QRectF(10.5, 20, 100, 50) << QRect(21, 660, 200, 100);
        QTest::newRow("larger than the display") << desk[1] << QRectF(0, 0, 1280, 800) << QRect(0, 0, 800, 600);
        const quenby::Display fractional = FakeDisplays::display(4, {0, 0, 853, 533}, 1.5);
        QTest::newRow("one and a half") << fractional << QRectF(1, 1, 11, 11) << QRect(2, 782, 16, 16);
        QTest::newRow("its neighbour") << fractional << QRectF(12, 1, 11, 11) << QRect(18, 782, 17, 16);
    }
    void pixels() {
        QFETCH(quenby::Display, on);
        QFETCH(QRectF, selection);
        QFETCH(QRect, expected);
        QCOMPARE(selectedPixels(selection, on), expected);
    }

    void aMovieTakesNoNameThatIsTaken() {
        const QTemporaryDir folder;
        const QByteArray movie = QFile::encodeName(folder.filePath(u"a.mov"_s));
        const auto place = [&folder] { return freeMoviePlace(folder.path(), u"a"_s).value(); };
        QCOMPARE(place(), std::optional(movie));
        QCOMPARE(place(), std::optional(movie)); // the first call has left nothing
        for (const QString& taken :
             {QFile::decodeName(movie), QFile::decodeName(unfinishedMoviePath(movie)), folder.filePath(u"a"_s)}) {
            QFile file(taken);
            QVERIFY(file.open(QFile::WriteOnly));
            QVERIFY2(!place(), qPrintable(taken));
            QVERIFY(file.remove());
        }
        const auto nowhere = freeMoviePlace(folder.filePath(u"missing"_s), u"a"_s);
        QVERIFY(!nowhere && nowhere.error().detail(errorKey::reason).toString().contains(u"missing"_s));
    }
};

QTEST_GUILESS_MAIN(SelectionTargetTest)
#include "tst_selectiontarget.moc"
