// The file that keeps the sign-in: its mode, and everything that may be wrong with it.

#include "app/cli/TokenFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;

namespace {

const QString token = QStringLiteral("email=a%40b&refresh_token=1%2Fsecretvalue");

int modeOf(const QByteArray& path) {
    struct stat status {};
    return ::lstat(path.constData(), &status) == 0 ? int(status.st_mode & 07777) : -1;
}

} // namespace

class TokenFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = QFile::encodeName(folder_->filePath(QStringLiteral("state/quenby/token")));
    }

    void isThereOnlyForItsOwner() {
        const TokenFile file(path_);
        const mode_t before = ::umask(0);
        const auto saved = file.save(token);
        ::umask(before);
        QVERIFY2(saved, "saving");
        QCOMPARE(modeOf(path_), 0600);
        QCOMPARE(modeOf(QFile::encodeName(folder_->filePath(QStringLiteral("state")))), 0700);
        QCOMPARE(file.load().valueOr({}), token);
        QVERIFY(file.save(token + QStringLiteral("&scope=x"))); // replaces
        QCOMPARE(modeOf(path_), 0600);
        QCOMPARE(QDir(folder_->filePath(QStringLiteral("state/quenby"))).entryList(QDir::Files | QDir::Hidden).size(),
                 1);
    }

    void nothingIsNoError() {
        const auto loaded = TokenFile(path_).load();
        QVERIFY(loaded && loaded->isEmpty());
    }

    void looseModesAreTightened() {
        const TokenFile file(path_);
        QVERIFY(file.save(token));
        ::chmod(path_.constData(), 0644);
        QCOMPARE(file.load().valueOr({}), token);
        QCOMPARE(modeOf(path_), 0600);
    }

    void damage_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no token in it") << QByteArray("email=a&scope=b");
        QTest::newRow("empty token") << QByteArray("refresh_token=");
        QTest::newRow("something else") << QByteArray("\x7f"
                                                      "ELF\0\1",
                                                      6);
        QTest::newRow("far too long") << "refresh_token=" + QByteArray(70000, 'x');
    }
    void damage() {
        QFETCH(QByteArray, content);
        QVERIFY(TokenFile(path_).save(token)); // makes the folder
        QFile file(QFile::decodeName(path_));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        const auto loaded = TokenFile(path_).load();
        QVERIFY(!loaded);
        QVERIFY(loaded.error().description().contains(QStringLiteral("damaged")));
        QVERIFY(!loaded.error().description().contains(QStringLiteral("xxxx")));
        QVERIFY(TokenFile(path_).save(token)); // a new sign-in mends it
        QVERIFY(TokenFile(path_).load());
    }

    void linksAndPipesAreRefused() {
        QVERIFY(TokenFile(path_).save(token));
        const QByteArray elsewhere = path_ + "-elsewhere";
        QCOMPARE(::rename(path_.constData(), elsewhere.constData()), 0);
        QCOMPARE(::symlink(elsewhere.constData(), path_.constData()), 0);
        QVERIFY(!TokenFile(path_).load());
        ::unlink(path_.constData());
        QCOMPARE(::mkfifo(path_.constData(), 0600), 0);
        QVERIFY(!TokenFile(path_).load());
        QVERIFY(TokenFile(path_).save(token)); // replaces the pipe
        QVERIFY(TokenFile(path_).load());
    }

    void failureLeavesTheOldSignIn() {
        QVERIFY(TokenFile(path_).save(token));
        const QByteArray inFile = path_ + "/below";
        QVERIFY(!TokenFile(inFile).save(token));
        QCOMPARE(TokenFile(path_).load().valueOr({}), token);
    }

private:
    std::unique_ptr<QTemporaryDir> folder_;
    QByteArray path_;
};

QTEST_GUILESS_MAIN(TokenFileTest)
#include "tst_tokenfile.moc"
