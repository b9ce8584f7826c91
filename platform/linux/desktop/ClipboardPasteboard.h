// The desktop's clipboard.
#pragma once

#include "platform/Pasteboard.h"

#include <thread>

namespace quenby {

// Destroying it waits for the picture that is being written.
class ClipboardPasteboard final : public Pasteboard {
public:
    void setText(const QString& text) override;
    QString text() const override;
    PasteboardContents contents() const override;
    QList<QByteArray> filePaths() const override;
    void writePicture(const QByteArray& path, QObject* context, std::function<void(bool)> done) override;

private:
    std::jthread writer_; // of the last picture; waits for the one before it
};

} // namespace quenby
