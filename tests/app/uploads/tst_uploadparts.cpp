// What the upload pipeline is made of, each part alone and in time that stands still: the progress slot, the joined
// alerts, the notifications of a burst, and the lines that hand uploads over.

#include "app/uploads/FailureAlerts.h"
#include "app/uploads/ProgressSlot.h"
#include "app/uploads/SuccessNotices.h"
#include "app/uploads/UploadRequest.h"
#include "app/uploads/transfer/InsertQuery.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeNotifications.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakePasteboard.h"
#include "tests/support/ManualTimeSource.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

class UploadPartsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        pasteboard_ = std::make_unique<FakePasteboard>();
        opener_ = std::make_unique<FakeOpener>();
        notifications_ = std::make_unique<FakeNotifications>();
        time_ = std::make_shared<ManualTimeSource>();
        notices_ = std::make_unique<SuccessNotices>(*notifications_, *pasteboard_, *opener_, time_);
    }
    void cleanup() { notices_.reset(); }

    void progressSlot() {
        using Change = ProgressSlot::Change;
        ProgressSlot slot;
        QVERIFY(slot.path().isNull());
        QCOMPARE(slot.start("/a"), Change::changed);
        QCOMPARE(slot.start("/b"), Change::none);
        QCOMPARE(slot.report("/b", 1, 2), Change::none); // the slot is taken
        QCOMPARE(slot.report("/a", 1999, 2000), Change::changed);
        QCOMPARE(slot.percent(), 99);                    // truncated
        QCOMPARE(slot.report("/a", 0, 0), Change::none); // an empty file has no share of itself
        slot.release(100);                               // whoever ended
        QVERIFY(slot.path().isNull());
        QCOMPARE(slot.percent(), 100);
        QCOMPARE(slot.report("/b", 30, 90), Change::taken);
        QCOMPARE(slot.path(), QByteArray("/b"));
        QCOMPARE(slot.percent(), 33);
        QCOMPARE(slot.report("/a", 50, 100), Change::none);
        QCOMPARE(slot.report("/b", Q_INT64_C(5) << 40, Q_INT64_C(10) << 40), Change::changed); // terabytes
        QCOMPARE(slot.percent(), 50);
    }

    void alertsComeOneAtATime() {
        FakeAlerts alerts;
        FailureAlerts failures(alerts, [] { return nullptr; });
        const QString error = QStringLiteral("Error");
        const QString file = QStringLiteral("File Upload Failed");
        failures.tell(error, file, QStringLiteral("a: no such file"));
        for (int i = 0; i < 500; ++i)
            failures.tell(error, file, QStringLiteral("b%1: is a folder").arg(i));
        failures.tell(error, QStringLiteral("Clip board Upload Failed"), QStringLiteral("c: gone"));
        failures.tell(QStringLiteral("Other"), QStringLiteral("matter"), {});
        QCOMPARE(alerts.shown().size(), 1);
        QCOMPARE(alerts.shown().at(0).alert.messageText, error);
        QCOMPARE(alerts.shown().at(0).alert.informativeText, file);
        QCOMPARE(alerts.shown().at(0).alert.details, QStringLiteral("a: no such file"));

        QVERIFY(alerts.answer(0));
        QTRY_COMPARE(alerts.shown().size(), 2);
        const Alert joined = alerts.shown().at(1).alert;
        QCOMPARE(joined.informativeText, QString(file + QStringLiteral("\nClip board Upload Failed")));
        QVERIFY(joined.details.startsWith(QStringLiteral("b0: is a folder\nb1: is a folder\n")));
        QVERIFY(joined.details.endsWith(QStringLiteral("b199: is a folder\nand 301 more"))); // 300 of them and c

        QVERIFY(alerts.answer(0));
        QTRY_COMPARE(alerts.shown().size(), 3);
        QCOMPARE(alerts.shown().at(2).alert.messageText, QStringLiteral("Other"));
        QVERIFY(alerts.answer(0));
        QCoreApplication::processEvents();
        failures.tell(error, file, QStringLiteral("d: later")); // none is open: told at once
        QCOMPARE(alerts.shown().size(), 4);
    }

    void burstSharesANotification() {
        tellMany(8);
        QCOMPARE(notifications_->onScreen().size(), 8); // each its own
        tellMany(300);
        QCOMPARE(notifications_->onScreen().size(), 9);
        QCOMPARE(notifications_->posted().size(), 9); // and none is replaced hundreds of times
        QCOMPARE(lastText(), QStringLiteral(" \n 0.txt added"));
        time_->advance(1s);
        QCOMPARE(lastText(), QStringLiteral(" \n 299.txt added\nand 299 more"));
        time_->advance(10s);
        QCOMPARE(notifications_->posted().size(), 10);

        tellMany(1); // the burst is over
        QCOMPARE(notifications_->onScreen().size(), 10);
        QCOMPARE(lastText(), QStringLiteral(" \n 0.txt added"));
        tellMany(10); // the next burst: the former's notification stays
        time_->advance(1s);
        QCOMPARE(notifications_->onScreen().size(), 18);
        QCOMPARE(lastText(), QStringLiteral(" \n 9.txt added\nand 2 more"));
    }

    void noBurstWhenTheyComeSlowly() {
        for (int i = 0; i < 50; ++i) {
            tellMany(1);
            time_->advance(700ms);
        }
        QCOMPARE(notifications_->onScreen().size(), 50);
    }

    void linksOfNotifications() {
        const auto tell = [this](const QString& link) {
            notices_->tell(QStringLiteral("<b>T</b>"), QStringLiteral("a &amp; <i>b</i> added"), link);
            return notifications_->lastIdentifier();
        };
        const QString link = QStringLiteral("https://drive.example/file/d/1/view");
        const quint64 identifier = tell(link);
        const Notification posted = notifications_->posted().last().notification;
        QCOMPARE(posted.title, QStringLiteral("<b>T</b>"));
        QCOMPARE(posted.text, QStringLiteral(" \n a &amp; <i>b</i> added"));
        notifications_->invoke(identifier, QStringLiteral("copy"));
        QCOMPARE(pasteboard_->text(), link);
        QVERIFY(opener_->opened().isEmpty());
        notifications_->click(tell(link));
        notifications_->invoke(tell(link), QStringLiteral("show"));
        QCOMPARE(opener_->opened(), (QList<QUrl>{QUrl(link), QUrl(link)}));

        // What can't be opened is at least copied; other programs' notifications are left alone.
        notifications_->invoke(tell(QStringLiteral("javascript:alert(1)")), QStringLiteral("show"));
        QCOMPARE(opener_->opened().size(), 2);
        QCOMPARE(pasteboard_->text(), QStringLiteral("javascript:alert(1)"));
        Notification foreign;
        foreign.actions = {{QStringLiteral("show"), {}}};
        notifications_->invoke(notifications_->post(foreign), QStringLiteral("show"));
        QCOMPARE(opener_->opened().size(), 2);
        tell({});
        QVERIFY(notifications_->posted().last().notification.actions.isEmpty());
    }

    void lines_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("parent"); // of a prepared query; null: none
        QTest::addColumn<bool>("flags");
        QTest::newRow("plain") << QByteArray("/tmp/a b.txt") << QString() << QString() << false;
        QTest::newRow("not UTF-8, lines, percent")
            << QByteArray("/tmp/\xFF\n%41\"\\") << QString() << QString() << true;
        QTest::newRow("folder") << QByteArray("/a") << QStringLiteral("It's \u00fc\n") << QString() << true;
        QTest::newRow("prepared") << QByteArray("/b") << QString() << QStringLiteral("PARENT") << false;
    }
    void lines() {
        QFETCH(QByteArray, path);
        QFETCH(QString, folder);
        QFETCH(QString, parent);
        QFETCH(bool, flags);
        UploadRequest request{path, QStringLiteral("Type"), folder, flags, flags};
        request.mayBeGone = request.isCapture = flags;
        if (!parent.isNull()) {
            request.query = insertQueryForPath(path, parent);
            request.query->setConvert(true);
        }
        const QByteArray line = lineFromRequest(request);
        QVERIFY(!line.contains('\n'));
        const auto read = requestFromLine(line);
        QVERIFY(read);
        QCOMPARE(read->path, path);
        QCOMPARE(read->typeUpload, request.typeUpload);
        QCOMPARE(read->folderName, folder);
        QVERIFY(read->needToShare == flags && read->removeSource == flags);
        QVERIFY(read->mayBeGone == flags && read->isCapture == flags);
        QCOMPARE(bool(read->query), !parent.isNull());
        if (!read->query)
            return;
        QVERIFY(read->query->convert());
        const auto file = std::dynamic_pointer_cast<GTLDriveFile>(read->query->bodyObject());
        QCOMPARE(file->title(), QStringLiteral("b"));
        QCOMPARE(file->parents()->at(0)->identifier(), parent);
    }

    void linesThatAreNone() {
        for (const char* line : {"", "{}", "[1]", "null", "{\"path\": \"relative\", \"typeUpload\": \"File\"}",
                                 "{\"path\": 7, \"typeUpload\": \"File\"}", "{\"path\": \"/a\"}", "{\"path\": \"/a"})
            QVERIFY2(!requestFromLine(line), line);
    }

    void namesForPeople_data() {
        QTest::addColumn<QString>("shown");
        QTest::newRow("/x/plain \xC3\xBC.txt") << QStringLiteral("plain \u00fc.txt");
        QTest::newRow("/x/two\nlines") << QStringLiteral("two\\x0alines");
        QTest::newRow("/x/not\xFFtext") << QStringLiteral("not\\xfftext");
        QTest::newRow("/x/\xE2\x80\xAEtxt.exe") << QStringLiteral("\\u202etxt.exe"); // turns the direction
        QTest::newRow("/x/\xD9\x85\xDB\x8C\xE2\x80\x8C\xD8\xAE") << QStringLiteral("\u0645\u06cc\u200c\u062e");
        QTest::newRow("/x/\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x92\xBB")
            << QStringLiteral("\U0001F469\u200D\U0001F4BB");
    }
    void namesForPeople() { QTEST(nameForPeople(QTest::currentDataTag()), "shown"); }

private:
    void tellMany(int count) {
        for (int i = 0; i < count; ++i)
            notices_->tell(QStringLiteral("T"), QStringLiteral("%1.txt added").arg(i),
                           QStringLiteral("https://x.example/"));
    }
    QString lastText() const { return notifications_->posted().last().notification.text; }

    // Made anew for each test.
    std::unique_ptr<FakePasteboard> pasteboard_;
    std::unique_ptr<FakeOpener> opener_;
    std::unique_ptr<FakeNotifications> notifications_;
    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<SuccessNotices> notices_;
};

QTEST_GUILESS_MAIN(UploadPartsTest)
#include "tst_uploadparts.moc"
