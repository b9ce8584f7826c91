// Reads every #include line of the project and fails on an arrow that the architecture does not have.

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QTest>

namespace {

// Which folders each folder's files may include, itself always among them. An arrow that is missing here is forbidden.
const QHash<QString, QStringList>& allowedArrows() {
    const auto list = [](const char* text) { return QString::fromLatin1(text).split(QLatin1Char(' ')); };
    static const QHash<QString, QStringList> arrows{
        {QStringLiteral("core"), {}},
        {QStringLiteral("http"), list("core")},
        {QStringLiteral("oauth2"), list("core http platform")},
        {QStringLiteral("driveapi"), list("core http")},
        {QStringLiteral("platform"), list("core")},
        {QStringLiteral("platform/linux"), list("core platform")},
        {QStringLiteral("recording"), list("core platform widgets")},
        {QStringLiteral("widgets"), {}},
        {QStringLiteral("popover"), list("core platform widgets")},
        {QStringLiteral("preferences"), list("core platform widgets")},
        {QStringLiteral("workspace"), list("core platform widgets")},
        {QStringLiteral("app"), list("core http oauth2 driveapi platform platform/linux recording popover preferences "
                                     "widgets workspace")},
        {QStringLiteral("localdrive"), list("core")},
    };
    return arrows;
}

// The folder of the table that a path such as "platform/linux/Tray.h" lies in; the longest name wins.
QString houseFolder(const QString& path) {
    QString found;
    for (auto it = allowedArrows().cbegin(); it != allowedArrows().cend(); ++it) {
        if (path.startsWith(it.key() + QLatin1Char('/')) && it.key().size() > found.size())
            found = it.key();
    }
    return found;
}

QStringList includedFiles(const QString& source) {
    static const QRegularExpression line(QStringLiteral("^\\s*#\\s*include\\s*\"([^\"]+)\""),
                                         QRegularExpression::MultilineOption);
    QStringList files;
    for (auto match = line.globalMatch(source); match.hasNext();)
        files.append(match.next().captured(1));
    return files;
}

// Every include of one file that crosses a border without an arrow, as "from -> to".
QStringList forbiddenArrows(const QString& path, const QString& source) {
    QStringList found;
    const QString from = houseFolder(path);
    for (const QString& included : includedFiles(source)) {
        const QString to = houseFolder(included);
        if (!to.isEmpty() && to != from && !allowedArrows().value(from).contains(to))
            found.append(path + QStringLiteral(" -> ") + included);
        if (to.isEmpty() && included.contains(QLatin1Char('/')))
            found.append(path + QStringLiteral(" -> ") + included + QStringLiteral(" (no such folder)"));
    }
    return found;
}

} // namespace

class ArchitectureTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void noForbiddenArrow() {
        const QDir root(QStringLiteral(QUENBY_SOURCE_DIR));
        QStringList found;
        int files = 0;
        for (auto folder = allowedArrows().cbegin(); folder != allowedArrows().cend(); ++folder) {
            QDirIterator entries(root.filePath(folder.key()), {QStringLiteral("*.h"), QStringLiteral("*.cpp")},
                                 QDir::Files, QDirIterator::Subdirectories);
            while (entries.hasNext()) {
                QFile file(entries.next());
                QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
                found += forbiddenArrows(root.relativeFilePath(file.fileName()), QString::fromUtf8(file.readAll()));
                ++files;
            }
        }
        QVERIFY(files > 20);
        QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1Char('\n'))));
    }

    // The rule itself: each line must be caught or let pass.
    void rule_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("included");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("down") << "http/A.cpp"
                              << "core/Error.h" << true;
        QTest::newRow("up") << "core/A.cpp"
                            << "http/URLRequest.h" << false;
        QTest::newRow("sideways") << "driveapi/A.cpp"
                                  << "oauth2/GTMOAuth2SignIn.h" << false;
        QTest::newRow("own folder") << "driveapi/A.cpp"
                                    << "driveapi/GTLObject.h" << true;
        QTest::newRow("own subfolder") << "localdrive/server/A.cpp"
                                       << "localdrive/store/B.h" << true;
        QTest::newRow("the local Drive knows no client") << "localdrive/server/A.cpp"
                                                         << "http/URLRequest.h" << false;
        QTest::newRow("interfaces know no implementation") << "platform/A.h"
                                                           << "platform/linux/B.h" << false;
        QTest::newRow("a window never knows another") << "popover/A.cpp"
                                                      << "workspace/B.h" << false;
        QTest::newRow("a window never knows the controller") << "workspace/A.cpp"
                                                             << "app/B.h" << false;
        QTest::newRow("the application knows all") << "app/main.cpp"
                                                   << "platform/linux/B.h" << true;
        QTest::newRow("a folder that is none") << "app/main.cpp"
                                               << "elsewhere/B.h" << false;
    }
    void rule() {
        QFETCH(QString, path);
        QFETCH(QString, included);
        QFETCH(bool, allowed);
        const QString source = QStringLiteral("#pragma once\n  #include \"%1\"\n").arg(included);
        QCOMPARE(forbiddenArrows(path, source).isEmpty(), allowed);
    }
};

QTEST_GUILESS_MAIN(ArchitectureTest)
#include "tst_architecture.moc"
