// The pictures of the change rows: thumbnails and type icons. Whoever fetches implements it; the rows only ask.
//
// Threads: the main thread. No call blocks: files and the network are read elsewhere, and told of by arrived().
#pragma once

#include "core/ChangeRecord.h"

#include <QImage>
#include <QObject>

namespace quenby {

class RowPictures : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // What is at hand in memory for this record; null when nothing is. Costs no reading.
    virtual QImage picture(const ChangeRecord& record) const = 0;
    // Brings the record's picture: from the cache, else by downloads of the icon and the thumbnail. The icon stands in
    // until the thumbnail comes, and never takes its place. Asked for twice, a picture is brought once. What cannot be
    // had is never told.
    virtual void want(const ChangeRecord& record) = 0;

Q_SIGNALS:
    // picture() of a record with this identifier has become another. None is larger than the rows need at 3x.
    void arrived(const QString& identifier);
};

} // namespace quenby
