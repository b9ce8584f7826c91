#include "platform/linux/web/AccountWebFolders.h"

#include <QDir>

#include <algorithm>

namespace quenby {
namespace {

// An account's name may be an address or anything else; in a file name only what is harmless stays as it is.
QString fileNameFor(const QString& account) {
    QString name = QString::fromLatin1(account.toUtf8().toPercentEncoding("@"));
    name.replace(QLatin1Char('.'), QStringLiteral("%2E")); // the last dot comes before the generation
    return name;
}

// What follows the dot; 0 for a name that is not the account's.
int generationIn(const QString& fileName, const QString& accountFileName) {
    if (!fileName.startsWith(accountFileName + QLatin1Char('.')))
        return 0;
    return std::max(0, fileName.mid(accountFileName.size() + 1).toInt());
}

} // namespace

AccountWebFolders::AccountWebFolders(const QString& dataRoot, const QString& cacheRoot)
    : dataRoot_(dataRoot)
    , cacheRoot_(cacheRoot) {}

WebProfileFolders AccountWebFolders::foldersOf(const QString& account) {
    return folders(account, generationOf(account));
}

WebProfileFolders AccountWebFolders::leave(const QString& account) {
    const int left = generationOf(account);
    generations_[account] = left + 1;
    // Remembered by the folder itself: a program that is killed now must not come back with the old cookies.
    QDir().mkpath(folders(account, left + 1).data);
    return folders(account, left);
}

void AccountWebFolders::remove(const WebProfileFolders& folders) {
    QDir(folders.data).removeRecursively();
    QDir(folders.cache).removeRecursively();
}

WebProfileFolders AccountWebFolders::folders(const QString& account, int generation) const {
    const QString name = fileNameFor(account) + QLatin1Char('.') + QString::number(generation);
    return {dataRoot_ + QLatin1Char('/') + name, cacheRoot_ + QLatin1Char('/') + name};
}

int AccountWebFolders::generationOf(const QString& account) {
    if (const auto known = generations_.constFind(account); known != generations_.constEnd())
        return *known;
    const QString name = fileNameFor(account);
    QList<int> found;
    for (const QString& entry : QDir(dataRoot_).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        found.append(generationIn(entry, name));
    const int newest = found.isEmpty() ? 1 : std::max(1, *std::max_element(found.cbegin(), found.cend()));
    for (const int generation : found) {
        if (generation > 0 && generation < newest)
            remove(folders(account, generation));
    }
    return generations_.insert(account, newest).value();
}

} // namespace quenby
