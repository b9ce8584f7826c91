// RFC 3339 texts to fields, back to the same texts, and to instants.
#include "driveapi/GTLDateTime.h"

#include <QTest>

#include <algorithm>

using namespace quenby;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 undefined = gtlUndefinedDateComponent;

GTLDateTime parsed(const char* text) { return GTLDateTime::dateTimeWithRFC3339String(std::string_view(text)); }

// Local time stands still while the object lives.
class LocalZone {
public:
    explicit LocalZone(const char* name)
        : before_(qgetenv("TZ")) {
        set(name);
    }
    ~LocalZone() { set(before_); }

private:
    static void set(const QByteArray& name) {
        if (name.isEmpty())
            qunsetenv("TZ");
        else
            qputenv("TZ", name);
        tzset();
    }

    QByteArray before_;
};

} // namespace

class TestGTLDateTime : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void textRoundTrip_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("printed"); // null: unchanged
        QTest::addColumn<qint64>("offset");
        QTest::addColumn<qint64>("milliseconds");
        const auto row = [](const char* text, const char* printed, qint64 offset, qint64 milliseconds) {
            QTest::newRow(text) << QByteArray(text) << QString::fromLatin1(printed) << offset << milliseconds;
        };
        row("2014-07-01", nullptr, undefined, 0);
        row("2014-07-01T10:20:30Z", nullptr, 0, 0);
        row("2014-07-01T10:20:30.000Z", "2014-07-01T10:20:30Z", 0, 0);
        row("2014-07-01T10:20:30.5Z", "2014-07-01T10:20:30.500Z", 0, 500);
        row("2014-07-01T10:20:30.5z", "2014-07-01T10:20:30.500Z", 0, 500);
        row("2014-07-01T10:20:30.029Z", nullptr, 0, 29);
        row("2014-07-01T10:20:30.123456Z", "2014-07-01T10:20:30.123Z", 0, 123);
        row("2014-07-01T10:20:30.99999Z", "2014-07-01T10:20:30.999Z", 0, 999); // never a thousandth millisecond
        row("2014-07-01t10:20:30+05:30", "2014-07-01T10:20:30+05:30", 19800, 0);
        row("2014-07-01 10:20:30-08:00", "2014-07-01T10:20:30-08:00", -28800, 0);
        row("2014-07-01T10:20:30-00:30", nullptr, -1800, 0);
        row("2014-07-01T10:20:30+00:00", nullptr, 0, 0);
        row("2014-07-01T10:20:30-00:00", nullptr, undefined, 0);
        row("2014-07-01T10:20:30", "2014-07-01T10:20:30-00:00", undefined, 0);
        row("2014-07-01T10:20:30+5", "2014-07-01T10:20:30+05:00", 18000, 0);
        row("2014-07-01T10:20:30+", "2014-07-01T10:20:30+00:00", 0, 0);
        row("2014--07--01T10::20:30Z", "2014-07-01T10:20:30Z", 0, 0);
        row("0033-02-03T04:05:06Z", nullptr, 0, 0);
        row("2016-12-31T23:59:60Z", nullptr, 0, 0);
    }
    void textRoundTrip() {
        QFETCH(QByteArray, text);
        QFETCH(QString, printed);
        const auto value = GTLDateTime::dateTimeWithRFC3339String(QString::fromLatin1(text));
        QCOMPARE(value.stringValue(), printed.isEmpty() ? QString::fromLatin1(text) : printed);
        QTEST(value.offsetSeconds(), "offset");
        QTEST(value.milliseconds(), "milliseconds");
        // What was printed reads as the same value again.
        QVERIFY(GTLDateTime::dateTimeWithRFC3339String(value.stringValue()) == value);
    }

    void incompleteTextKeepsWhatCameBefore_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("definedFields");
        QTest::newRow("empty") << QByteArray("") << 0;
        QTest::newRow("no number") << QByteArray("yesterday") << 0;
        QTest::newRow("leading space") << QByteArray(" 2014-07-01") << 0;
        QTest::newRow("year only") << QByteArray("2014") << 1;
        QTest::newRow("wrong separator") << QByteArray("2014/07/01T10:20:30Z") << 1;
        QTest::newRow("no day") << QByteArray("2014-07-") << 2;
        QTest::newRow("date") << QByteArray("2014-07-01") << 3;
        QTest::newRow("hour") << QByteArray("2014-07-01T10") << 4;
        QTest::newRow("no seconds") << QByteArray("2014-07-01T10:20Z") << 5;
        QTest::newRow("point only") << QByteArray("2014-07-01T10:20:.") << 5;
        QTest::newRow("negative seconds") << QByteArray("2014-07-01T10:20:-5") << 5;
        QTest::newRow("fraction only") << QByteArray("2014-07-01T10:20:.25") << 6;
    }
    void incompleteTextKeepsWhatCameBefore() {
        QFETCH(QByteArray, text);
        const auto value = parsed(text.constData());
        const GTLDateComponents& fields = value.dateComponents();
        const qint64 inOrder[] = {fields.year, fields.month, fields.day, fields.hour, fields.minute, fields.second};
        const auto firstUndefined = std::find(std::begin(inOrder), std::end(inOrder), undefined);
        QTEST(static_cast<int>(firstUndefined - std::begin(inOrder)), "definedFields");
        QVERIFY(std::all_of(firstUndefined, std::end(inOrder), [](qint64 field) { return field == undefined; }));
        QVERIFY(!value.isNull());
    }

    void absurdDigitsDoNotOverflow_data() {
        QTest::addColumn<QByteArray>("text");
        const QByteArray digits(60, '9');
        QTest::newRow("year") << digits + "-07-01T10:20:30Z";
        QTest::newRow("negative year") << "-" + digits + "-07-01T10:20:30Z";
        QTest::newRow("month") << "2014-" + digits + "-01T10:20:30Z";
        QTest::newRow("day") << "2014-07-" + digits + "T10:20:30Z";
        QTest::newRow("hour") << "2014-07-01T" + digits + ":20:30Z";
        QTest::newRow("seconds") << "2014-07-01T10:20:" + QByteArray(400, '9') + "Z";
        QTest::newRow("offset hours") << "9999999-07-01T10:20:30-" + digits + ":" + digits;
    }
    void absurdDigitsDoNotOverflow() {
        QFETCH(QByteArray, text);
        const auto value = parsed(text.constData());
        // Whatever they give, the sanitizers must have nothing to say, and there is a text.
        value.date();
        value.timeZone();
        QVERIFY(!value.stringValue().isEmpty());
    }

    void instant_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QDateTime>("instant");
        const auto row = [](const char* text, const char* utc) {
            QTest::newRow(text) << QByteArray(text) << QDateTime::fromString(QLatin1String(utc), Qt::ISODateWithMs);
        };
        row("2014-07-01T10:20:30.5Z", "2014-07-01T10:20:30.500Z");
        row("2014-07-01T10:20:30+05:30", "2014-07-01T04:50:30Z");
        row("2014-07-01T20:20:30-08:00", "2014-07-02T04:20:30Z");
        row("2014-07-01", "2014-07-01T12:00:00Z"); // noon
        row("1969-12-31T23:59:59.250Z", "1969-12-31T23:59:59.250Z");
        row("2000-02-29T00:00:00Z", "2000-02-29T00:00:00Z");
        row("1900-03-01T00:00:00Z", "1900-03-01T00:00:00Z");
        row("2016-12-31T23:59:60Z", "2017-01-01T00:00:00Z"); // the leap second
        row("2014-13-32T25:00:00Z", "2015-02-02T01:00:00Z"); // carried over
        row("2014-07-01T10:20:30", "2014-07-01T08:20:30Z");  // local time, see below
        row("2014-01-01T10:20:30-00:00", "2014-01-01T09:20:30Z");
        QTest::newRow("no day") << QByteArray("2014-07") << QDateTime();
    }
    void instant() {
        const LocalZone berlin("Europe/Berlin");
        QFETCH(QByteArray, text);
        QFETCH(QDateTime, instant);
        const auto value = parsed(text.constData());
        QCOMPARE(value.date(), instant);
        QCOMPARE(value.millisecondsSinceEpoch().has_value(), instant.isValid());
        if (instant.isValid())
            QCOMPARE(*value.millisecondsSinceEpoch(), instant.toMSecsSinceEpoch());
    }

    void everyDayOfFourCenturiesIsTheToolkitsDay() {
        for (QDate day(1899, 12, 30); day < QDate(2300, 1, 3); day = day.addDays(1)) {
            GTLDateComponents fields{day.year(), day.month(), day.day(), undefined, undefined, undefined};
            const auto value = GTLDateTime::dateTimeWithDateComponents(fields);
            if (value.date().date() != day)
                QFAIL(qPrintable(day.toString(Qt::ISODate)));
        }
    }

    void fromInstantInZone() {
        const QDateTime instant = QDateTime::fromString(u"2014-07-01T10:20:30.250Z"_s, Qt::ISODateWithMs);
        const QTimeZone berlin("Europe/Berlin");
        const auto inBerlin = GTLDateTime::dateTimeWithDate(instant, berlin);
        QCOMPARE(inBerlin.stringValue(), u"2014-07-01T12:20:30.250+02:00"_s);
        QVERIFY(inBerlin.timeZone() == berlin);
        QVERIFY(!inBerlin.universalTime());
        QCOMPARE(inBerlin.date(), instant);

        const auto universal = GTLDateTime::dateTimeWithDate(instant, QTimeZone::utc());
        QCOMPARE(universal.stringValue(), u"2014-07-01T10:20:30.250Z"_s);
        QVERIFY(universal == parsed("2014-07-01T10:20:30.250Z"));

        // Another zone that happens to be at UTC is not universal time.
        const QDateTime winter = instant.addMonths(6);
        const auto london = GTLDateTime::dateTimeWithDate(winter, QTimeZone("Europe/London"));
        QCOMPARE(london.stringValue(), u"2015-01-01T10:20:30.250+00:00"_s);

        const LocalZone tokyo("Asia/Tokyo");
        const auto local = GTLDateTime::dateTimeWithDate(instant);
        QCOMPARE(local.stringValue(), u"2014-07-01T19:20:30.250-00:00"_s);
        QVERIFY(!local.timeZone());
        QCOMPARE(local.date(), instant);
        QCOMPARE(GTLDateTime::dateTimeForAllDayWithDate(instant).stringValue(), u"2014-07-01"_s);
    }

    void zoneOfText() {
        QVERIFY(parsed("2014-07-01T10:20:30Z").timeZone() == QTimeZone::utc());
        QCOMPARE(parsed("2014-07-01T10:20:30+05:30").timeZone()->offsetFromUtc(QDateTime::currentDateTimeUtc()), 19800);
        QVERIFY(!parsed("2014-07-01T10:20:30-00:00").timeZone());
        QVERIFY(!parsed("2014-07-01T10:20:30+99:00").timeZone());
    }

    void timeOnAndOff() {
        auto value =
            GTLDateTime::dateTimeWithDate(QDateTime::fromMSecsSinceEpoch(1404209000250), QTimeZone("Asia/Tokyo"));
        value.setHasTime(true); // it has: nothing changes
        QVERIFY(value.timeZone().has_value() && value.milliseconds() == 250);
        value.setHasTime(false);
        QVERIFY(!value.hasTime() && !value.timeZone());
        QCOMPARE(value.stringValue(), u"2014-07-01"_s);
        value.setHasTime(true);
        QCOMPARE(value.stringValue(), u"2014-07-01T00:00:00-00:00"_s);
    }

    void equality() {
        const auto value = parsed("2014-07-01T10:20:30+02:00");
        QVERIFY(value == GTLDateTime(value));
        for (const char* other : {"2014-07-01T10:20:31+02:00", "2014-07-01T10:20:30.001+02:00",
                                  "2014-07-01T10:20:30+03:00", "2014-07-01T10:20:30", "2014-07-01T08:20:30Z"})
            QVERIFY2(!(value == parsed(other)), other);
        QVERIFY(!(parsed("2014-07-01T10:20:30Z") == parsed("2014-07-01T10:20:30+00:00")));
        const auto named = GTLDateTime::dateTimeWithDate(value.date(), QTimeZone("Europe/Berlin"));
        QCOMPARE(named.stringValue(), value.stringValue());
        QVERIFY(!(named == value));
    }

    void nothingGivesNull() {
        QVERIFY(GTLDateTime::dateTimeWithRFC3339String(QString()).isNull());
        QVERIFY(GTLDateTime::dateTimeWithDate(QDateTime()).isNull());
        QVERIFY(GTLDateTime().stringValue().isNull());
        QVERIFY(!GTLDateTime().date().isValid());
        QVERIFY(GTLDateTime() == GTLDateTime());
        QVERIFY(!(GTLDateTime() == parsed("")));
    }
};

QTEST_GUILESS_MAIN(TestGTLDateTime)
#include "tst_gtldatetime.moc"
