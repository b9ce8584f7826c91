// Finds the pictures that this desktop's screenshot tools save. Threads: the main thread; the looking is done
// elsewhere.
#pragma once

#include "platform/Service.h"

#include <QByteArray>
#include <QDateTime>
#include <QFlags>
#include <QList>
#include <QObject>

namespace quenby {

// What is known of a picture. A screenshot tool's own fresh file has all three; copies and edited ones lack at least
// one.
enum class ScreenshotFact {
    isScreenCapture = 1,   // a tool that is known saves such a file, of this name, in this folder
    captureType = 2,       // what the tool itself wrote into the file, or would have written, stands in it unchanged
    capturedRectangle = 4, // it is as large as a part of this desktop, and was saved at the moment that its name tells
};
Q_DECLARE_FLAGS(ScreenshotFacts, ScreenshotFact)

struct ScreenshotItem {
    QByteArray path;        // absolute
    QDateTime creationDate; // of the file, to the millisecond where the file system knows it
    ScreenshotFacts facts;

    friend bool operator==(const ScreenshotItem&, const ScreenshotItem&) = default;
};

class ScreenshotQuery : public QObject, public PlatformService {
    Q_OBJECT

public:
    // Looks at what is there, and from then on at what comes. The results of the first look are told as well.
    virtual void start() = 0;
    // The folders in which the desktop's own tools save, as far as that is known: absolute paths.
    virtual QList<QByteArray> knownFolders() const = 0;
    // Absolute paths of more folders to look into; in place of those that were added before. At any time; screenshots
    // that lie there already are results without being new.
    virtual void setAddedFolders(const QList<QByteArray>& folders) = 0;
    // Files that are screen captures, oldest first. Each that has all facts is whole: nobody writes to it any more.
    virtual QList<ScreenshotItem> results() const = 0;

Q_SIGNALS:
    // There are other results than before. What arrives in quick succession is told once.
    void updated();
};

} // namespace quenby

Q_DECLARE_OPERATORS_FOR_FLAGS(quenby::ScreenshotFacts)
