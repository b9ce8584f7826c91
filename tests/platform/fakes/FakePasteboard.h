// A clipboard of the test's own.
#pragma once

#include "platform/Pasteboard.h"

#include <QFile>
#include <QImage>

namespace quenby::testing {

class FakePasteboard final : public Pasteboard {
public:
    // What somebody copied: it takes the place of what was there.
    void copyFiles(const QList<QByteArray>& paths) { put(PasteboardContents::files).files_ = paths; }
    void copyPicture(const QImage& picture) { put(PasteboardContents::picture).picture_ = picture; }
    void copyOther() { put(PasteboardContents::other); }
    void clear() { put(PasteboardContents::nothing); }
    // Its owner ends after the next look at what there is.
    void vanishAfterNextLook() { isVanishing_ = true; }

    void setText(const QString& text) override { put(PasteboardContents::text).text_ = text; }
    QString text() const override { return text_; }
    PasteboardContents contents() const override {
        const PasteboardContents seen = contents_;
        if (isVanishing_)
            const_cast<FakePasteboard*>(this)->clear();
        return seen;
    }
    QList<QByteArray> filePaths() const override { return files_; }
    void writePicture(const QByteArray& path, QObject* context, std::function<void(bool)> done) override {
        CompletionGate<bool>(context, std::move(done))
            .deliver(!picture_.isNull() && picture_.save(QFile::decodeName(path), "tiff"));
    }

private:
    FakePasteboard& put(PasteboardContents contents) {
        contents_ = contents;
        text_.clear();
        files_.clear();
        picture_ = {};
        isVanishing_ = false;
        return *this;
    }

    PasteboardContents contents_ = PasteboardContents::nothing;
    QString text_;
    QList<QByteArray> files_;
    QImage picture_;
    bool isVanishing_ = false;
};

} // namespace quenby::testing
