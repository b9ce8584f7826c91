// One upload and its destination folder against a Drive that answers as it is told, in time that stands still.

#include "app/uploads/transfer/DestinationFolder.h"
#include "app/uploads/transfer/UploadRun.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLDriveReference.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "tests/support/ManualTimeSource.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QTest>

#include <deque>

using namespace quenby;
using namespace std::chrono_literals;

namespace {

// An answer, and what happens on the way to it.
struct Answer {
    GTLObjectPtr object;
    MaybeError error;
    std::function<void()> meanwhile = {};
};

Error refusedConnection() { return URLErrorCode::cannotConnectToHost; }

std::shared_ptr<GTLDriveFile> storedFile(const QByteArray& content) {
    const auto file = GTLDriveFile::object();
    file->setIdentifier(QStringLiteral("ID"));
    file->setTitle(QStringLiteral("a.txt"));
    file->setMd5Checksum(QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex()));
    return file;
}

std::shared_ptr<GTLDriveChildList> childList(const QStringList& identifiers) {
    const auto list = GTLDriveChildList::object();
    const auto items = GTLArray<GTLDriveChildReference>::make();
    for (const QString& identifier : identifiers) {
        const auto child = GTLDriveChildReference::object();
        child->setIdentifier(identifier);
        items->append(child);
    }
    list->setItems(items);
    return list;
}

} // namespace

class UploadRunTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        time_ = std::make_shared<testing::ManualTimeSource>();
        service_ = std::make_shared<GTLServiceDrive>(Endpoints::localDrive(QUrl(QStringLiteral("http://127.0.0.1:1"))));
        service_->settings().testBlock = [this](const GTLServiceTicketPtr& ticket, const GTLTestResponse& respond) {
            const auto query = std::dynamic_pointer_cast<GTLQuery>(ticket->executingQuery());
            asked_.append(query->methodName());
            QVERIFY(!answers_.empty());
            const Answer answer = answers_.front();
            answers_.pop_front();
            if (answer.meanwhile)
                answer.meanwhile();
            respond(answer.object, answer.error);
        };
        asked_.clear();
        answers_.clear();
    }

    void uploads_data() {
        QTest::addColumn<QList<int>>("failures"); // HTTP statuses, 0: refused connection
        QTest::addColumn<QByteArray>("stored");   // what the Drive says it holds; null: no file at all
        QTest::addColumn<bool>("verify");
        QTest::addColumn<QString>("complaint"); // empty: success
        const QByteArray same = "content";
        QTest::newRow("at once") << QList<int>{} << same << true << QString();
        QTest::newRow("after trouble") << QList<int>{0, 503, 429} << same << true << QString();
        QTest::newRow("differs") << QList<int>{} << QByteArray("other") << true
                                 << QStringLiteral("differs from the file");
        QTest::newRow("differs, unverified") << QList<int>{} << QByteArray("other") << false << QString();
        QTest::newRow("nothing stored") << QList<int>{} << QByteArray() << true << QStringLiteral("did not say");
        QTest::newRow("refused for good") << QList<int>{403} << same << true << QStringLiteral("403");
        QTest::newRow("folder is gone") << QList<int>{404} << same << true << QStringLiteral("404");
    }
    void uploads() {
        QFETCH(QList<int>, failures);
        QFETCH(QByteArray, stored);
        QFETCH(bool, verify);
        QFETCH(QString, complaint);
        for (const int status : failures)
            answers_.push_back({nullptr, status ? Error(errorDomain::httpStatus, status) : refusedConnection()});
        answers_.push_back({stored.isNull() ? nullptr : storedFile(stored), {}});
        const auto outcome = upload({{}, verify, 600s});
        QCOMPARE(outcome.ok(), complaint.isEmpty());
        if (outcome)
            QCOMPARE(outcome->identifier, QStringLiteral("ID"));
        else
            QVERIFY2(outcome.error().description().contains(complaint), qPrintable(outcome.error().description()));
    }

    void givesUpWhenPatienceEnds() {
        for (int i = 0; i < 100; ++i)
            answers_.push_back({nullptr, refusedConnection()});
        const auto outcome = upload({{}, true, 60s});
        QVERIFY(!outcome);
        QVERIFY(outcome.error().description().contains(QStringLiteral("gave up after 60 s")));
        QVERIFY2(time_->elapsed() >= 60s && time_->elapsed() <= 100s, "waited as long as it said");
    }

    void tellsOfAFileThatChanged() {
        answers_.push_back({storedFile("content"), {}, [this] { write("content and more"); }});
        const auto outcome = upload({});
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().domain(), uploadErrorDomain);
        QVERIFY(outcome.error().description().contains(QStringLiteral("(ID)"))); // the doubtful copy is named
    }

    void folders_data() {
        QTest::addColumn<QList<int>>(
            "answers"); // 0 refused, 1 one folder, 2 none, 3 made, 4 made but the reply is lost
        QTest::addColumn<QStringList>("asked");
        QTest::addColumn<QString>("identifier"); // empty: failure
        const QString search = QStringLiteral("drive.children.list");
        const QString insert = QStringLiteral("drive.files.insert");
        QTest::newRow("there") << QList<int>{1} << QStringList{search} << QStringLiteral("FOLDER");
        QTest::newRow("made") << QList<int>{2, 3} << QStringList{search, insert} << QStringLiteral("NEW");
        QTest::newRow("made, reply lost")
            << QList<int>{2, 4, 1} << QStringList{search, insert, search} << QStringLiteral("FOLDER");
        QTest::newRow("not made after all")
            << QList<int>{2, 4, 2, 3} << QStringList{search, insert, search, insert} << QStringLiteral("NEW");
        QTest::newRow("search fails") << QList<int>{0, 1} << QStringList{search, search} << QStringLiteral("FOLDER");
        QTest::newRow("not allowed") << QList<int>{2, 5} << QStringList{search, insert} << QString();
    }
    void folders() {
        QFETCH(QList<int>, answers);
        const auto made = GTLDriveFile::object();
        made->setIdentifier(QStringLiteral("NEW"));
        const QList<Answer> known{{nullptr, refusedConnection()},
                                  {childList({QStringLiteral("FOLDER"), QStringLiteral("SECOND")}), {}},
                                  {childList({}), {}},
                                  {made, {}},
                                  {nullptr, Error(URLErrorCode::networkConnectionLost)},
                                  {nullptr, Error(errorDomain::httpStatus, 403)}};
        for (const int answer : answers)
            answers_.push_back(known.at(answer));
        DestinationFolder destination(service_, time_, QStringLiteral("N"), 600s);
        std::optional<Result<QString>> found;
        destination.find(this, [&found](const Result<QString>& identifier) { found = identifier; });
        waitFor([&found] { return found.has_value(); });
        QTEST(found->valueOr({}), "identifier");
        QTEST(asked_, "asked");
    }

private:
    Result<UploadRun::Outcome> upload(const UploadRun::Settings& settings) {
        write("content");
        UploadRun run(service_, time_, *SourceFile::open(path()), settings);
        std::optional<Result<UploadRun::Outcome>> outcome;
        run.start(this, [&outcome](const Result<UploadRun::Outcome>& result) { outcome = result; });
        waitFor([&outcome] { return outcome.has_value(); });
        return outcome.value_or(Result<UploadRun::Outcome>(Error(errorDomain::posix, 0)));
    }

    // Lets time pass whenever everybody waits for it.
    void waitFor(const std::function<bool()>& isDone) {
        const QDeadlineTimer deadline(30s);
        while (!isDone() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
            if (!isDone() && time_->pendingTimers() > 0)
                time_->advance(1s);
        }
        QVERIFY(isDone());
    }

    QByteArray path() const { return QFile::encodeName(folder_->filePath(QStringLiteral("a.txt"))); }
    void write(const QByteArray& content) {
        QFile file(QFile::decodeName(path()));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::shared_ptr<testing::ManualTimeSource> time_;
    std::shared_ptr<GTLServiceDrive> service_;
    std::deque<Answer> answers_;
    QStringList asked_;
};

QTEST_GUILESS_MAIN(UploadRunTest)
#include "tst_uploadrun.moc"
