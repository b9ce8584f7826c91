// The HTML pages, with their texts filled in.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <httplib.h>

namespace quenby::localdrive {

// Threads: any, once made.
class PageTemplates {
public:
    using Values = QHash<QString, QString>;

    PageTemplates();

    // The page "NAME.html" with each {{key}} replaced by its value, escaped for HTML. Keys of the form {{{key}}} take
    // their value as it is: HTML that was made by fill() itself. A line {{>part}} stands for the file "part.html".
    QString fill(const QString& name, const Values& values) const;
    QByteArray styleSheet() const { return styleSheet_; }
    // What the sharing dialog does in the browser.
    QByteArray shareScript() const { return shareScript_; }

    // Sends a page that may run no script, take nothing from elsewhere, and not be framed. `formTarget` is an origin
    // besides our own to which a form's answer may redirect.
    static void send(httplib::Response& response, int status, const QString& page, const QString& formTarget = {});
    // The same for a page that sends no form but runs our own script files, which may ask this server.
    static void sendWithScript(httplib::Response& response, int status, const QString& page);

private:
    QHash<QString, QString> pages_;
    QByteArray styleSheet_;
    QByteArray shareScript_;
};

} // namespace quenby::localdrive
