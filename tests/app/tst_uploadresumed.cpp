// Uploads that are taken up again in another run, against the real local Drive.

#include "app/uploads/transfer/GeneratedIdentifiers.h"
#include "driveapi/GTLQueryDrive.h"
#include "tests/faults/FaultBench.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;

class UploadResumedTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        QVERIFY2(bench_.prepare(), bench_.drive().log().constData());
        bench_.service().settings().serviceUploadChunkSize = defaultServiceUploadChunkSize;
        settings_ = {};
        settings_.identifiers = std::make_shared<GeneratedIdentifiers>(service());
        settings_.keep = [this](const UploadSession& session, const std::function<void()>& kept) {
            kept_ = session;
            kept();
        };
        kept_ = {};
        outcome_.reset();
    }
    void cleanup() { run_.reset(); }
    void cleanupTestCase() { QCOMPARE(bench_.leakedSecrets().join(QLatin1Char('\n')), QString()); }

    void pausedInTheMiddle_data() { roads(); }
    // A pause destroys the run; what the Drive holds is not sent again.
    void pausedInTheMiddle() {
        takeRoad();
        const qint64 before = bench_.duplicateBytes();
        constexpr qint64 inFlight = 1'000'000;
        const QByteArray content = sampleBytes(6'000'000);
        settings_.maxSendSpeed = 4'000'000;
        start(name(), content);
        QTRY_VERIFY(sent_ > 2'000'000);
        run_.reset();
        QVERIFY(!outcome_ && kept_.hasValidLocation(bench_.timeSource()->now()));

        settings_.session = kept_;
        settings_.maxSendSpeed = 0;
        start(name(), content);
        QCOMPARE(failure(), QString());
        QVERIFY2(kept_.held > inFlight && bench_.duplicateBytes() - before < inFlight, QByteArray::number(kept_.held));
        QCOMPARE(bench_.copiesOf(QString::fromLatin1(name())), QStringList{md5Of(content)});
    }

    // The file is stored, and nobody hears of it: neither the client nor, after a while, the Drive knows the upload.
    void newsOfTheEndLost_data() { roads(); }
    void newsOfTheEndLost() {
        takeRoad();
        QVERIFY(bench_.drive().orderFaults(R"([
            {"match": {"uploadPut": true}, "action": {"drop": {"afterResponseBytes": 0}}},
            {"match": {"uploadPut": true}, "action": {"loseSession": true}}])"));
        start(name(), "news");
        QCOMPARE(failure(), QString());
        QCOMPARE((*outcome_)->identifier, kept_.identifier);
        QCOMPARE(bench_.copiesOf(QString::fromLatin1(name())), QStringList{md5Of("news")});
    }

    // Another run with the same identifier, long after the file has arrived.
    void thereAlready_data() { roads(); }
    void thereAlready() {
        takeRoad();
        start(name(), "same");
        QCOMPARE(failure(), QString());
        const QString identifier = (*outcome_)->identifier;
        QVERIFY(bench_.call(GTLQueryDrive::queryForFilesTrashWithFileId(identifier)).ok());
        settings_.session.identifier = identifier;
        start(name(), "same");
        QCOMPARE(failure(), QString());
        QCOMPARE((*outcome_)->identifier, identifier);
        start(name(), "else");
        QVERIFY2(failure().contains(QStringLiteral("made from another state of the file")), qPrintable(failure()));
        start(name(), "longer");
        QVERIFY2(failure().contains(QStringLiteral("4 bytes instead of 6")), qPrintable(failure()));
        QCOMPARE(bench_.copiesOf(QString::fromLatin1(name())), QStringList{md5Of("same")});
    }

private:
    std::shared_ptr<GTLServiceDrive> service() { return {std::shared_ptr<void>(), &bench_.service()}; }

    static void roads() {
        QTest::addColumn<bool>("isREST");
        QTest::newRow("calls") << false;
        QTest::newRow("resources") << true;
    }
    void takeRoad() {
        QFETCH(bool, isREST);
        bench_.service().settings().road = isREST ? APIRoad::rest : APIRoad::rpc;
    }
    // Of this row's files.
    static QByteArray name() { return QByteArray(QTest::currentTestFunction()) + ' ' + QTest::currentDataTag(); }

    // When it has ended; empty: it succeeded.
    QString failure() {
        const auto isOver = [this] { return outcome_.has_value(); };
        if (!QTest::qWaitFor(isOver, 60000))
            return QStringLiteral("hangs");
        return outcome_->ok() ? QString() : outcome_->error().description();
    }

    void start(const QByteArray& name, const QByteArray& content) {
        const auto source = SourceFile::open(bench_.makeFile(name, content));
        QVERIFY(source);
        sent_ = 0;
        outcome_.reset();
        run_ = std::make_unique<UploadRun>(service(), bench_.timeSource(), *source, settings_);
        connect(run_.get(), &UploadRun::progressed, this, [this](qint64 sent) { sent_ = sent; });
        run_->start(this, [this](const Result<UploadRun::Outcome>& outcome) { outcome_ = outcome; });
    }

    FaultBench bench_;
    UploadRun::Settings settings_;
    UploadSession kept_;
    std::unique_ptr<UploadRun> run_;
    std::optional<Result<UploadRun::Outcome>> outcome_;
    qint64 sent_ = 0;
};

QTEST_GUILESS_MAIN(UploadResumedTest)
#include "tst_uploadresumed.moc"
