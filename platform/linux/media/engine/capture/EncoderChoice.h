// Which encoders there are on this machine for H.264, and how they are set.
//
// The settings aim at the same: a constant quality that text survives, no limit of the rate, a key frame at least every
// two seconds. Threads: any, best not the main one; the framework must have been started.
#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

namespace quenby {

struct Encoder {
    QByteArray name; // as it was chosen

    // As the framework's parser reads it: from raw pictures to H.264. It is completed by the settings when the name is,
    // or ends with, the bare name of an encoder that is known.
    QByteArray description(int frameRate) const;
};

// In the order in which they are to be tried; hardware first, unless others are asked for. Those that are not installed
// are left out.
QList<Encoder> installedEncoders(const QStringList& chosen);

// Encodes a few pictures: a driver without its device cannot. Empty when it works, else the reason, for logs.
QString encoderTrouble(const Encoder& encoder);

// The encoder whose absence people are told of when there is none at all.
inline const QByteArray preferredEncoder = "x264enc";

} // namespace quenby
