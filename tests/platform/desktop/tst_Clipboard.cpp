// The clipboard of a real desktop, and somebody else who copies: this program once more, as another process.
#include "platform/linux/desktop/ClipboardPasteboard.h"
#include "tests/platform/contracts/OpenerAndPasteboardContract.h"
#include "tests/platform/fakes/FakePasteboard.h"

#include <QBuffer>
#include <QClipboard>
#include <QDataStream>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QProcess>

#include <cstdio>
#include <utility>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString uriList = QStringLiteral("text/uri-list");

QByteArray addressesOf(const QList<QByteArray>& paths) {
    QByteArray list;
    for (const QByteArray& path : paths)
        list += "file://" + path.toPercentEncoding("/") + "\r\n";
    return list;
}
QByteArray encoded(const QImage& picture) {
    QBuffer buffer;
    return buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, "png") ? buffer.data() : QByteArray();
}

// A process that owns the clipboard until it ends.
class Owner {
public:
    using Copied = QList<std::pair<QString, QByteArray>>; // types and their content

    ~Owner() { end(); }

    // This process has seen it then.
    void copy(Copied copied) {
        end();
        const QString mark = QStringLiteral("application/x-mark-%1").arg(++count_);
        copied.append({mark, "mark"});
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--own")});
        QVERIFY(process_.waitForStarted());
        {
            QDataStream stream(&process_);
            stream << copied;
        }
        process_.closeWriteChannel();
        const QClipboard& clipboard = *QGuiApplication::clipboard();
        QTRY_VERIFY(!clipboard.ownsClipboard() && clipboard.mimeData()->hasFormat(mark));
    }
    void end() {
        process_.kill();
        process_.waitForFinished();
    }

    // What the process does.
    static int own(QGuiApplication& application) {
        QFile input;
        input.open(stdin, QIODevice::ReadOnly);
        const QByteArray all = input.readAll();
        Copied copied;
        QDataStream stream(all);
        stream >> copied;
        auto* data = new QMimeData;
        for (const auto& [type, content] : std::as_const(copied))
            data->setData(type, content);
        QGuiApplication::clipboard()->setMimeData(data);
        return application.exec();
    }

private:
    QProcess process_;
    int count_ = 0;
};

} // namespace

class tst_Clipboard : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFakeTellsWhatWasCopied() {
        FakePasteboard pasteboard;
        pasteboardTellsWhatWasCopied(pasteboard, {[&](const auto& paths) { pasteboard.copyFiles(paths); },
                                                  [&](const QImage& picture) { pasteboard.copyPicture(picture); },
                                                  [&] { pasteboard.copyOther(); }, [&] { pasteboard.clear(); }});
    }

    void theDesktopsTellsWhatWasCopied() {
        ClipboardPasteboard pasteboard;
        Owner owner;
        pasteboardTellsWhatWasCopied(pasteboard,
                                     {[&](const auto& paths) {
                                          owner.copy({{uriList, addressesOf(paths)}});
                                      },
                                      [&](const QImage& picture) {
                                          owner.copy({{QStringLiteral("image/png"), encoded(picture)}});
                                      },
                                      [&] {
                                          owner.copy({{QStringLiteral("application/x-nobody-knows"), "content"}});
                                      },
                                      [&] { owner.end(); }});
    }

    // What file managers and browsers put beside one another.
    void filesWinOverPicturesOverText() {
        ClipboardPasteboard pasteboard;
        Owner owner;
        const std::pair<QString, QByteArray> text{QStringLiteral("text/plain"), "file:///bin/sh"};
        const std::pair<QString, QByteArray> picture{QStringLiteral("image/png"),
                                                     encoded(QImage(3, 3, QImage::Format_RGB32))};
        owner.copy({text, picture, {QStringLiteral("x-special/gnome-copied-files"), "cut\nfile:///bin/a%20b"}});
        QCOMPARE(pasteboard.contents(), PasteboardContents::files);
        QCOMPARE(pasteboard.filePaths(), QList<QByteArray>{"/bin/a b"});
        owner.copy({text, picture, {uriList, "https://drive.example/a.png\r\nsftp://host/file\r\n"}});
        QCOMPARE(pasteboard.contents(), PasteboardContents::picture);
        owner.copy({text, {uriList, "https://drive.example/\r\n"}});
        QCOMPARE(pasteboard.contents(), PasteboardContents::text);
    }

    void tenThousandFiles() {
        ClipboardPasteboard pasteboard;
        Owner owner;
        QList<QByteArray> paths;
        for (int i = 0; i < 10'000; ++i)
            paths.append("/home/somebody/Pictures/of the year/\xF0\x9F\x98\x80 " + QByteArray::number(i) + ".jpeg");
        owner.copy({{uriList, addressesOf(paths)}});
        QCOMPARE(pasteboard.contents(), PasteboardContents::files);
        QCOMPARE(pasteboard.filePaths(), paths);
    }

    void picturesThatAreNone_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("no PNG") << QByteArray("<html>");
        QTest::newRow("cut off") << encoded(QImage(300, 300, QImage::Format_RGB32)).chopped(30);
        // 20 000 x 10 000 pixels in a few kilobytes.
        QImage huge(20'000, 10'000, QImage::Format_Mono);
        huge.fill(0);
        QTest::newRow("too large") << encoded(huge);
    }
    void picturesThatAreNone() {
        QFETCH(QByteArray, bytes);
        ClipboardPasteboard pasteboard;
        Owner owner;
        const QTemporaryDir folder;
        owner.copy({{QStringLiteral("image/png"), bytes}});
        QCOMPARE(pasteboard.contents(), PasteboardContents::picture);
        QVERIFY(!writesPicture(pasteboard, folder.filePath(QStringLiteral("picture.png"))));
        QVERIFY(QDir(folder.path()).isEmpty(QDir::Files | QDir::Hidden));
    }

    // The second is that of a program that ends meanwhile; the first as from a page of the workspace.
    void picturesAreFinishedInTheEnd() {
        auto pasteboard = std::make_unique<ClipboardPasteboard>();
        const QTemporaryDir folder;
        const QString first = folder.filePath(QStringLiteral("1.png"));
        const QString second = folder.filePath(QStringLiteral("2.png"));
        QImage picture(2000, 2000, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QGuiApplication::clipboard()->setImage(picture);
        pasteboard->writePicture(QFile::encodeName(first), this, [](bool) {});
        Owner owner;
        owner.copy({{QStringLiteral("image/png"), encoded(picture)}});
        pasteboard->writePicture(QFile::encodeName(second), this, [](bool) {});
        owner.end();
        pasteboard.reset();
        QCOMPARE(QImage(first, "tiff").size(), picture.size());
        QCOMPARE(QImage(second, "tiff").size(), picture.size());
    }
};

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    if (application.arguments().contains(QStringLiteral("--own")))
        return Owner::own(application);
    tst_Clipboard test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Clipboard.moc"
