// What the tests of recordings see with must itself see what is wrong.

#include "tests/support/MovieFrames.h"
#include "tests/support/MovingPattern.h"

#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby::testing;

namespace {

constexpr QSize desktop(2560, 900); // two screens side by side

QImage piece(const QRect& place, int number) { return patternPicture(desktop, number).copy(place); }

// Half of the one and half of the other, pixel by pixel: what a recorder makes that mixes pictures.
QImage blended(const QImage& one, const QImage& other) {
    QImage both = one;
    QPainter painter(&both);
    painter.setOpacity(0.5);
    painter.drawImage(0, 0, other);
    return both;
}

// Encoded as recordings are, at 30 frames a second. An empty name when that fails.
QString movieOf(const QTemporaryDir& folder, const std::vector<QImage>& frames) {
    QProcess encoder;
    const QSize size = frames.front().size();
    const QString path = folder.filePath(QStringLiteral("made.mov"));
    const QString shape = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
    encoder.start(
        QStringLiteral("ffmpeg"),
        QStringLiteral("-v error -f rawvideo -pix_fmt bgra -s %1 -r 30 -i pipe:0 -c:v libx264 -preset veryfast "
                       "-crf 23 -pix_fmt yuv420p -y")
                .arg(shape)
                .split(QLatin1Char(' '))
            << path);
    for (const QImage& frame : frames)
        encoder.write(reinterpret_cast<const char*>(frame.constBits()), frame.sizeInBytes());
    encoder.closeWriteChannel();
    return encoder.waitForFinished() && encoder.exitCode() == 0 ? path : QString();
}

} // namespace

class MovieFramesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aPieceTellsItsPlaceToThePixel_data() {
        QTest::addColumn<QRect>("place");
        QTest::newRow("whole screen") << QRect(0, 0, 1280, 800);
        QTest::newRow("second screen") << QRect(1280, 0, 1280, 900);
        QTest::newRow("odd") << QRect(101, 73, 641, 401);
        QTest::newRow("one to the right") << QRect(102, 73, 641, 401);
        QTest::newRow("one down") << QRect(101, 74, 641, 401);
        QTest::newRow("least, before a tile's edge") << QRect(QPoint(1 + 80, 1 + 72), leastPatternPiece);
        QTest::newRow("least, behind it") << QRect(QPoint(79, 71), leastPatternPiece);
    }
    void aPieceTellsItsPlaceToThePixel() {
        QFETCH(QRect, place);
        for (const int number : {0, 1, 12'345, patternNumbers - 1}) {
            const auto reading = readPattern(piece(place, number));
            QVERIFY(reading);
            QCOMPARE(reading->number, number);
            QCOMPARE(reading->offset, place.topLeft());
            QCOMPARE(reading->readTiles, reading->wholeTiles);
            QCOMPARE(reading->contradictingTiles, 0);
        }
    }

    void whatIsDamagedIsNotTakenForWhole() {
        const QRect place(101, 73, 641, 401);
        const QImage whole = piece(place, 500);
        QVERIFY(!readPattern(QImage(place.size(), QImage::Format_RGB32)));
        QVERIFY(!readPattern(blended(whole, piece(place, 501))));
        QVERIFY(!readPattern(blended(whole, piece(place.translated(1, 0), 500))));

        QImage covered = whole;
        QPainter(&covered).fillRect(200, 160, 12, 18, Qt::darkGray); // as a pointer does
        const auto aroundIt = readPattern(covered);
        QVERIFY(aroundIt);
        QCOMPARE(aroundIt->number, 500);
        QVERIFY(aroundIt->readTiles < aroundIt->wholeTiles);
        QCOMPARE(aroundIt->contradictingTiles, 0);

        QImage torn = whole;
        QPainter(&torn).drawImage(0, 300, piece(place, 501).copy(0, 300, 641, 101));
        QVERIFY(readPattern(torn)->contradictingTiles > 0);

        const auto stretched = readPattern(whole.scaled(643, 401));
        QVERIFY(!stretched || stretched->readTiles < stretched->wholeTiles);
    }

    void aMovieTellsRepeatsAndGaps() {
        const QTemporaryDir folder;
        const QRect place(101, 73, 400, 302);
        const std::vector<int> numbers{7, 8, 9, 9, 9, 10, 14, 13};
        std::vector<QImage> frames;
        for (const int number : numbers)
            frames.push_back(piece(place, number));
        const QString path = movieOf(folder, frames);
        QVERIFY(!path.isEmpty());

        const auto facts = movieFacts(path);
        QVERIFY(facts);
        QVERIFY(facts->containers.contains(QStringLiteral("mov")));
        QCOMPARE(facts->streams, 1);
        QCOMPARE(facts->codec, QStringLiteral("h264"));
        QCOMPARE(facts->pixelFormat, QStringLiteral("yuv420p"));
        QCOMPARE(facts->size, place.size());
        QCOMPARE(facts->frameRate, QStringLiteral("30/1"));
        QCOMPARE(facts->frameCount(), 8);
        QVERIFY(qAbs(facts->duration - 8 / 30.0) < 0.001);
        QVERIFY(qAbs(facts->leastStep() - 1 / 30.0) < 0.001 && qAbs(facts->greatestStep() - 1 / 30.0) < 0.001);

        MovieFrames movie(path);
        std::vector<int> found;
        for (QImage frame = movie.next(); !frame.isNull(); frame = movie.next()) {
            const auto reading = readPattern(frame);
            QVERIFY(reading);
            QCOMPARE(reading->offset, place.topLeft());
            QCOMPARE(reading->readTiles, reading->wholeTiles);
            found.push_back(reading->number);
        }
        QCOMPARE(movie.error(), QString());
        QCOMPARE(found, numbers);
    }

    void aBrokenMovieIsNotReadInSilence() {
        const QTemporaryDir folder;
        std::vector<QImage> frames;
        for (int number = 0; number < 30; ++number)
            frames.push_back(piece({0, 0, 640, 400}, number));
        const QString path = movieOf(folder, frames);
        QVERIFY(!path.isEmpty());
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const qint64 damaged = file.size() / 2;
        QVERIFY(file.seek(damaged));
        file.write(QByteArray(2000, 'x'));
        QVERIFY(file.flush());
        MovieFrames movie(path);
        while (!movie.next().isNull())
            continue;
        QVERIFY(!movie.error().isEmpty());

        QVERIFY(file.resize(damaged)); // without the table of its frames, which is at the end
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^ffprobe: ")));
        QVERIFY(!movieFacts(path));
    }
};

QTEST_GUILESS_MAIN(MovieFramesTest)
#include "tst_movieframes.moc"
