// Tells a tool's own file from what was made of it within the time in which a tool might still have saved it: copies in
// another folder, moved files, and pictures that an editor put in the place of the original.
//
// Threads: one.
#pragma once

#include "platform/linux/screenshots/FolderLook.h"

#include <QHash>
#include <QSet>

namespace quenby {

class Originals {
public:
    // Whether this picture, which has all facts, was the first of its name and has stayed where it is. To be asked of
    // older ones first.
    bool isOriginal(const QByteArray& path, const FileStamp& stamp);
    // After each round: which pictures are there. The place of one that has gone may be taken by another.
    void forgetPlacesBut(const QSet<QByteArray>& paths);

private:
    struct Original {
        QByteArray path;
        FileStamp stamp;
        bool isThere = true;
    };
    QHash<QByteArray, Original> byName_; // without the folder; of this run only, so they are few
};

} // namespace quenby
