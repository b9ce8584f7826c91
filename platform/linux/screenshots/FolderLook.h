// One look at one folder. It may wait for a disk or a network, and is therefore taken on a thread that may wait.
//
// Threads: any; a look shares nothing.
#pragma once

#include "platform/ScreenshotQuery.h"
#include "platform/linux/screenshots/FileStamp.h"

#include <QHash>
#include <QSet>
#include <QSize>

namespace quenby {

struct FoundPicture {
    FileStamp stamp;
    ScreenshotFacts facts;
    bool isPartial = false; // a writer is not done with it, or died; then there are no facts

    friend bool operator==(const FoundPicture&, const FoundPicture&) = default;
};

// Everything in the folder that has a screenshot's name, by name.
using FoundPictures = QHash<QByteArray, FoundPicture>;

struct FolderContents {
    std::optional<FileStamp> folder; // absent when there is none
    FoundPictures pictures;
    qint64 listed = 0; // milliseconds since 1970, when its names were read
};

struct FolderLook {
    QByteArray folder;    // absolute
    qint64 notBefore = 0; // milliseconds since 1970: the contents of files from before are not read
    QSize desktopPixels;
};

// Of the whole folder. A file that is as it was known is not read again.
FolderContents lookAtFolder(const FolderLook& look, const FolderContents& known);
// Only of these files, which somebody changed.
FolderContents lookAtFiles(const FolderLook& look, const FolderContents& known, const QSet<QByteArray>& names);
// Whether a look at the whole folder could find something else than before: for folders that must be asked.
bool mayHaveChanged(const FolderLook& look, const FolderContents& known);

} // namespace quenby
