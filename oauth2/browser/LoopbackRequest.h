// What a request to the port of a sign-in is: the provider's one answer, which the browser brings, or something else.
// Any program of this computer can reach the port, and any page in a browser can make it ask there.
#pragma once

#include <QByteArray>
#include <QUrl>

namespace quenby::loopback {

// What only this sign-in's answer can have.
struct Expected {
    QByteArray host;  // with the port, such as "127.0.0.1:4711": a page of another host that was made to lead here has
                      // its own
    QByteArray state; // a secret
};

enum class Verdict {
    granted,     // the answer, with a code
    declined,    // the answer, with an error
    malformed,   // no HTTP/1 request
    wrongHost,   // another Host field, or none, or several
    wrongMethod, // not GET
    wrongPath,   // such as /favicon.ico
    notOurs,     // without this sign-in's state, or with parameters that no provider sends
};

constexpr bool isAnswer(Verdict verdict) { return verdict == Verdict::granted || verdict == Verdict::declined; }

struct Request {
    Verdict verdict = Verdict::malformed;
    QUrl url; // of an answer; holds the code: a secret
};

// Of a request's head, up to and without the empty line. A pure function.
Request judged(const QByteArray& head, const Expected& expected);

} // namespace quenby::loopback
