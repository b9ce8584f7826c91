#include "platform/linux/web/AccountWebFolders.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace Qt::StringLiterals;

class TestAccountWebFolders : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void accountsAreKeptApart() {
        AccountWebFolders folders(root_.path(), root_.path() + u"/cache"_s);
        const QStringList accounts{u"a"_s, u"b"_s, u"a.1"_s, u"../a"_s, u"a/b"_s, u"A@example.com"_s, u"ä"_s};
        QStringList seen;
        for (const QString& account : accounts) {
            const QString path = folders.foldersOf(account).data;
            QCOMPARE(QDir::cleanPath(path), path);
            QCOMPARE(QFileInfo(path).path(), root_.path());
            QVERIFY2(!seen.contains(path), qPrintable(account));
            seen.append(path);
        }
    }

    void aForgottenAccountStartsAfresh() {
        const QString account = u"me@example.com"_s;
        WebProfileFolders before;
        WebProfileFolders after;
        {
            AccountWebFolders folders(root_.path(), root_.path());
            before = folders.foldersOf(account);
            QVERIFY(QDir().mkpath(before.data));
            QCOMPARE(folders.leave(account), before);
            after = folders.foldersOf(account);
            QVERIFY(after.data != before.data);
            QVERIFY(QDir(before.data).exists()); // pages may still use it
        }
        // The program was killed; the next start goes on with the new folders and clears the old ones away.
        AccountWebFolders folders(root_.path(), root_.path());
        QCOMPARE(folders.foldersOf(account), after);
        QVERIFY(!QDir(before.data).exists());
    }

private:
    QTemporaryDir root_;
};

QTEST_GUILESS_MAIN(TestAccountWebFolders)
#include "tst_AccountWebFolders.moc"
