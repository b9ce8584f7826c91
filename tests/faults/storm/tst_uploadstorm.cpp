// Uploads in a storm: while they go on, the program is killed, the Drive is killed, and connections break in every way
// there is. In the end every file is in the Drive once, whole.
//
// A longer one: QUENBY_STORM_UPLOADS=10000, with QUENBY_STORM_SEED for the same files and the same plan of troubles as
// another time, and QUENBY_STORM_SPEED for how many bytes are sent in a second.

#include "driveapi/GTLDriveFile.h"
#include "tests/faults/FaultBench.h"
#include "tests/faults/storm/StormFiles.h"
#include "tests/faults/storm/StormUploader.h"
#include "tests/faults/storm/StormWeather.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <map>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

constexpr int shortStorm = 75;      // uploads on each road
constexpr int shortSpeed = 1500000; // bytes per second: else most files are gone before anything happens
constexpr auto calm = 180s;         // of real time, in which nothing gets on: a hang
constexpr auto reportEvery = 10s;

enum class Trouble { uploaderKilled, driveKilled, connectionsBroken };

// Each kind once at first, so that a short storm has them all.
Trouble nextTrouble(int step, QRandomGenerator& random) {
    const int place = random.bounded(100);
    if (step < 3)
        return static_cast<Trouble>(step);
    return place < 35 ? Trouble::uploaderKilled : place < 50 ? Trouble::driveKilled : Trouble::connectionsBroken;
}

int variable(const char* name, int otherwise) {
    const int value = qEnvironmentVariableIntValue(name);
    return value > 0 ? value : otherwise;
}

void say(const QString& text) {
    std::fprintf(stderr, "storm: %s\n", qPrintable(text));
    std::fflush(stderr);
}

// What the Drive says of uploads, over all its runs.
struct SessionCounts {
    QHash<QString, qint64> contentsAfterLoss; // by lost session
    qint64 duplicateBytes = 0;                // that were sent although the Drive held them

    void add(const QJsonObject& state) {
        for (const QJsonValue session : state[QLatin1String("uploads")].toArray())
            duplicateBytes += session[QLatin1String("duplicates")].toInteger();
        const QJsonObject refused = state[QLatin1String("refusedUploads")].toObject();
        for (auto session = refused.begin(); session != refused.end(); ++session)
            contentsAfterLoss[session.key()] += session.value()[QLatin1String("puts")].toInteger();
    }
    qint64 mostAfterLoss() const {
        return contentsAfterLoss.isEmpty() ? 0 : *std::max_element(contentsAfterLoss.begin(), contentsAfterLoss.end());
    }
};

// MD5 sums and sizes by title, as another client sees the Drive.
Result<QHash<QString, QStringList>> copiesInDrive(FaultBench& bench) {
    bench.service().fetcherService()->setTimeout(60s);
    bench.service().ticketSettings().shouldFetchNextPages = false; // each page has its own patience
    const auto query = GTLQueryDrive::queryForFilesList();
    query->setQ(QStringLiteral("title contains 'storm'"));
    query->setMaxResults(200);
    QHash<QString, QStringList> copies;
    do {
        const auto reply = bench.call(query->copy());
        if (!reply)
            return reply.error();
        const auto page = std::dynamic_pointer_cast<GTLDriveFileList>(*reply);
        for (const auto& item : *page) {
            const auto file = std::dynamic_pointer_cast<GTLDriveFile>(item);
            copies[file->title()].append(file->md5Checksum() + QLatin1Char(' ') + QString::number(file->fileSize()));
        }
        query->setPageToken(page->nextPageToken());
    } while (!query->pageToken().isEmpty());
    return copies;
}

// Where that is not as it should be.
QStringList differences(FaultBench& bench, const StormFiles& files) {
    auto listed = copiesInDrive(bench);
    if (!listed)
        return {listed.error().description()};
    QHash<QString, QStringList>& copies = *listed;
    QStringList found;
    for (const StormFile& file : files.all()) {
        const QString expected = file.md5 + QLatin1Char(' ') + QString::number(file.size);
        const QStringList there = copies.take(file.title);
        if (there != QStringList{expected})
            found.append(QStringLiteral("%1: “%2” instead of “%3”")
                             .arg(file.title, there.join(QStringLiteral(" and ")), expected));
    }
    for (auto other = copies.cbegin(); other != copies.cend(); ++other)
        found.append(other.key() + QStringLiteral(": is none of ours"));
    return found;
}

} // namespace

class UploadStormTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        count_ = variable("QUENBY_STORM_UPLOADS", shortStorm);
        seed_ = variable("QUENBY_STORM_SEED", QRandomGenerator::global()->bounded(1, 1000000));
        say(QStringLiteral("QUENBY_STORM_SEED=%1").arg(seed_));
    }

    void everyFileArrivesOnce_data() {
        QTest::addColumn<QString>("road");
        QTest::newRow("rpc") << "rpc";
        QTest::newRow("rest") << "rest";
    }
    void everyFileArrivesOnce() {
        QFETCH(QString, road);
        const StormFiles files(count_, quint32(seed_));
        QCOMPARE(files.all().size(), count_);
        FaultBench bench;
        QVERIFY2(bench.prepare(), bench.drive().log().constData());
        const QTemporaryDir folder;
        const QJsonObject orders{
            {QStringLiteral("drive"), bench.drive().url().toString()},
            {QStringLiteral("road"), road},
            {QStringLiteral("grant"), bench.drive().grant()},
            {QStringLiteral("speed"), variable("QUENBY_STORM_SPEED", shortSpeed)},
            {QStringLiteral("journal"), folder.filePath(QStringLiteral("uploads.sqlite"))},
        };
        StormUploader uploader(QJsonDocument(orders).toJson(QJsonDocument::Compact));
        QVERIFY(uploader.start());
        QVERIFY(uploader.keep(files.paths()));

        QElapsedTimer clock;
        clock.start();
        QCOMPARE(rage(uploader, bench.drive(), road), QString());
        say(QStringLiteral("%1: %2 uploads, %3 bytes, %4 s; the program killed %5 times, the Drive %6 times, %7 orders "
                           "to break connections")
                .arg(road, QString::number(count_), QString::number(files.bytes()),
                     QString::number(clock.elapsed() / 1000))
                .arg(troubles_[Trouble::uploaderKilled])
                .arg(troubles_[Trouble::driveKilled])
                .arg(troubles_[Trouble::connectionsBroken]));
        say(QStringLiteral("%1: %2 sessions lost, content sent to one of them at most %3 times; %4 bytes sent although "
                           "the Drive held them")
                .arg(road, QString::number(sessions_.contentsAfterLoss.size()),
                     QString::number(sessions_.mostAfterLoss()), QString::number(sessions_.duplicateBytes)));
        QVERIFY(sessions_.mostAfterLoss() <= 1); // that one was told that it is lost
        QCOMPARE(sessions_.duplicateBytes, 0);

        uploader.kill();
        bench.drive().clearFaults();
        QCOMPARE(differences(bench, files).join(QLatin1Char('\n')), QString());
        // Nothing is left for the next run either.
        QVERIFY(uploader.start());
        QTRY_COMPARE_WITH_TIMEOUT(uploader.left(), 0, 60000);
    }

private:
    // Until no upload is left. An empty text, or what went wrong.
    QString rage(StormUploader& uploader, LocalDriveProcess& drive, const QString& road) {
        QRandomGenerator random{quint32(seed_)};
        troubles_.clear();
        sessions_ = {};
        QDeadlineTimer patience(calm);
        QDeadlineTimer report(reportEvery);
        qsizetype left = count_;
        for (int step = 0;; ++step) {
            const int pause = random.bounded(200, 2000); // milliseconds
            const Trouble trouble = nextTrouble(step, random);
            if (QTest::qWaitFor([&] { return uploader.left() == 0; }, pause))
                break;
            if (!cause(trouble, uploader, drive, random))
                return QStringLiteral("can't be started again: ") + QString::fromUtf8(drive.log().right(1000));
            if (!uploader.failures().isEmpty())
                return uploader.failures().join(QLatin1Char('\n'));
            if (uploader.left() >= 0 && std::exchange(left, uploader.left()) != uploader.left())
                patience = QDeadlineTimer(calm);
            if (patience.hasExpired())
                return QStringLiteral("%1 uploads do not get on").arg(left);
            if (report.hasExpired()) {
                report = QDeadlineTimer(reportEvery);
                say(QStringLiteral("%1: %2 of %3 are over").arg(road).arg(count_ - left).arg(count_));
            }
        }
        sessions_.add(drive.state());
        return {};
    }

    bool cause(Trouble trouble, StormUploader& uploader, LocalDriveProcess& drive, QRandomGenerator& random) {
        const bool isFirst = troubles_[trouble]++ == 0;
        switch (trouble) {
        case Trouble::uploaderKilled:
            uploader.kill();
            return uploader.start();
        case Trouble::driveKilled:
            sessions_.add(drive.state());
            drive.kill();
            return drive.start();
        case Trouble::connectionsBroken:
            return drive.orderFaults(isFirst ? lostCompletion : nextStormRule(random));
        }
        return false;
    }

    int count_ = 0;
    int seed_ = 0;
    std::map<Trouble, int> troubles_;
    SessionCounts sessions_;
};

int main(int argc, char** argv) {
    qputenv("QTEST_FUNCTION_TIMEOUT", "86400000"); // milliseconds; a hang ends by itself
    QCoreApplication application(argc, argv);
    UploadStormTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_uploadstorm.moc"
