// The rows of the upload queue: what they tell of themselves, when, in which order, and in which words.

#include "tests/workspace/uploads/QueueBench.h"
#include "workspace/uploads/QueueCommands.h"
#include "workspace/uploads/QueueRows.h"
#include "workspace/uploads/QueueText.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace quenby;
using namespace quenby::testing;
using State = QueueRow::State;
using std::chrono::seconds;

class QueueRowsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onlyWhatIsSeenIsTold() {
        QueueRows rows;
        const QAbstractItemModelTester tester(&rows, QAbstractItemModelTester::FailureReportingMode::QtTest);
        rows.append({queueRow(1, State::running, megabyte), queueRow(2, State::running, megabyte)});
        QSignalSpy changed(&rows, &QAbstractItemModel::dataChanged);
        rows.change(queueRow(2, State::running, megabyte + 100));
        QCOMPARE(rows.rows()[1].sent, megabyte + 100);
        rows.change(queueRow(3, State::running));
        rows.setOrder({1, 2});
        QCOMPARE(changed.count(), 0);

        rows.change(queueRow(2, State::running, 2 * megabyte));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(0).toModelIndex().row(), 1);
        QCOMPARE(changed.first().at(1).toModelIndex().row(), 1);
        QueueRow faster = rows.rows()[1];
        faster.bytesPerSecond = megabyte;
        rows.change(faster);
        faster.timeLeft = seconds(61);
        rows.change(faster);
        QCOMPARE(changed.count(), 3);
        faster.timeLeft = seconds(63); // about a minute as well
        rows.change(faster);
        QCOMPARE(changed.count(), 3);
    }

    void orderMovesWhatIsHeld() {
        QueueRows rows;
        const QAbstractItemModelTester tester(&rows, QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (qint64 number = 1; number <= 5; ++number)
            rows.append(queueRow(number, State::waiting));
        const QPersistentModelIndex third(rows.index(2));
        const QPersistentModelIndex last(rows.index(4));
        QSignalSpy layout(&rows, &QAbstractItemModel::layoutChanged);
        rows.setOrder({5, 3, 99, 3});
        QCOMPARE(orderOf(rows), QStringLiteral("5 3 1 2 4"));
        QCOMPARE(third.row(), 1);
        QCOMPARE(last.row(), 0);
        rows.setOrder({5, 3, 1});
        rows.setOrder({});
        QCOMPARE(layout.count(), 1);
    }

    // Whatever comes and goes in whatever order, a number always means its row.
    void manyChanges() {
        QueueRows rows;
        QList<qint64> expected;
        QRandomGenerator random(4711);
        qint64 next = 1;
        for (int step = 0; step < 3000; ++step) {
            const int what = random.bounded(step % 600 < 300 ? 9 : 12); // grows, and then shrinks
            if (what < 5) {
                rows.append({queueRow(next, State::waiting), queueRow(next + 1, State::waiting)});
                expected << next << next + 1;
                next += 2;
            } else if (what == 5 && !expected.isEmpty()) {
                const qint64 number = expected.takeAt(random.bounded(int(expected.size())));
                rows.setOrder({number});
                expected.prepend(number);
            } else if (what > 5 && !expected.isEmpty()) {
                rows.remove(expected.takeAt(random.bounded(int(expected.size()))));
            }
            if (step == 1500) {
                rows.clear();
                expected.clear();
            }
            if (!expected.isEmpty()) {
                const qint64 number = expected.at(random.bounded(int(expected.size())));
                rows.change(queueRow(number, State::paused));
                QCOMPARE(rows.rows()[expected.indexOf(number)].state, State::paused);
            }
        }
        QVERIFY(expected.size() > 10);
        QCOMPARE(orderOf(rows), numbersText(expected));
    }

    void words_data() {
        QTest::addColumn<QueueRow>("row");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("spoken");
        const auto add = [](const char* name, QueueRow row, const char* text, const char* spoken) {
            row.name = QStringLiteral("%1 %2.txt"); // no place for anything
            QTest::newRow(name) << row << QString::fromUtf8(text)
                                << QString(row.name + QStringLiteral(", ") + QString::fromUtf8(spoken));
        };
        QueueRow row = queueRow(1, State::running, 3 * megabyte + megabyte / 5 + 1);
        add("unknown speed", row, "3.2 MB of 10 MB", "running, 32%");
        row.bytesPerSecond = 11 * megabyte / 10;
        row.timeLeft = seconds(125);
        add("running", row, "3.2 MB of 10 MB — 1.1 MB/s — about 2 minutes left", "running, 32%");
        row.total = -1;
        row.timeLeft.reset();
        add("unknown size", row, "3.2 MB — 1.1 MB/s", "running");
        add("begun", queueRow(1, State::running), "Starting — 10 MB", "running, 0%");
        add("waiting", queueRow(1, State::waiting), "Waiting — 10 MB", "waiting");
        add("paused", queueRow(1, State::paused, 5 * megabyte), "Paused — 5 MB of 10 MB", "paused, 50%");
        add("done", queueRow(1, State::done, 10 * megabyte), "Uploaded — 10 MB", "done");
        add("changed", queueRow(1, State::changed),
            "The file has changed since it was queued. Retry to upload it as it is now.", "changed");
        row = queueRow(1, State::resting, megabyte);
        row.message = QStringLiteral("there is no network at 100%1.");
        add("resting", row, "Waits to go on: there is no network at 100%1.", "waits to go on, 10%");
        row.state = State::failed;
        add("failed", row, "there is no network at 100%1.", "failed, 10%");
    }
    void words() {
        QFETCH(QueueRow, row);
        QTEST(queueStateText(row), "text");
        QTEST(queueSpokenText(row), "spoken");
    }

    void timeLeft_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("text");
        const std::pair<int, const char*> texts[] = {
            {0, "less than a minute left"},     {59, "less than a minute left"},    {60, "about 1 minute left"},
            {89, "about 1 minute left"},        {90, "about 2 minutes left"},       {10 * 60, "about 10 minutes left"},
            {13 * 60, "about 15 minutes left"}, {90 * 60, "about 90 minutes left"}, {91 * 60, "about 2 hours left"},
            {47 * 3600, "about 47 hours left"}, {72 * 3600, "about 3 days left"},
        };
        for (const auto& [count, text] : texts)
            QTest::newRow(qPrintable(QString::number(count))) << count << QString::fromLatin1(text);
    }
    void timeLeft() {
        QFETCH(int, count);
        QTEST(timeLeftText(seconds(count)), "text");
    }

    void summary() {
        QCOMPARE(queueSummary({}, false), QString());
        QueueRow running = queueRow(1, State::running, 5 * megabyte);
        running.bytesPerSecond = megabyte / 10;
        QList<QueueRow> rows{running,
                             running,
                             queueRow(3, State::waiting),
                             queueRow(4, State::resting, 0),
                             queueRow(5, State::failed, megabyte),
                             queueRow(6, State::paused)};
        const QString counts = QStringLiteral("2 running, 2 waiting, 1 paused, 1 failed");
        QCOMPARE(queueSummary(rows, false), QString(counts + QStringLiteral(" — 204.8 kB/s — about 3 minutes left")));
        rows[2].total = -1;
        QCOMPARE(queueSummary(rows, false), QString(counts + QStringLiteral(" — 204.8 kB/s")));
        QCOMPARE(queueSummary(rows, true), QString(QStringLiteral("All paused — ") + counts));
    }

    void orders() {
        const QList<qint64> waiting{1, 2, 3, 4, 5};
        const auto moved = [&waiting](const QSet<qint64>& chosen, QueueMove move) {
            return numbersText(movedOrder(waiting, chosen, move));
        };
        QCOMPARE(moved({1, 2, 4}, QueueMove::up), QStringLiteral("1 2 4 3 5"));
        QCOMPARE(moved({2, 3}, QueueMove::up), QStringLiteral("2 3 1 4 5"));
        QCOMPARE(moved({2, 3, 5}, QueueMove::down), QStringLiteral("1 4 2 3 5"));
        QCOMPARE(moved({2, 4}, QueueMove::toTop), QStringLiteral("2 4 1 3 5"));
        QCOMPARE(moved({2, 4}, QueueMove::toBottom), QStringLiteral("1 3 5 2 4"));
        QVERIFY(movedOrder({}, {}, QueueMove::down).isEmpty());
        const auto gathered = [&waiting](const QSet<qint64>& chosen, std::optional<qint64> before) {
            return numbersText(gatheredOrder(waiting, chosen, before));
        };
        QCOMPARE(gathered({1, 5}, 3), QStringLiteral("2 1 5 3 4"));
        QCOMPARE(gathered({1, 3}, 3), QStringLiteral("2 1 3 4 5"));
        QCOMPARE(gathered({2}, std::nullopt), QStringLiteral("1 3 4 5 2"));
    }
};

QTEST_GUILESS_MAIN(QueueRowsTest)
#include "tst_queuerows.moc"
