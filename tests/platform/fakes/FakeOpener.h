// Opens nothing, and remembers what it was given.
#pragma once

#include "platform/Opener.h"

#include <QFile>
#include <QFileInfo>
#include <QList>

namespace quenby::testing {

class FakeOpener final : public Opener {
public:
    bool openURL(const QUrl& url) override {
        const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
        if (!isWeb || url.host().isEmpty() || !hasProgram_)
            return false;
        opened_.append(url);
        return true;
    }

    bool openFile(const QByteArray& path) override {
        const QFileInfo file(QFile::decodeName(path));
        if (!file.isAbsolute() || !file.isFile() || !hasProgram_)
            return false;
        openedFiles_.append(path);
        return true;
    }

    const QList<QUrl>& opened() const { return opened_; }
    const QList<QByteArray>& openedFiles() const { return openedFiles_; }
    // Whether there is a program for addresses and files.
    void setHasProgram(bool hasProgram) { hasProgram_ = hasProgram; }

private:
    QList<QUrl> opened_;
    QList<QByteArray> openedFiles_;
    bool hasProgram_ = true;
};

} // namespace quenby::testing
