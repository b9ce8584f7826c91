#include "platform/linux/screenshots/FolderLook.h"

#include "platform/linux/screenshots/FactsOfFile.h"
#include "platform/linux/screenshots/ScreenshotTools.h"

#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace quenby {
namespace {

QByteArray pathOf(const FolderLook& look, const QByteArray& name) { return look.folder + '/' + name; }

// Never waits for a writer (a pipe) and never follows a link: what a link leads to is no file that a tool made here.
CapturedPicture readPicture(const QByteArray& path, const FileStamp& stamp) {
    const int file = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
    if (file < 0)
        return {};
    CapturedPicture picture;
    if (const auto opened = FileStamp::of(file); opened && opened->isSameFile(stamp) && opened->isRegular)
        picture = inspectPicture(file, opened->size);
    ::close(file);
    return picture;
}

FoundPicture found(const FolderLook& look, const QByteArray& name, const FileStamp& stamp) {
    FoundPicture found{stamp, ScreenshotFact::isScreenCapture, false};
    if (stamp.creation() < look.notBefore || !wasMadeWhenNamed(name, stamp))
        return found;
    const CapturedPicture picture = readPicture(pathOf(look, name), stamp);
    found.isPartial = picture.state == CapturedPicture::State::partial;
    found.facts = found.isPartial ? ScreenshotFacts() : factsOfFile(name, stamp, picture, look.desktopPixels);
    return found;
}

void lookAtFile(const FolderLook& look, const QByteArray& name, FoundPictures& pictures) {
    const auto stamp = FileStamp::of(pathOf(look, name));
    if (stamp && stamp->isRegular)
        pictures.insert(name, found(look, name, *stamp));
    else
        pictures.remove(name);
}

QList<QByteArray> screenshotNames(const QByteArray& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.constData()), ::closedir);
    QList<QByteArray> names;
    while (const dirent* const entry = entries ? ::readdir(entries.get()) : nullptr) {
        // Some file systems don't say what an entry is.
        if ((entry->d_type == DT_REG || entry->d_type == DT_UNKNOWN) && isScreenshotName(entry->d_name))
            names.append(entry->d_name);
    }
    return names;
}

} // namespace

FolderContents lookAtFolder(const FolderLook& look, const FolderContents& known) {
    // Before the list is read: what comes meanwhile changes the folder once more.
    FolderContents contents{FileStamp::ofTarget(look.folder), {}, QDateTime::currentMSecsSinceEpoch()};
    if (!contents.folder)
        return contents;
    const QList<QByteArray> names = screenshotNames(look.folder);
    contents.pictures.reserve(names.size());
    for (const QByteArray& name : names) {
        const auto stamp = FileStamp::of(pathOf(look, name));
        const auto before = known.pictures.constFind(name);
        if (stamp && before != known.pictures.cend() && before->stamp == *stamp)
            contents.pictures.insert(name, *before);
        else if (stamp && stamp->isRegular)
            contents.pictures.insert(name, found(look, name, *stamp));
    }
    return contents;
}

FolderContents lookAtFiles(const FolderLook& look, const FolderContents& known, const QSet<QByteArray>& names) {
    FolderContents contents = known;
    for (const QByteArray& name : names)
        lookAtFile(look, name, contents.pictures);
    return contents;
}

bool mayHaveChanged(const FolderLook& look, const FolderContents& known) {
    // A file that came into a folder soon after another may have left its time of change as it was.
    constexpr qint64 coarsest = 4000; // milliseconds
    const auto folder = FileStamp::ofTarget(look.folder);
    if (!folder || !known.folder)
        return folder.has_value() != known.folder.has_value();
    if (*folder != *known.folder || folder->contentsChanged / 1'000'000 + coarsest > known.listed)
        return true;
    for (const FoundPicture& picture : known.pictures) {
        if (picture.isPartial)
            return true;
    }
    return false;
}

} // namespace quenby
