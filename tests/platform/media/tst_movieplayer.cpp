// Movies are read, shown and played; what is no movie is told in a sentence.
#include "platform/linux/media/engine/GstHandles.h"
#include "platform/linux/media/engine/player/GstMoviePlayer.h"
#include "platform/linux/media/engine/player/MovieFactsReader.h"
#include "tests/platform/media/MadeMovie.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <optional>

#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

constexpr int patience = 20'000; // ms

// What is seen in the middle of the view, roughly: the encoding changes colours a little.
QByteArray colourAt(QWidget& view, const QPoint& place) {
    const QColor colour = view.grab().toImage().pixelColor(place);
    const auto is = [](int value, bool isStrong) { return isStrong ? value > 100 : value < 60; };
    for (const auto& [name, red, green, blue] :
         {std::tuple("red", true, false, false), std::tuple("green", false, true, false),
          std::tuple("blue", false, false, true), std::tuple("black", false, false, false)}) {
        if (is(colour.red(), red) && is(colour.green(), green) && is(colour.blue(), blue))
            return name;
    }
    return colour.name().toLatin1();
}
QByteArray colourOf(QWidget& view) { return colourAt(view, view.rect().center()); }

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class tst_movieplayer : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;

    QByteArray path(const QString& name) const { return QFile::encodeName(folder_.filePath(name)); }
    std::optional<MovieFacts> factsOf(const QByteArray& movie) {
        std::optional<MovieFacts> read;
        readMovieFacts(movie, this, [&read](const MovieFacts& facts) { read = facts; });
        return QTest::qWaitFor([&read] { return read.has_value(); }, patience) ? read : std::nullopt;
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(makeMovie({}, path(QStringLiteral("made.mov"))));
        QVERIFY(
            QFile::rename(folder_.filePath(QStringLiteral("made.mov")), folder_.filePath(QStringLiteral("three.mov"))));
        QVERIFY(QFile::copy(folder_.filePath(QStringLiteral("three.mov")),
                            folder_.filePath(QStringLiteral("thr\u00e9e 50%#?.mov"))));
        QVERIFY(makeMovie({.size = {16, 16}, .colours = {"green"}}, path(QStringLiteral("tiny.mov"))));
        QVERIFY(makeMovie({.layout = "faststart=true"}, path(QStringLiteral("whole.mov"))));
        const QByteArray whole = contentOf(folder_.filePath(QStringLiteral("whole.mov")));
        write(folder_.filePath(QStringLiteral("cut.mov")), whole.first(whole.size() * 2 / 3));
        const QByteArray three = contentOf(folder_.filePath(QStringLiteral("three.mov")));
        write(folder_.filePath(QStringLiteral("turned.mov")), turnedMovie(three));
        write(folder_.filePath(QStringLiteral("headless.mov")), three.first(three.size() / 2));
        write(folder_.filePath(QStringLiteral("text.mov")), "This is no movie, whatever it is called.");
        write(folder_.filePath(QStringLiteral("list.mov")), "#EXTM3U\n#EXT-X-VERSION:3\nhttp://127.0.0.1:9/x.ts\n");
        write(folder_.filePath(QStringLiteral("noise.mov")), QByteArray("\0\0\1\0moov", 8) + QByteArray(5000, '\xa5'));
        write(folder_.filePath(QStringLiteral("empty.mov")), {});
    }

    void factsAreReadOnAnotherThread_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("seconds");
        QTest::newRow("movie") << QStringLiteral("thr\u00e9e 50%#?.mov") << QSize(320, 200) << 3.0;
        QTest::newRow("tiny") << QStringLiteral("tiny.mov") << QSize(16, 16) << 1.0;
        QTest::newRow("turned") << QStringLiteral("turned.mov") << QSize(200, 320) << 3.0;
        for (const char* name : {"headless", "text", "list", "noise", "empty", "vanished"})
            QTest::newRow(name) << QString::fromLatin1(name) + QStringLiteral(".mov") << QSize(0, 0) << 0.0;
    }
    void factsAreReadOnAnotherThread() {
        QFETCH(QString, name);
        QFETCH(QSize, size);
        QFETCH(double, seconds);
        const auto facts = factsOf(path(name));
        QVERIFY(facts);
        QCOMPARE(facts->naturalSize, size);
        QVERIFY2(qAbs(facts->seconds - seconds) < 0.1, qPrintable(QString::number(facts->seconds)));
    }

    void aNameNeedNotBeText() {
        const QByteArray strange = path(QStringLiteral("odd ")) + "\xff\xe9 #.mov";
        QCOMPARE(::link(path(QStringLiteral("three.mov")).constData(), strange.constData()), 0);
        const auto facts = factsOf(strange);
        QVERIFY(facts);
        QCOMPARE(facts->naturalSize, QSize(320, 200));
        GstMoviePlayer player;
        player.view()->resize(320, 200);
        player.open(strange);
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "red", patience);
        QCOMPARE(::unlink(strange.constData()), 0); // nobody else's clearing up finds it
    }

    void theFirstPictureIsShownAndWaits() {
        GstMoviePlayer player;
        player.view()->resize(400, 200);
        QSignalSpy lengths(&player, &MoviePlayer::durationChanged);
        player.open(path(QStringLiteral("thr\u00e9e 50%#?.mov")));
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "red", patience);
        QTRY_COMPARE_WITH_TIMEOUT(lengths.size(), 1, patience);
        QVERIFY(!player.isPlaying());
        QVERIFY(qAbs((player.duration() - 3s).count()) < 100);
        QCOMPARE(player.position(), 0ms);
        // Letterboxed: 320 of 400 pixels in a row are the movie's.
        QCOMPARE(colourAt(*player.view(), {20, 100}), "black");
        QCOMPARE(colourAt(*player.view(), {60, 100}), "red");
        QCOMPARE(colourAt(*player.view(), {380, 100}), "black");
        player.view()->resize(100, 300);
        QCOMPARE(colourAt(*player.view(), {50, 20}), "black");
        QCOMPARE(colourAt(*player.view(), {2, 150}), "red");
    }

    void turnedAndTinyMoviesFillTheView() {
        GstMoviePlayer player;
        player.view()->resize(400, 320);
        player.open(path(QStringLiteral("turned.mov")));
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "red", patience);
        QCOMPARE(colourAt(*player.view(), {90, 10}), "black");
        QCOMPARE(colourAt(*player.view(), {110, 10}), "red");
        player.open(path(QStringLiteral("tiny.mov")));
        QTRY_COMPARE_WITH_TIMEOUT(colourAt(*player.view(), {50, 10}), "green", patience);
    }

    void soundIsPlayedWhereThereIsAny() {
        QVERIFY(makeMovie({.hasSound = true}, path(QStringLiteral("loud.mov"))));
        GstMoviePlayer player;
        player.view()->resize(320, 200);
        player.setVolume(0.1);
        player.open(path(QStringLiteral("three.mov")));
        QTRY_VERIFY_WITH_TIMEOUT(player.duration() > 0ms, patience);
        QVERIFY(!player.hasSound());
        QSignalSpy failures(&player, &MoviePlayer::failed);
        player.open(path(QStringLiteral("loud.mov")));
        QTRY_VERIFY_WITH_TIMEOUT(player.duration() > 0ms, patience);
        QVERIFY(player.hasSound());
        player.setVolume(0);
        player.setPosition(2s);
        player.play();
        QTRY_VERIFY_WITH_TIMEOUT(!player.isPlaying(), patience);
        QCOMPARE(colourOf(*player.view()), "blue");
        QVERIFY(failures.isEmpty());
    }

    // Also when positions are asked for faster than any movie can follow.
    void aSearchShowsTheLastPositionThatWasAskedFor() {
        GstMoviePlayer player;
        player.view()->resize(320, 200);
        player.open(path(QStringLiteral("three.mov")));
        player.setPosition(1500ms); // before anything is known of the movie
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "green", patience);
        QCOMPARE(player.position(), 1500ms);
        for (auto position = 0ms; position <= 2500ms; position += 20ms)
            player.setPosition(position);
        QCOMPARE(player.position(), 2500ms);
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "blue", patience);
        player.setPosition(950ms);
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "red", patience);
        player.setPosition(1h);
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "blue", patience);
        QVERIFY(player.position() <= player.duration());
        QVERIFY(!player.isPlaying());
    }

    void itPlaysToItsLastPictureAndThenAnew() {
        GstMoviePlayer player;
        player.view()->resize(320, 200);
        QSignalSpy switches(&player, &MoviePlayer::playingChanged);
        QSignalSpy moves(&player, &MoviePlayer::positionChanged);
        player.open(path(QStringLiteral("three.mov")));
        QTRY_VERIFY_WITH_TIMEOUT(player.duration() > 0ms, patience);
        player.setPosition(2s);
        player.play();
        QVERIFY(player.isPlaying());
        QTRY_VERIFY_WITH_TIMEOUT(!player.isPlaying(), patience);
        QCOMPARE(switches.size(), 2);
        QVERIFY(moves.size() > 3);
        QCOMPARE(player.position(), player.duration());
        QCOMPARE(colourOf(*player.view()), "blue");
        player.play();
        QVERIFY(player.isPlaying());
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "red", patience);
        player.pause();
        QVERIFY(!player.isPlaying());
        const auto paused = player.position();
        QVERIFY(paused < 2s);
        // Another movie while the first one plays; and the end of the player while it plays.
        player.play();
        player.open(path(QStringLiteral("tiny.mov")));
        QVERIFY(!player.isPlaying());
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "green", patience);
        player.play();
    }

    void whatIsNoMovieIsToldOnce_data() {
        QTest::addColumn<QString>("words");
        QTest::newRow("text") << QStringLiteral("not a movie");
        QTest::newRow("list") << QStringLiteral("not a movie");
        QTest::newRow("empty") << QStringLiteral("empty");
        QTest::newRow("vanished") << QStringLiteral("not there any more");
        QTest::newRow("noise") << QStringLiteral("damaged");
        QTest::newRow("headless") << QStringLiteral("damaged");
    }
    void whatIsNoMovieIsToldOnce() {
        QFETCH(QString, words);
        GstMoviePlayer player;
        QSignalSpy failures(&player, &MoviePlayer::failed);
        player.open(path(QString::fromLatin1(QTest::currentDataTag()) + QStringLiteral(".mov")));
        player.play();
        QVERIFY(failures.isEmpty()); // never from inside the call
        QTRY_COMPARE_WITH_TIMEOUT(failures.size(), 1, patience);
        QVERIFY2(failures.first().first().toString().contains(words), qPrintable(failures.first().first().toString()));
        QVERIFY(!player.isPlaying());
        player.play();
        QVERIFY(!player.isPlaying());
        player.setPosition(1s);
        // The same player goes on with a movie that is one.
        player.view()->resize(320, 200);
        player.open(path(QStringLiteral("three.mov")));
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "red", patience);
        QCOMPARE(failures.size(), 1);
    }

    // As the framework tells it when one of its threads fails and another one is done meanwhile.
    void troubleIsNotTheLastThatIsTold() {
        GstElement* pipeline = nullptr;
        g_type_class_unref(g_type_class_ref(GST_TYPE_PIPELINE)); // its signals are known then
        const guint added = g_signal_lookup("element-added", GST_TYPE_BIN);
        const gulong hook = g_signal_add_emission_hook(
            added, 0,
            [](GSignalInvocationHint*, guint, const GValue* values, gpointer found) -> gboolean {
                auto* const bin = static_cast<GstElement*>(g_value_get_object(values));
                if (GST_IS_PIPELINE(bin))
                    *static_cast<GstElement**>(found) = bin;
                return TRUE;
            },
            &pipeline, nullptr);
        GstMoviePlayer player;
        QSignalSpy failures(&player, &MoviePlayer::failed);
        player.open(path(QStringLiteral("three.mov")));
        QTRY_VERIFY_WITH_TIMEOUT(player.duration() > 0ms, patience);
        g_signal_remove_emission_hook(added, hook);
        GError* const error = g_error_new_literal(GST_STREAM_ERROR, GST_STREAM_ERROR_DECODE, "spoilt");
        const auto post = [pipeline = GstHandle<GstElement>(GST_ELEMENT(gst_object_ref(pipeline)))](
                              GstMessage* message) { gst_element_post_message(pipeline.get(), message); };
        post(gst_message_new_error(GST_OBJECT(pipeline), error, nullptr));
        post(gst_message_new_async_done(GST_OBJECT(pipeline), GST_CLOCK_TIME_NONE));
        g_error_free(error);
        QTRY_COMPARE_WITH_TIMEOUT(failures.size(), 1, patience);
        QCoreApplication::processEvents();
        QVERIFY(failures.first().first().toString().contains(QStringLiteral("spoilt")));
    }

    void aMovieThatWasCutOffPlaysAsFarAsItGoes() {
        GstMoviePlayer player;
        player.view()->resize(320, 200);
        QSignalSpy switches(&player, &MoviePlayer::playingChanged);
        player.open(path(QStringLiteral("cut.mov")));
        QTRY_COMPARE_WITH_TIMEOUT(colourOf(*player.view()), "red", patience);
        player.play();
        QTRY_COMPARE_WITH_TIMEOUT(switches.size(), 2, patience);
        QVERIFY(!player.isPlaying());
    }

    // The window may take the view with it.
    void theViewMayGoFirst() {
        auto window = std::make_unique<QWidget>();
        GstMoviePlayer player;
        player.view()->setParent(window.get());
        player.open(path(QStringLiteral("three.mov")));
        player.play();
        window.reset();
        QTRY_VERIFY_WITH_TIMEOUT(player.position() > 0ms, patience);
        QCOMPARE(player.view(), nullptr);
    }
};

QTEST_MAIN(tst_movieplayer)
#include "tst_movieplayer.moc"
