// The HTML pages, with their texts filled in, and the files that they are made of.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <httplib.h>

namespace quenby::localdrive {

// A style sheet, script or picture of the pages.
struct PageAsset {
    QByteArray bytes;
    const char* type; // MIME type
};

// Threads: any, once made.
class PageTemplates {
public:
    using Values = QHash<QString, QString>;

    PageTemplates();

    // The page "NAME.html" with each {{key}} replaced by its value, escaped for HTML. Keys of the form {{{key}}} take
    // their value as it is: HTML that was made by fill() itself. A line {{>part}} stands for the file "part.html".
    //
    // Addresses of assets, "/pages/NAME", that stand in pages, style sheets and scripts get a mark that changes with
    // the assets, so that browsers need not ask for what they have.
    QString fill(const QString& name, const Values& values) const;

    // Nothing for names that are none.
    const PageAsset* asset(const QString& name) const;
    // The address, with its mark, of an asset such as "icons/folder.svg".
    QString assetLink(const QString& name) const;
    const QByteArray& assetMark() const { return mark_; }

    // Sends a page that may run no script, take nothing from elsewhere, and not be framed. `formTarget` is an origin
    // besides our own to which a form's answer may redirect.
    static void send(httplib::Response& response, int status, const QString& page, const QString& formTarget = {});
    // The same for a page that sends no form but runs our own script files, which may ask this server. Our own pages
    // may frame it.
    static void sendWithScript(httplib::Response& response, int status, const QString& page);
    // For pages of the web application, which run our own script files, send forms to this server, and frame each
    // other.
    static void sendApplication(httplib::Response& response, int status, const QString& page);

private:
    struct Piece {
        QString text; // what stands before the place
        QString key;  // empty for the last piece
        bool isHtml = false;
    };

    void loadAssets(const QString& folder);
    void loadPages(const QString& folder);
    QString withMarks(QString text) const;

    QHash<QString, QList<Piece>> pages_;
    QHash<QString, PageAsset> assets_;
    QByteArray mark_;
};

} // namespace quenby::localdrive
