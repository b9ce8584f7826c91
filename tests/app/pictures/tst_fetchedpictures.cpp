// The rows' pictures over real sockets: what comes, what is kept, and what a hostile network can't do.
#include "app/agent/CacheFolderNames.h"
#include "app/pictures/FetchedPictures.h"
#include "app/pictures/PictureAddress.h"
#include "http/GTMHTTPFetcherService.h"
#include "tests/platform/fakes/FakeCacheFolders.h"
#include "tests/support/ManualTimeSource.h"
#include "tests/support/ScriptedServer.h"

#include <QBuffer>
#include <QDirIterator>
#include <QImageWriter>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QtEndian>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

QByteArray encoded(const QImage& image, const char* format = "png") {
    QBuffer buffer;
    if (!QImageWriter(&buffer, format).write(image))
        qFatal("no %s can be written", format);
    return buffer.data();
}

QImage coloured(QSize size, const QColor& colour) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

QByteArray withPngChunk(QByteArray png, const QByteArray& name, const QByteArray& data) {
    constexpr qsizetype afterHeader = 8 + 25;
    QByteArray length(4, '\0');
    qToBigEndian(static_cast<quint32>(data.size()), length.data());
    return png.insert(afterHeader, length + name + data + "crc.");
}

class TokenAdder final : public Authorizer {
public:
    bool isAuthorizedRequest(const URLRequest& request) const override {
        return request.headers.contains("Authorization");
    }
    CompletionTicket authorizeRequest(const URLRequest& request, QObject* context, AuthorizeHandler handler) override {
        URLRequest authorized = request;
        authorized.headers.set("Authorization", "Bearer secret");
        const CompletionGate<URLRequest, MaybeError> gate(context, std::move(handler));
        gate.deliver(authorized, MaybeError());
        return gate.ticket();
    }
    bool primeForRefresh(const URLRequest&) override { return false; }
    QString userEmail() const override { return {}; }
};

// The pictures as the rows see them, between two servers and a cache folder.
struct Desk {
    ScriptedServer drive;
    ScriptedServer stranger;
    FakeCacheFolders folders;
    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    std::shared_ptr<GTMHTTPFetcherService> service = GTMHTTPFetcherService::create(time);
    std::unique_ptr<FetchedPictures> pictures;
    QStringList arrived;               // identifiers
    QHash<QByteArray, Answer> answers; // by path; others are 404

    Desk() {
        service->setAllowLocalhostRequest(true);
        service->setAuthorizer(std::make_shared<TokenAdder>());
        const auto answer = [this](const ReceivedRequest& request) {
            return answers.value(request.target, Answer::with(404, encoded(coloured({9, 9}, Qt::black))));
        };
        drive.setHandler(answer);
        stranger.setHandler(answer);
        answers["/icon"] = Answer::with(200, encoded(coloured({16, 16}, Qt::blue)));
        answers["/thumbnail"] = Answer::with(200, encoded(coloured({400, 200}, Qt::red), "jpeg"));
        restart();
    }

    // As after a start of the program: nothing is in memory.
    void restart() {
        pictures = std::make_unique<FetchedPictures>(service, Endpoints::localDrive(drive.url(QString())), folders);
        QObject::connect(pictures.get(), &RowPictures::arrived,
                         [this](const QString& identifier) { arrived.append(identifier); });
    }

    ChangeRecord record(const QString& identifier, const QString& thumbnail = QStringLiteral("/thumbnail"),
                        const QString& icon = QStringLiteral("/icon")) const {
        ChangeRecord made;
        made.identifier = identifier;
        made.iconLink = drive.url(icon).toString();
        made.thumbnailLink = drive.url(thumbnail).toString();
        return made;
    }
    // The icon stands in before, if it comes first.
    bool hasThumbnail(const ChangeRecord& record) const {
        return pictures->picture(record).size() == QSize(210, 105) && arrived.contains(record.identifier);
    }
    size_t requests() const { return drive.requests().size() + stranger.requests().size(); }
    bool isQuiet() const { return service->numberOfFetchers() == 0; }

    // Every file below the cache's own folder and beside it.
    QStringList files() const {
        QStringList found;
        QDirIterator entries(folders.path(QString()), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (entries.hasNext())
            found.append(entries.next());
        return found;
    }
};

} // namespace

class FetchedPicturesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void comesFromTheNetworkOnceAndThenFromTheCache() {
        Desk desk;
        const ChangeRecord record = desk.record(QStringLiteral("file-1"));
        desk.pictures->want(record);
        desk.pictures->want(record);
        QVERIFY(desk.pictures->picture(record).isNull());
        QTRY_VERIFY(desk.hasThumbnail(record) && desk.isQuiet());
        QCOMPARE(desk.requests(), 2);
        QTRY_COMPARE(desk.files(),
                     QStringList{desk.folders.path(cacheFolderName::images) + QStringLiteral("/file-1.png")});

        desk.pictures->want(record);
        desk.restart();
        desk.pictures->want(record);
        QTRY_VERIFY(desk.hasThumbnail(record));
        QVERIFY(desk.isQuiet());
        QCOMPARE(desk.requests(), 2);
        const QImage cached = desk.pictures->picture(record);
        QVERIFY(cached.pixelColor(100, 50).red() > 240 && cached.pixelColor(100, 50).green() < 15);

        // A deleted file's picture is always fetched; a damaged file in the cache counts as none.
        ChangeRecord deleted = record;
        deleted.status = ChangeRecord::Status::deleted;
        desk.pictures->want(deleted);
        QTRY_VERIFY(desk.hasThumbnail(deleted) && desk.requests() == 4 && desk.isQuiet());
        desk.restart();
        QFile file(desk.files().constFirst());
        QVERIFY(file.resize(file.size() / 2));
        desk.pictures->want(record);
        QTRY_COMPARE(desk.requests(), 6);
    }

    void oneIconServesManyRowsAndStaysWhereThereIsNoThumbnail() {
        Desk desk;
        const QString missing = QStringLiteral("/not-ready-yet");
        const ChangeRecord one = desk.record(QStringLiteral("one"), missing);
        const ChangeRecord two = desk.record(QStringLiteral("two"), missing);
        desk.pictures->want(one);
        desk.pictures->want(two);
        QTRY_COMPARE(desk.arrived, (QStringList{one.identifier, two.identifier}));
        QTRY_VERIFY(desk.isQuiet() && desk.requests() == 3);
        QCOMPARE(desk.pictures->picture(two).size(), QSize(16, 16));
        QCOMPARE(desk.files(), QStringList());
        // The thumbnail alone is asked for again, as soon as the end of the first attempt is known.
        desk.answers[missing.toLatin1()] = desk.answers["/thumbnail"];
        QTRY_VERIFY((desk.pictures->want(two), desk.hasThumbnail(two)));
        QCOMPARE(std::count_if(desk.drive.requests().begin(), desk.drive.requests().end(),
                               [](const ReceivedRequest& request) { return request.target == "/icon"; }),
                 1);
    }

    void iconNeverTakesTheThumbnailsPlace() {
        Desk desk;
        QTcpServer slow;
        QVERIFY(slow.listen(QHostAddress::LocalHost));
        ChangeRecord record = desk.record(QStringLiteral("one"));
        record.iconLink = QStringLiteral("http://127.0.0.1:%1/icon").arg(slow.serverPort());
        ChangeRecord alike = desk.record(QStringLiteral("two"), QStringLiteral("/no"));
        alike.iconLink = record.iconLink;
        desk.pictures->want(record);
        desk.pictures->want(alike);
        QTRY_VERIFY(desk.hasThumbnail(record) && slow.hasPendingConnections());
        slow.nextPendingConnection()->write(desk.answers["/icon"].bytes);
        QTRY_COMPARE(desk.pictures->picture(alike).size(), QSize(16, 16)); // it came for both
        QVERIFY(desk.hasThumbnail(record));
        QCOMPARE(desk.arrived.count(record.identifier), 1);
    }

    // None of these may arrive; the picture that is asked for afterwards does.
    void ignores_data() {
        QTest::addColumn<Answer>("answer");
        const QImage picture = coloured({120, 80}, Qt::green);
        const auto half = [](const QByteArray& bytes) { return Answer::with(200, bytes.first(bytes.size() / 2)); };
        QTest::newRow("HTML") << Answer::with(200, "<!DOCTYPE html><title>Sign in</title>");
        QTest::newRow("nothing") << Answer::with(200);
        QTest::newRow("an error that looks nice") << Answer::with(403, encoded(picture));
        QTest::newRow("SVG") << Answer::with(200, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\"/>");
        for (const char* format : {"png", "jpeg", "bmp", "tiff", "webp"}) {
            if (QImageWriter::supportedImageFormats().contains(format))
                QTest::newRow(format) << half(encoded(picture, format));
        }
        QTest::newRow("a head alone") << Answer::with(200, "\x89PNG\r\n\x1a\n");
        QTest::newRow("GIF") << Answer::with(200, QByteArray::fromHex("474946383961010001008000000000000000002c0000"));
        QImage huge(20'000, 20'000, QImage::Format_Mono);
        huge.fill(0);
        QTest::newRow("too many pixels") << Answer::with(200, encoded(huge));
        QTest::newRow("endless") << Answer::raw("HTTP/1.1 200 OK\r\n\r\n" + encoded(picture) +
                                                QByteArray(5'000'000, ' '));
        QTest::newRow("long") << Answer::with(200, encoded(picture) + QByteArray(5'000'000, ' '));
    }
    void ignores() {
        QFETCH(Answer, answer);
        Desk desk;
        desk.answers["/hostile"] = answer;
        desk.pictures->want(desk.record(QStringLiteral("hostile"), QStringLiteral("/hostile"), QStringLiteral("/no")));
        QTRY_VERIFY(desk.requests() == 2 && desk.isQuiet());
        const ChangeRecord honest = desk.record(QStringLiteral("honest"));
        desk.pictures->want(honest);
        QTRY_VERIFY(desk.hasThumbnail(honest));
        QVERIFY(!desk.arrived.contains(QStringLiteral("hostile")));
        QTRY_COMPARE(desk.files().size(), 1);
    }

    void scalesDown_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QSize>("size");
        QTest::newRow("20 000 wide") << encoded(coloured({20'000, 100}, Qt::red)) << QSize(210, 1);
        QTest::newRow("photograph") << encoded(coloured({4000, 3000}, Qt::red), "jpeg") << QSize(200, 150);
        QTest::newRow("small") << encoded(coloured({20, 30}, Qt::red), "bmp") << QSize(20, 30);
        QTest::newRow("GIF") << QByteArray::fromHex(
                                    "474946383961010001008000000000000000002c00000000010001000002024401003b")
                             << QSize(1, 1);
        // Skipped rather than unpacked.
        QTest::newRow("texts that don't unpack")
            << withPngChunk(encoded(coloured({20, 30}, Qt::red)), "zTXt", "Comment\0\0garbage") << QSize(20, 30);
    }
    void scalesDown() {
        QFETCH(QByteArray, bytes);
        QFETCH(QSize, size);
        Desk desk;
        desk.answers["/picture"] = Answer::with(200, bytes);
        const ChangeRecord record =
            desk.record(QStringLiteral("one"), QStringLiteral("/picture"), QStringLiteral("/no"));
        desk.pictures->want(record);
        QTRY_COMPARE(desk.pictures->picture(record).size(), size);
    }

    void givesUpWhatIsSlow() {
        Desk desk;
        desk.answers["/slow"] = Answer::raw("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n\x89PNG");
        desk.pictures->want(desk.record(QStringLiteral("slow"), QStringLiteral("/slow"), QStringLiteral("/slow")));
        QTRY_COMPARE(desk.requests(), 2);
        QCOMPARE(desk.drive.openConnectionCount(), 2);
        desk.time->advance(29s);
        QVERIFY(!desk.isQuiet());
        desk.time->advance(1s);
        QVERIFY(desk.isQuiet());
        QTRY_COMPARE(desk.drive.openConnectionCount(), 0);
    }

    void clearGivesUpWhatIsOnTheWay() {
        Desk desk;
        desk.answers["/icon"] = Answer::nothing(Answer::Then::keepOpen);
        const ChangeRecord record = desk.record(QStringLiteral("one"));
        desk.pictures->want(record);
        QTRY_COMPARE(desk.arrived.size(), 1);
        QCOMPARE(desk.drive.openConnectionCount(), 2);
        desk.pictures->clear();
        QVERIFY(desk.isQuiet());
        QTRY_COMPARE(desk.drive.openConnectionCount(), 1); // the thumbnail's, which may be used again
        QVERIFY(desk.pictures->picture(record).isNull());

        // Somebody else signs in; what was wanted before has left nothing behind.
        desk.folders.remove(cacheFolderName::images);
        const size_t before = desk.requests();
        desk.pictures->want(record);
        QTRY_COMPARE(desk.requests(), before + 2);
        QTRY_VERIFY(desk.hasThumbnail(record));
    }

    void identifiersNeverLeaveTheFolder_data() {
        QTest::addColumn<QString>("identifier");
        QTest::newRow("up") << QStringLiteral("../../escaped");
        QTest::newRow("dots") << QStringLiteral("..");
        QTest::newRow("absolute") << QStringLiteral("/tmp/escaped");
        QTest::newRow("below") << QStringLiteral("a/b");
        QTest::newRow("long") << QString(5000, QLatin1Char('a'));
        QTest::newRow("null") << QString(QChar(u'\0')) + QStringLiteral("a");
    }
    void identifiersNeverLeaveTheFolder() {
        QFETCH(QString, identifier);
        Desk desk;
        const ChangeRecord record = desk.record(identifier);
        desk.pictures->want(record);
        desk.pictures->want(desk.record(identifier + QLatin1Char('-')));
        QTRY_COMPARE(desk.files().size(), 2);
        QTRY_VERIFY(desk.isQuiet());
        const size_t before = desk.requests();
        for (const QString& file : desk.files())
            QCOMPARE(QFileInfo(file).absolutePath(), desk.folders.path(cacheFolderName::images));
        desk.restart();
        desk.pictures->want(record);
        QTRY_VERIFY(desk.hasThumbnail(record));
        QCOMPARE(desk.requests(), before);
    }

    void tokenGoesToTheDriveAlone() {
        Desk desk;
        ChangeRecord record = desk.record(QStringLiteral("one"));
        record.iconLink = desk.stranger.url(QStringLiteral("/icon")).toString();
        desk.pictures->want(record);
        QTRY_COMPARE(desk.requests(), 2);
        QCOMPARE(desk.drive.requests().at(0).header("Authorization"), QByteArray("Bearer secret"));
        QCOMPARE(desk.stranger.requests().at(0).header("Authorization"), QByteArray());
    }

    void addresses_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<PictureAddress>("expected");
        const auto row = [](const char* address, PictureAddress expected) {
            QTest::newRow(address) << QString::fromLatin1(address) << expected;
        };
        row("https://www.googleapis.com/drive/v2/files/1", PictureAddress::ofTheDrive);
        row("https://WWW.googleapis.com:443/", PictureAddress::ofTheDrive);
        row("https://www.googleapis.com:444/", PictureAddress::foreign);
        row("https://www.googleapis.com.example.com/", PictureAddress::foreign);
        row("https://www.googleapis.com@example.com/", PictureAddress::refused);
        row("http://www.googleapis.com/", PictureAddress::refused);
        row("http://127.0.0.1/", PictureAddress::refused);
        row("file:///etc/passwd", PictureAddress::refused);
        row("data:image/png;base64,AA", PictureAddress::refused);
        row("//www.googleapis.com/", PictureAddress::refused);
        row("", PictureAddress::refused);
    }
    void addresses() {
        QFETCH(QString, address);
        QTEST(pictureAddress(QUrl(address, QUrl::StrictMode), Endpoints::provider()), "expected");
    }
};

QTEST_GUILESS_MAIN(FetchedPicturesTest)
#include "tst_fetchedpictures.moc"
