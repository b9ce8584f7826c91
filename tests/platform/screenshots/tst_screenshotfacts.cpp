// What a file's name, its stamp and its contents say about it: names and texts as the tools really write them.
#include "platform/linux/screenshots/FactsOfFile.h"
#include "platform/linux/screenshots/Originals.h"
#include "platform/linux/screenshots/ScreenshotFolders.h"
#include "platform/linux/screenshots/ScreenshotTools.h"
#include "tests/platform/screenshots/PictureMaking.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>
#include <QtEndian>

using namespace quenby;
using namespace quenby::testing;

namespace {

using State = CapturedPicture::State;
using Texts = QList<PictureText>;

const QSize desktop(1920, 1080);
const QDateTime taken(QDate(2026, 11, 23), QTime(10, 41, 56, 300)); // local

// Of a file that was made so many seconds after the moment, and written within so many more.
FileStamp stampAfter(double seconds, double writing = 0.1) {
    const qint64 birth = taken.toMSecsSinceEpoch() + qint64(seconds * 1000);
    const qint64 changed = (birth + qint64(writing * 1000)) * 1'000'000;
    return {.device = 1,
            .inode = 2,
            .size = 3,
            .isRegular = true,
            .birth = birth,
            .contentsChanged = changed,
            .attributesChanged = changed};
}

// One letter for each fact.
QByteArray letters(ScreenshotFacts facts) {
    QByteArray text;
    if (facts.testFlag(ScreenshotFact::isScreenCapture))
        text += 's';
    if (facts.testFlag(ScreenshotFact::captureType))
        text += 't';
    if (facts.testFlag(ScreenshotFact::capturedRectangle))
        text += 'r';
    return text;
}

CapturedPicture inspect(const QByteArray& bytes) {
    QTemporaryFile file;
    if (!file.open() || file.write(bytes) != bytes.size() || !file.flush())
        qFatal("no temporary file");
    return inspectPicture(file.handle(), bytes.size());
}

} // namespace

class ScreenshotFactsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void names_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Texts>("texts");
        QTest::addColumn<double>("madeAfter"); // seconds after what the name tells
        QTest::addColumn<QByteArray>("facts");
        const Texts none;
        const Texts gnome{{"Software", "gnome-screenshot"}};
        const Texts gimp{{"Comment", "Created with GIMP"}};
        const auto row = [](const char* tag, const char* name, const Texts& texts, double after, const char* facts) {
            QTest::newRow(tag) << QString::fromUtf8(name) << texts << after << QByteArray(facts);
        };
        row("gnome-screenshot", "Screenshot from 2026-11-23 10-41-56.png", gnome, 0, "str");
        row("GNOME Shell", "Bildschirmfoto vom 2026-11-23 10-41-56.png",
            {{"Software", "gnome-screenshot"}, {"Creation Time", "Mo 23 Nov 2026"}}, 0, "str");
        row("the word behind", "2026-11-23 10-41-56 ekran görüntüsü.png", gnome, 0, "str");
        row("a second one", "Screenshot from 2026-11-23 10-41-56-1.png", gnome, 0, "str");
        row("saved minutes later", "Screenshot from 2026-11-23 10-41-56.png", gnome, 400, "str");
        row("MATE", "Screenshot at 2026-11-23 10-41-56.png", {{"Software", "mate-screenshot"}}, 0, "str");
        row("Spectacle", "Screenshot_20261123_104156.png", {{"Title", "Editor"}}, 30, "str");
        row("Spectacle, edited", "Screenshot_20261123_104156.png", {{"Software", "GIMP 2.10"}}, 0, "sr");
        row("xfce4-screenshooter", "Screenshot_2026-11-23_10-41-56.png", none, 4, "str");
        row("in French", "Capture d’écran_2026-11-23_10-41-56.png", none, 4, "str");
        row("flameshot", "2026-11-23_10-41.png", none, -56, "str");
        row("flameshot again", "2026-11-23_10-41_1.png", none, 0, "str");
        row("scrot", "2026-11-23-104156_1280x800_scrot.png", none, 0, "str");
        row("grim", "20261123_10h41m56s_grim.png", none, 0, "str");
        row("maim", "2026-11-23-104156.png", none, 0, "str");
        row("no text of the tool", "Screenshot at 2026-11-23 10-41-56.png", none, 0, "sr");

        row("copied", "Screenshot_2026-11-23_10-41-56 (copy).png", none, 0, "");
        row("downloaded twice", "Screenshot_2026-11-23_10-41-56 (1).png", none, 0, "");
        row("a messenger's", "photo_2026-11-23_10-41-56.jpg", none, 0, "");
        row("a camera's", "IMG_20261123_104156.jpg", none, 0, "");
        row("renamed", "holiday.png", gnome, 0, "");
        row("no date", "Screenshot_2026-13-23_10-41-56.png", none, 0, "");
        row("another ending", "Screenshot_2026-11-23_10-41-56.pdf", none, 0, "");
        row("copied the next day", "Screenshot_2026-11-23_10-41-56.png", none, 86'400, "st");
        row("from the future", "Screenshot_2026-11-23_10-41-56.png", none, -90, "st");
        row("too late for this tool", "2026-11-23-104156_1280x800_scrot.png", none, 60, "st");
        row("edited", "Screenshot_2026-11-23_10-41-56.png", gimp, 0, "sr");
        row("written again", "2026-11-23-104156_1280x800_scrot.png", {{"tIME", ""}}, 0, "sr");
    }
    void names() {
        QFETCH(QString, name);
        QFETCH(Texts, texts);
        QFETCH(double, madeAfter);
        const CapturedPicture whole{State::whole, QSize(800, 600), texts};
        QTEST(letters(factsOfFile(name.toUtf8(), stampAfter(madeAfter), whole, desktop)), "facts");
    }

    void momentsAndSizes() {
        const QByteArray name("Screenshot_2026-11-23_10-41-56.png");
        const CapturedPicture whole{State::whole, desktop, {}};
        QCOMPARE(letters(factsOfFile(name, stampAfter(0), whole, desktop)), "str");
        QCOMPARE(letters(factsOfFile(name, stampAfter(0), whole, desktop - QSize(1, 0))), "st");
        QCOMPARE(letters(factsOfFile(name, stampAfter(0, 60), whole, desktop)), "st"); // changed a minute later
        QCOMPARE(letters(factsOfFile(name, stampAfter(0), {State::strange, desktop, {}}, desktop)), "sr");
        QCOMPARE(letters(factsOfFile(name, stampAfter(30, -30), whole, desktop)), "st"); // copied with its dates

        // Where births are unknown, a copy that kept the time of its contents shows in the attributes' time.
        FileStamp unborn = stampAfter(0);
        unborn.birth.reset();
        QCOMPARE(letters(factsOfFile(name, unborn, whole, desktop)), "str");
        unborn.attributesChanged += 60'000'000'000;
        QCOMPARE(letters(factsOfFile(name, unborn, whole, desktop)), "st");

        const QByteArray seconds = QByteArray::number(taken.toSecsSinceEpoch()) + ".png";
        QCOMPARE(letters(factsOfFile(seconds, stampAfter(0), whole, desktop)), "str");
        QCOMPARE(letters(factsOfFile(seconds, stampAfter(3600), whole, desktop)), "st");
    }

    void wholeAndPartialPictures_data() {
        QTest::addColumn<QByteArray>("format");
        for (const char* const format : {"png", "jpg", "webp"})
            QTest::newRow(format) << QByteArray(format);
    }
    void wholeAndPartialPictures() {
        QFETCH(QByteArray, format);
        const QByteArray bytes = picture(QSize(300, 200), {}, format);
        QCOMPARE(inspect(bytes).state, State::whole);
        QCOMPARE(inspect(bytes).size, QSize(300, 200));
        for (qsizetype length = 0; length < bytes.size(); ++length)
            QVERIFY2(inspect(bytes.first(length)).state == State::partial, qPrintable(QString::number(length)));
        QVERIFY(inspect(bytes + "more").state != State::whole);
    }

    void textsOfPictures() {
        const QList<std::pair<QString, QString>> texts{{QStringLiteral("Software"), QStringLiteral("gnome-screenshot")},
                                                       {QStringLiteral("Title"), QStringLiteral("Übersicht")}};
        const CapturedPicture png = inspect(picture(QSize(30, 20), texts));
        QVERIFY(png.texts.contains({"Software", "gnome-screenshot"}));
        QVERIFY(png.texts.contains({"Title", "Übersicht"}) || png.texts.contains({"Title", "\xdc"
                                                                                           "bersicht"}));
        const CapturedPicture jpeg = inspect(picture(QSize(30, 20), texts, "jpg"));
        QCOMPARE(jpeg.texts.value(0).key, "Comment");
    }

    void strangersBytes() {
        QCOMPARE(inspect("this is no picture at all").state, State::strange);
        const QByteArray png = picture(QSize(30, 20));
        const qsizetype afterHeader = 8 + 25;
        const auto withPart = [&](quint32 length, const QByteArray& type, const QByteArray& bytes) {
            QByteArray part(4, '\0');
            qToBigEndian(length, part.data());
            return QByteArray(png.first(afterHeader) + part + type + bytes + "crc." + png.mid(afterHeader));
        };
        // A text of 50 MB is whole, and only its beginning is taken.
        const CapturedPicture large =
            inspect(withPart(50'000'000, "tEXt", "Software" + QByteArray(1, '\0') + QByteArray(49'999'991, 'x')));
        QCOMPARE(large.state, State::whole);
        QVERIFY(large.texts.at(0).value.size() < 10'000);
        // A part that claims to be longer than the file, and one without a key.
        QCOMPARE(inspect(withPart(0xffffffff, "tEXt", {})).state, State::partial);
        QCOMPARE(inspect(withPart(3, "iTXt", "abc")).texts.value(0).key, "abc");
        QByteArray many = png.first(afterHeader);
        for (int i = 0; i < 1000; ++i)
            many += withPart(2, "tEXt", QByteArray("a\0", 2)).mid(afterHeader, 14);
        QCOMPARE(inspect(many + png.mid(afterHeader)).state, State::strange);
    }

    void foldersOfTheDesktop() {
        const QTemporaryDir home;
        const QDir folder(home.path());
        qputenv("HOME", QFile::encodeName(home.path()));
        for (const char* const variable : {"XDG_PICTURES_DIR", "XDG_DESKTOP_DIR", "XDG_SCREENSHOTS_DIR"})
            qunsetenv(variable);
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path()) + "/config");
        for (const QString& name : {QStringLiteral("config/flameshot"), QStringLiteral("config/xfce4")})
            QVERIFY(folder.mkpath(name));
        const auto setting = [&](const char* name, const char* text) {
            writeFile(QFile::encodeName(home.path()) + "/config/" + name, text);
        };
        setting("user-dirs.dirs", "# of this user\nXDG_DESKTOP_DIR=\"$HOME/\"\nXDG_PICTURES_DIR=\"$HOME/Bilder\"\n"
                                  "XDG_SCREENSHOTS_DIR=\"$HOME/shots\"\n");
        setting("flameshot/flameshot.ini", "[General]\nsavePath=\"/data/flame, shots\"\nstartupLaunch=false\n");
        setting("spectaclerc", "[ImageSave]\nimageSaveLocation[$e]=file://$HOME/kde%20shots/\n");
        setting("xfce4/xfce4-screenshooter", "app=none\nscreenshot_dir=file:/data/xfce\n");

        const QByteArray root = QFile::encodeName(home.path());
        const QList<QByteArray> folders = screenshotFolders();
        for (const QByteArray& expected :
             {root, QByteArray(root + "/Bilder"), QByteArray(root + "/Bilder/Screenshots"), QByteArray(root + "/shots"),
              QByteArray(root + "/kde shots"), QByteArray("/data/flame, shots"), QByteArray("/data/xfce")})
            QVERIFY2(folders.count(expected) == 1, expected.constData());
        QVERIFY(!folders.contains(root + "/Pictures"));
    }

    void originalsAndWhatWasMadeOfThem() {
        Originals originals;
        FileStamp file = stampAfter(0);
        FileStamp other = stampAfter(1);
        other.inode = 7;
        QVERIFY(originals.isOriginal("/a/shot.png", file));
        QVERIFY(originals.isOriginal("/a/shot.png", file));
        QVERIFY(!originals.isOriginal("/b/shot.png", other)); // copied
        QVERIFY(!originals.isOriginal("/b/shot.png", file));  // moved
        QVERIFY(!originals.isOriginal("/a/else.png", file));  // renamed
        QVERIFY(!originals.isOriginal("/a/shot.png", other)); // replaced by an editor
        originals.forgetPlacesBut({});
        QVERIFY(originals.isOriginal("/a/shot.png", other)); // removed, and taken again within the same minute
    }
};

QTEST_GUILESS_MAIN(ScreenshotFactsTest)
#include "tst_screenshotfacts.moc"
