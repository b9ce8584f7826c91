// Protects forms against being sent by other sites: a page carries a mark that only fits the browser it was shown in
// and the fields that it was shown with.
#pragma once

#include <QByteArray>

#include <httplib.h>

namespace quenby::localdrive {

// Threads: any. Marks are good while the process lives.
class FormGuard {
public:
    FormGuard();

    // The mark for a page with these fields. Sets a cookie, unless the browser has one from another page.
    QByteArray mark(const QByteArray& fields, const httplib::Request& request, httplib::Response& response) const;
    bool accepts(const QByteArray& mark, const QByteArray& fields, const httplib::Request& request) const;

private:
    QByteArray sign(const QByteArray& nonce, const QByteArray& fields) const;

    const QByteArray key_;
};

} // namespace quenby::localdrive
