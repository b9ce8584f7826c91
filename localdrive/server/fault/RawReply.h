// A complete HTTP reply as bytes taken apart, for the faults that falsify one.
#pragma once

#include "localdrive/server/fault/FaultRule.h"

namespace quenby::localdrive {

struct RawReply {
    int status = 200;
    HeaderList headers;
    QByteArray body;

    // The bytes of a reply whose body is not chunked.
    static RawReply parse(const QByteArray& bytes);

    QByteArray header(QByteArrayView name) const;
    // Replaces every header of that name; an empty value removes them.
    void setHeader(const QByteArray& name, const QByteArray& value);

    // Everything of the action that concerns status, headers and body, except for the location.
    void falsify(const FaultAction& action);

    // Announces the whole body.
    QByteArray head() const;
};

} // namespace quenby::localdrive
