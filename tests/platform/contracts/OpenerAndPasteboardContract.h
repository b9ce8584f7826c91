// What every Opener and every Pasteboard must do.
#pragma once

#include "platform/Opener.h"
#include "platform/Pasteboard.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <optional>

namespace quenby::testing {

// There is a program for addresses, and one for text files.
inline void openerKeepsItsContract(Opener& opener, const QByteArray& textFile) {
    QVERIFY(opener.openURL(QUrl(QStringLiteral("https://drive.example/file?id=1&x=%20#a"))));
    for (const char* refused : {"file:///etc/passwd", "mailto:somebody@example.com", "javascript:alert(1)",
                                "https:", "https:///path", "drive.example", ""})
        QVERIFY2(!opener.openURL(QUrl(QLatin1String(refused))), refused);
    QVERIFY(opener.openFile(textFile));
    for (const QByteArray& refused : {QByteArray(textFile + ".vanished"), textFile.first(textFile.lastIndexOf('/')),
                                      textFile.mid(textFile.lastIndexOf('/') + 1), QByteArray()})
        QVERIFY2(!opener.openFile(refused), refused.constData());
}

inline void pasteboardKeepsItsContract(Pasteboard& pasteboard) {
    for (const QString& text : {QStringLiteral("one"), QString::fromUtf8("zw\u00f6lf \U0001F600\nlines"), QString()}) {
        pasteboard.setText(text);
        QCOMPARE(pasteboard.text(), text);
    }
}

// Somebody else, who copies: what was on the pasteboard before is gone then.
struct PasteboardOwner {
    std::function<void(const QList<QByteArray>& paths)> copyFiles;
    std::function<void(const QImage& picture)> copyPicture;
    std::function<void()> copyOther; // of a type that nobody knows
    std::function<void()> end;       // takes everything along
};

// Whether the pasteboard wrote a picture into the file.
inline bool writesPicture(Pasteboard& pasteboard, const QString& path) {
    QObject context;
    std::optional<bool> isWritten;
    pasteboard.writePicture(QFile::encodeName(path), &context, [&isWritten](bool written) { isWritten = written; });
    if (isWritten) // from inside the call
        return false;
    return QTest::qWaitFor([&isWritten] { return isWritten.has_value(); }, 20'000) && *isWritten;
}

inline void pasteboardTellsWhatWasCopied(Pasteboard& pasteboard, const PasteboardOwner& owner) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    const QList<QByteArray> files{"/tmp/a b#?%", "/tmp/caf\xC3\xA9/\xFF", "/nowhere"};
    owner.copyFiles(files);
    QTRY_COMPARE(pasteboard.contents(), PasteboardContents::files);
    QCOMPARE(pasteboard.filePaths(), files);
    QVERIFY(!writesPicture(pasteboard, path));

    QImage picture(31, 17, QImage::Format_RGB32);
    picture.fill(QColor(200, 10, 30));
    owner.copyPicture(picture);
    QTRY_COMPARE(pasteboard.contents(), PasteboardContents::picture);
    QVERIFY(pasteboard.filePaths().isEmpty());
    QVERIFY(writesPicture(pasteboard, path));
    QCOMPARE(QImageReader::imageFormat(path), "tiff");
    QCOMPARE(QImageReader(path, "tiff").read().convertToFormat(picture.format()), picture);
    QVERIFY(!writesPicture(pasteboard, folder.filePath(QStringLiteral("missing/picture.png"))));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1); // nothing half written

    owner.copyOther();
    QTRY_COMPARE(pasteboard.contents(), PasteboardContents::other);
    pasteboard.setText(QStringLiteral("/tmp/text"));
    QCOMPARE(pasteboard.contents(), PasteboardContents::text);
    QVERIFY(pasteboard.filePaths().isEmpty());

    owner.copyFiles(files);
    QTRY_COMPARE(pasteboard.contents(), PasteboardContents::files);
    owner.end();
    QVERIFY(pasteboard.filePaths().isEmpty()); // between look and use
    QTRY_COMPARE(pasteboard.contents(), PasteboardContents::nothing);
    QVERIFY(!writesPicture(pasteboard, path));
}

} // namespace quenby::testing
