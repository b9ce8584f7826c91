// The words for how far a date lies away, and when they stop being true.
#include "popover/changes/RelativeDateDescriptor.h"
#include "popover/changes/RowDates.h"

#include <QTest>

using namespace quenby;
using namespace std::chrono_literals;

namespace {

const QDateTime now(QDate(2026, 3, 1), QTime(12, 0), Qt::UTC);

} // namespace

class TestRelativeDates final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void describes_data() {
        QTest::addColumn<qint64>("milliseconds"); // from now on
        QTest::addColumn<QString>("text");
        const auto row = [](qint64 milliseconds, const char* text) {
            QTest::newRow(text) << milliseconds << QString::fromLatin1(text);
        };
        row(0, "in 0 millisecond");
        row(-1, "0 millisecond ago"); // a millisecond is a little longer than a thousandth
        row(-2, "1 millisecond ago");
        row(-500, "499 milliseconds ago");
        row(-999, "998 milliseconds ago");
        row(-1000, "1 second ago");
        row(-45'000, "45 seconds ago");
        row(-59'900, "59 seconds ago");
        row(-90'000, "1 minute ago");
        row(-3'599'999, "59 minutes ago");
        row(-7'200'000, "2 hours ago");
        row(-86'400'000, "1 day ago");
        row(-604'799'000, "6 days ago");
        row(-604'800'000, "1 week ago");
        row(-2'629'151'999, "4 weeks ago");
        row(-2'629'152'000, "1 month ago");
        row(-30'779'325'993, "11 months ago");
        row(-30'779'325'994, "1 year ago");
        row(-61'558'651'988, "2 years ago");
        row(10'000, "in 10 seconds");
        row(200'000'000'000'000, "in 6497 years");
    }
    void describes() {
        QFETCH(qint64, milliseconds);
        QFETCH(QString, text);
        QCOMPARE(RelativeDateDescriptor().describeDate(now.addMSecs(milliseconds), now), text);
    }

    void missingDates() {
        const RelativeDateDescriptor descriptor;
        QVERIFY(descriptor.describeDate({}, now).isNull());
        QVERIFY(descriptor.describeDate(now, {}).isNull());
        QVERIFY(rowDateText({}, now).isNull());
        QVERIFY(!timeToNextRowDateText({}, now));
    }

    void severalUnits() {
        using Descriptor = RelativeDateDescriptor;
        Descriptor descriptor(QStringLiteral("vor %@"), QStringLiteral("%@ später"));
        descriptor.expressedUnits = Descriptor::minute | Descriptor::hour | Descriptor::second;
        QCOMPARE(descriptor.describeDate(now.addSecs(-2 * 3600 - 61), now),
                 QStringLiteral("vor 2 hours 1 minute 1 second"));
        QCOMPARE(descriptor.describeDate(now.addMSecs(59'900), now),
                 QStringLiteral("0 hour 0 minute 59 seconds später"));
        descriptor.expressedUnits = Descriptor::millisecond | Descriptor::second;
        QCOMPARE(descriptor.expressedTimeUnits(), (QList<quint32>{2, 2, 4}));
        QCOMPARE(descriptor.describeDate(now.addMSecs(-1500), now),
                 QStringLiteral("vor 1 second 499 milliseconds 0 millisecond"));
        descriptor.expressedUnits = 0; // nothing chosen: the largest that fits
        QCOMPARE(descriptor.describeDate(now.addSecs(-61), now), QStringLiteral("vor 1 minute"));
    }

    // Sums that come out wrong in binary fractions.
    void decimals() {
        using Descriptor = RelativeDateDescriptor;
        const auto decimal = &Decimal::fromDouble;
        QCOMPARE(Descriptor::preciselyDivide(decimal(0.3), 0.1), 3);
        QCOMPARE(Descriptor::preciselyDivide(decimal(-59.9), 1), -59);
        QCOMPARE(Descriptor::preciselyDivide(decimal(1), 512), 0);
        QCOMPARE(Descriptor::preciselyDivide(decimal(1), 0), 0);
        QCOMPARE(Descriptor::preciselyDivide(decimal(1e15), 0.001), std::numeric_limits<qint32>::max());
        QVERIFY(Descriptor::compare(decimal(1.1) - decimal(1), 0.1) == 0);
        QVERIFY(Descriptor::compare(decimal(30779325.9935), 30779325.9936) < 0);
        QVERIFY(Descriptor::compare(decimal(1e300), 1e15) > 0);
    }

    // A row that looks again exactly when it is told to never shows an old text, and never looks in vain.
    void staysTrueUntilTheNextLook_data() {
        QTest::addColumn<qint64>("start"); // milliseconds from the change on
        QTest::newRow("from the future") << -3'700'000LL;
        QTest::newRow("from far in the future") << -40'000'000'000LL;
        QTest::newRow("a young row") << 1LL;
        QTest::newRow("about to be a minute old") << 57'300LL;
        QTest::newRow("hours") << 3'599'000LL;
        QTest::newRow("weeks that become a month") << 2'629'151'000LL;
        QTest::newRow("months that become a year") << 30'779'325'000LL;
        QTest::newRow("years") << 30'779'325'994LL;
    }
    void staysTrueUntilTheNextLook() {
        QFETCH(qint64, start);
        QDateTime time = now.addMSecs(start);
        for (int look = 0; look < 200; ++look) {
            const QString text = rowDateText(now, time);
            const auto wait = timeToNextRowDateText(now, time);
            QVERIFY(wait && *wait >= 1ms && *wait <= 1h);
            const bool countsDown = text.contains(QStringLiteral("millisecond")); // nobody reads these
            if (!countsDown)
                QCOMPARE(rowDateText(now, time.addMSecs(wait->count() - 1)), text);
            time = time.addMSecs(wait->count());
            QVERIFY2(*wait == 1h || rowDateText(now, time) != text, qPrintable(text));
        }
    }
};

QTEST_GUILESS_MAIN(TestRelativeDates)
#include "tst_relativedates.moc"
