// Puts a response's head together from the lines that a connection receives.
#pragma once

#include "http/URLRequest.h"

#include <QByteArrayView>

namespace quenby {

class ResponseHead {
public:
    enum class Progress { more, complete };

    // One line with its line break: a status line begins a new head, an empty line completes it. Lines that belong to
    // no head, such as trailer fields after the body, are passed over.
    Progress addLine(QByteArrayView line);

    int statusCode() const { return statusCode_; }
    const HeaderFields& headers() const { return headers_; }
    // 1xx: the response proper is still to come.
    bool isInterim() const { return statusCode_ < 200; }

private:
    bool isOpen_ = false;
    int statusCode_ = 0;
    HeaderFields headers_;
    QByteArray lastName_; // for folded lines (RFC 9112, section 5.2)
    QByteArray lastValue_;

    void closeField();
};

} // namespace quenby
