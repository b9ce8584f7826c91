// Assembles a multipart body (RFC 2046, section 5.1) without building it in one buffer: bytes in memory are shared,
// and a part may be a device, such as a window of a large file, which is read when it is sent.
//
// Threads: one at a time.
#pragma once

#include "http/HeaderFields.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QIODevice>

#include <memory>
#include <variant>
#include <vector>

namespace quenby {

class GTMMIMEPart {
public:
    // The header block has the fields sorted by name, without regard to case.
    static GTMMIMEPart partWithHeaders(const HeaderFields& headers, const QByteArray& body);
    // Everything from the device's start to its size. It must be seekable and open for reading.
    static GTMMIMEPart partWithHeaders(const HeaderFields& headers, std::shared_ptr<QIODevice> body);

    using Body = std::variant<QByteArray, std::shared_ptr<QIODevice>>;

    const QByteArray& header() const { return headerData_; } // the whole block, with the empty line that ends it
    const Body& body() const { return bodyData_; }
    qint64 length() const;

    // Whether the bytes occur in the header block or in the body. A device is read through for it; one that cannot be
    // read counts as holding nothing, since sending it will fail anyway.
    bool containsBytes(QByteArrayView bytes) const;

private:
    GTMMIMEPart(const HeaderFields& headers, Body body);

    QByteArray headerData_;
    Body bodyData_;
};

// A finished body. The stream is seekable, so that a request with it can be sent again.
struct MIMEBody {
    std::shared_ptr<QIODevice> inputStream;
    qint64 length = 0;
    QByteArray boundary;
};

class GTMMIMEDocument {
public:
    void addPartWithHeaders(const HeaderFields& headers, const QByteArray& body);
    void addPartWithHeaders(const HeaderFields& headers, std::shared_ptr<QIODevice> body);

    qint64 length() const; // of the parts alone, without boundaries
    MIMEBody generateInputStream() const;

    // A boundary that occurs in no part.
    QByteArray uniqueBoundary() const;
    // With a seed other than 0 the boundary is the same on every run.
    void seedRandomWith(quint32 seed) { randomSeed_ = seed; }

private:
    quint32 random() const;
    bool occursInAnyPart(QByteArrayView bytes) const;

    std::vector<GTMMIMEPart> parts_;
    quint32 randomSeed_ = 0;
};

} // namespace quenby
