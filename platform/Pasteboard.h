// The clipboard. Threads: the main thread.
#pragma once

#include "core/CompletionGate.h"
#include "platform/Service.h"

#include <QByteArray>
#include <QList>

#include <functional>

namespace quenby {

enum class PasteboardContents { nothing, files, picture, text, other };

class Pasteboard : public PlatformService {
public:
    virtual void setText(const QString& text) = 0;
    virtual QString text() const = 0;

    // By the first that applies, in the order of the enumeration. Somebody else owns the clipboard: what is there now
    // may be gone with the next call, which then answers like an empty one.
    virtual PasteboardContents contents() const = 0;
    // Absolute local paths, as bytes, in the order in which they were copied.
    virtual QList<QByteArray> filePaths() const = 0;
    // Writes the picture as TIFF into the file, atomically; whether it is there afterwards. A picture that is too large
    // to be held is none.
    virtual void writePicture(const QByteArray& path, QObject* context, std::function<void(bool isWritten)> done) = 0;
};

} // namespace quenby
