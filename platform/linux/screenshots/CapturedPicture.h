// What a picture's file says about itself: whether it is whole, how large the picture is, and the texts in it. The
// picture is not decoded; only its frame is read, however large the file is.
//
// Threads: any; inspecting may wait for a disk or a network.
#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>

namespace quenby {

struct PictureText {
    QByteArray key;   // such as "Software"; what is no text has the name of its part of the file: "tIME", "eXIf"
    QByteArray value; // its beginning; empty when it is packed

    friend bool operator==(const PictureText&, const PictureText&) = default;
};

struct CapturedPicture {
    enum class State {
        partial, // not there, not to be read, or not whole yet
        whole,
        strange, // no PNG, JPEG or WebP picture, or more than one
    };

    State state = State::partial;
    QSize size; // pixels
    QList<PictureText> texts;
};

// Of an open file of this size in bytes.
CapturedPicture inspectPicture(int descriptor, qint64 size);

} // namespace quenby
