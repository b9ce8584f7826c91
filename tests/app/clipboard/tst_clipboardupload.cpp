// What is offered of a clipboard, what is asked, and what goes on to the uploads.

#include "app/agent/CacheFolderNames.h"
#include "app/clipboard/ClipboardUpload.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeCacheFolders.h"
#include "tests/platform/fakes/FakePasteboard.h"
#include "tests/support/ManualTimeSource.h"

#include <QDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString nothingFound = QStringLiteral("No file found in last Clipboard.");
constexpr int uploadButton = 0;
constexpr int cancelButton = 1;

} // namespace

class ClipboardUploadTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        qputenv("TZ", "Asia/Kolkata"); // UTC+05:30
        upload_ = std::make_unique<ClipboardUpload>(
            ClipboardUpload::Services{pasteboard_, alerts_, caches_, std::make_shared<ManualTimeSource>()},
            [] { return nullptr; });
        alerts_.forgetShown();
        requested_.clear();
        connect(upload_.get(), &ClipboardUpload::uploadRequested, this,
                [this](const QString& folderName, const QList<QByteArray>& paths) {
                    QCOMPARE(folderName, QStringLiteral("Clip board"));
                    requested_.append(paths);
                });
    }

    void regularFilesAloneAreOffered() {
        const QByteArray link = path("caf\xE9"); // no text
        QCOMPARE(::symlink("/bin/sh", link), 0);
        QCOMPARE(::mkfifo(path("fifo"), 0600), 0);
        const QList<QByteArray> rest{path(""), path("fifo"), path("missing"), "/bin/sh/below", "/dev/zero"};
        pasteboard_.copyFiles(rest + QList<QByteArray>{link, "/bin/sh"});
        QCOMPARE(shownByCommand(), QStringLiteral("Are you sure you want to upload last Clipboard files?"));
        QCOMPARE(alerts_.shown().last().alert.messageText, QStringLiteral("Alert"));
        QCOMPARE(alerts_.shown().last().alert.buttons,
                 (QStringList{QStringLiteral("Upload"), QStringLiteral("Cancel")}));
        answer(uploadButton);
        QCOMPARE(requested_, (QList<QList<QByteArray>>{{link, "/bin/sh"}}));
        ::unlink(link); // the toolkit can't

        pasteboard_.copyFiles(rest);
        QCOMPARE(shownByCommand(), nothingFound);
        QVERIFY(alerts_.shown().last().alert.buttons.isEmpty());
    }

    void nothingElseIsOffered() {
        const QImage picture(2, 2, QImage::Format_RGB32);
        const QList<std::function<void()>> copies{
            [&] { pasteboard_.clear(); },
            [&] { pasteboard_.setText(QStringLiteral("/bin/sh")); },
            [&] { pasteboard_.copyOther(); },
            [&] {
                pasteboard_.copyFiles({"/bin/sh"});
                pasteboard_.vanishAfterNextLook();
            },
            [&] {
                pasteboard_.copyPicture(picture);
                pasteboard_.vanishAfterNextLook();
            },
            [&] { pasteboard_.copyPicture(picture); },
        };
        for (const auto& copy : copies) {
            QCOMPARE(keptPictures(), QStringList());
            copy();
            QCOMPARE(shownByCommand(), nothingFound);
            answer(0);
        }
        // The last was a picture.
        QCOMPARE(keptPictures(), QStringList{QStringLiteral("Copied 2026-01-01 at 05.30.00 PM.png")});
        caches_.setFailing(true);
        QCOMPARE(shownByCommand(), nothingFound);
        caches_.setFailing(false);
    }

    void oneQuestionAtATime() {
        pasteboard_.copyFiles({"/bin/sh"});
        upload_->fetchLastFromClipBoard();
        shownByCommand();
        pasteboard_.clear();
        upload_->fetchLastFromClipBoard();
        QCOMPARE(alerts_.shown().size(), 1);
        answer(cancelButton);
        QVERIFY(requested_.isEmpty());

        pasteboard_.copyFiles({"/bin/sh"});
        shownByCommand();
        upload_->cancel(); // signed out meanwhile
        answer(uploadButton);
        QVERIFY(requested_.isEmpty());
        shownByCommand();
        answer(uploadButton);
        QCOMPARE(requested_.size(), 1);
    }

private:
    // The informative text.
    QString shownByCommand() {
        const auto before = alerts_.shown().size();
        upload_->fetchLastFromClipBoard();
        return QTest::qWaitFor([&] { return alerts_.shown().size() > before; })
                   ? alerts_.shown().last().alert.informativeText
                   : QString();
    }
    void answer(int button) {
        QVERIFY(alerts_.answer(button));
        QCoreApplication::processEvents();
    }
    QStringList keptPictures() const {
        return QDir(caches_.path(cacheFolderName::copiedPictures)).entryList(QDir::Files | QDir::Hidden);
    }
    QByteArray path(const QByteArray& name) const { return QFile::encodeName(folder_.path()) + '/' + name; }

    FakePasteboard pasteboard_;
    FakeAlerts alerts_;
    FakeCacheFolders caches_;
    QTemporaryDir folder_;
    std::unique_ptr<ClipboardUpload> upload_;
    QList<QList<QByteArray>> requested_;
};

QTEST_GUILESS_MAIN(ClipboardUploadTest)
#include "tst_clipboardupload.moc"
