// A page's icon as a file among the user's documents.
#pragma once

#include <QImage>
#include <QSet>
#include <QString>

#include <functional>

namespace quenby {

// Writes the icon's TIFF data under the name NUMBER.png (kept so on purpose: the name does not say what is in it) into
// a folder that is there, as a whole or not at all. No file that is there is replaced: another number is taken from
// `nextNumber`, a few times. Threads: any. Whether it was written; a failure is logged.
bool writeIconFile(const QString& folder, const QImage& icon, const std::function<quint32()>& nextNumber);

// The icons of one tab, each once, and no more than a few: a page may change its icon as often as it likes. Threads:
// the main thread; the files are written on another.
class IconKeeper {
public:
    // An empty folder: nothing is kept.
    explicit IconKeeper(QString folder)
        : folder_(std::move(folder)) {}

    void keep(const QImage& icon);

private:
    const QString folder_;
    QSet<size_t> kept_; // by their content
};

} // namespace quenby
