#include "oauth2/browser/LoopbackPages.h"

#include <QCoreApplication>
#include <QCryptographicHash>

namespace quenby::loopback {
namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quenby::loopback::Pages)
};

enum class Mood { good, declined, trouble };

struct Page {
    const char* status; // code and phrase
    Mood mood = Mood::trouble;
    QString heading;
    QString text;
};

// The mood's sign is drawn by the style sheet alone, so that it needs no picture.
const QByteArray style = R"(
:root { color-scheme: light dark; --ground: #eef1f5; --card: #ffffff; --text: #1b2129; --quiet: #4d5866;
  --edge: #d5dbe3; --sign: #1f7a3d; }
body.declined { --sign: #5b6675; }
body.trouble { --sign: #b3261e; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #14181d; --card: #20262e; --text: #e8ecf1; --quiet: #a9b4c1; --edge: #343d48; --sign: #2f9e56; }
  body.declined { --sign: #7a8696; }
  body.trouble { --sign: #d9534a; }
}
* { box-sizing: border-box; }
html, body { margin: 0; min-height: 100%; }
body { display: grid; place-items: center; min-height: 100vh; padding: 1.5rem; background: var(--ground);
  color: var(--text); font: 1rem/1.5 system-ui, "DejaVu Sans", sans-serif; }
main { width: 100%; max-width: 27rem; padding: 2.25rem 2rem; background: var(--card); border: 1px solid var(--edge);
  border-radius: 14px; text-align: center; }
.sign { display: block; position: relative; width: 3.5rem; height: 3.5rem; margin: 0 auto 1.25rem;
  background: var(--sign); border-radius: 50%; }
.sign::before, .sign::after { content: ""; position: absolute; background: #ffffff; }
.good .sign::before { left: 1.3rem; top: 0.8rem; width: 0.8rem; height: 1.5rem; background: none;
  border: solid #ffffff; border-width: 0 0.27rem 0.27rem 0; transform: rotate(45deg); }
.declined .sign::before { left: 1rem; top: 1.62rem; width: 1.5rem; height: 0.27rem; }
.trouble .sign::before { left: 1.6rem; top: 0.85rem; width: 0.3rem; height: 1.1rem; }
.trouble .sign::after { left: 1.6rem; top: 2.3rem; width: 0.3rem; height: 0.3rem; }
h1, p { text-wrap: balance; }
h1 { margin: 0 0 0.6rem; font-size: 1.4rem; line-height: 1.3; }
p { margin: 0; color: var(--quiet); }
@media (forced-colors: active) { .sign { forced-color-adjust: none; } }
)";

QByteArray nameOf(Mood mood) {
    switch (mood) {
    case Mood::good:
        return "good";
    case Mood::declined:
        return "declined";
    case Mood::trouble:
        break;
    }
    return "trouble";
}

QByteArray htmlOf(const Page& page) {
    return "<!DOCTYPE html>\n<html lang=\"" +
           Texts::tr("en", "the language of the sign-in's last page, as in HTML's lang attribute").toUtf8() +
           "\">\n<head>\n<meta charset=\"utf-8\">\n<title>Quenby</title>\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<link rel=\"icon\" href=\"data:,\">\n<style>" +
           style + "</style>\n</head>\n<body class=\"" + nameOf(page.mood) +
           "\">\n<main>\n<span class=\"sign\"></span>\n<h1 dir=\"auto\">" + page.heading.toHtmlEscaped().toUtf8() +
           "</h1>\n<p dir=\"auto\">" + page.text.toHtmlEscaped().toUtf8() + "</p>\n</main>\n</body>\n</html>\n";
}

// Nothing but the one style sheet and the empty icon is allowed to have an effect.
QByteArray contentSecurityPolicy() {
    static const QByteArray hash = QCryptographicHash::hash(style, QCryptographicHash::Sha256).toBase64();
    return "default-src 'none'; style-src 'sha256-" + hash +
           "'; img-src data:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

QByteArray responseWith(const Page& page, const QByteArray& furtherFields = {}) {
    const QByteArray body = htmlOf(page);
    return QByteArray("HTTP/1.1 ") + page.status +
           "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\nCache-Control: no-store\r\nReferrer-Policy: no-referrer\r\n"
           "X-Content-Type-Options: nosniff\r\nContent-Security-Policy: " +
           contentSecurityPolicy() + "\r\n" + furtherFields + "\r\n" + body;
}

Page nothingHere(const char* status) {
    return {status, Mood::trouble, Texts::tr("There is nothing here"),
            Texts::tr("Quenby waits at this address for a sign-in, and for nothing else. You can close this page.")};
}

} // namespace

QByteArray responseTo(Verdict verdict) {
    switch (verdict) {
    case Verdict::granted:
        return responseWith({"200 OK", Mood::good, Texts::tr("The sign-in page is done"),
                             Texts::tr("You can close this page and return to Quenby.")});
    case Verdict::declined:
        return responseWith({"200 OK", Mood::declined, Texts::tr("You are not signed in"),
                             Texts::tr("Quenby was not given access. You can close this page and return to Quenby, "
                                       "where you can try again.")});
    case Verdict::notOurs:
        return responseWith(
            {"400 Bad Request", Mood::trouble, Texts::tr("This page belongs to another sign-in"),
             Texts::tr("It was not used. Close it, return to Quenby and choose “Open the Page Again”.")});
    case Verdict::malformed:
        return responseWith(nothingHere("400 Bad Request"));
    case Verdict::wrongHost:
        return responseWith(nothingHere("421 Misdirected Request"));
    case Verdict::wrongMethod:
        return responseWith(nothingHere("405 Method Not Allowed"), "Allow: GET\r\n");
    case Verdict::wrongPath:
        break;
    }
    return responseWith(nothingHere("404 Not Found"));
}

QByteArray responseTo(Trouble trouble) {
    return responseWith(
        nothingHere(trouble == Trouble::headTooLarge ? "431 Request Header Fields Too Large" : "408 Request Timeout"));
}

} // namespace quenby::loopback
