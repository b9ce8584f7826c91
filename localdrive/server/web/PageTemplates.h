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

    // Sends a page that may run no script, take nothing from elsewhere, and not be framed. `formTarget` is an origin
    // besides our own to which a form's answer may redirect.
    static void send(httplib::Response& response, int status, const QString& page, const QString& formTarget = {});

private:
    QHash<QString, QString> pages_;
    QByteArray styleSheet_;
};

} // namespace quenby::localdrive
