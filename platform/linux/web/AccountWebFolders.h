// Where accounts' cookies and caches lie. An account that is forgotten gets new folders, because the old ones may still
// be written to by pages that show it; what is left of them is removed when the account's folders are next asked for.
//
// Threads: one.
#pragma once

#include "platform/linux/web/WebEngineModule.h"

#include <QHash>

namespace quenby {

class AccountWebFolders {
public:
    // Both folders are made when they are needed.
    AccountWebFolders(const QString& dataRoot, const QString& cacheRoot);

    // The account's present folders.
    WebProfileFolders foldersOf(const QString& account);
    // The folders that the account leaves behind.
    WebProfileFolders leave(const QString& account);
    static void remove(const WebProfileFolders& folders);

private:
    WebProfileFolders folders(const QString& account, int generation) const;
    int generationOf(const QString& account);

    const QString dataRoot_;
    const QString cacheRoot_;
    QHash<QString, int> generations_;
};

} // namespace quenby
