// Where the pages of the service's web application live, and those of its neighbours that do not belong into a tab.
#pragma once

#include <QList>
#include <QString>
#include <QUrl>

namespace quenby {

// The addresses at one host that begin with one path. They are compared as an address is understood (RFC 3986,
// section 6.2.2 and 6.2.3), not as text: neither user information, nor a port, nor a host that merely begins or ends
// like this one makes another address belong here.
struct WebPlace {
    enum class Hosts { exactly, withSubdomains };

    QUrl base; // scheme, host, port, path
    Hosts hosts = Hosts::exactly;

    bool contains(const QUrl& url) const;
    // Also by the other one of http and https. A port that the base names stays the same.
    bool containsInEitherScheme(const QUrl& url) const;
    // Whether the address is the base itself, whatever its query.
    bool isAt(const QUrl& url) const;
    // The address with that path, which begins with a slash, below this place's.
    QUrl below(const QString& path) const;
    // The addresses that begin there.
    WebPlace within(const QString& path) const;

private:
    bool isOnHostOf(const QUrl& url) const;
};

// The path in its encoded form, without "." and ".." and with nothing encoded that need not be (RFC 3986, sections
// 6.2.2.2 and 6.2.2.3); "/" where a host has none.
QString understoodPath(const QUrl& url);

struct WebPlaces {
    WebPlace drive;  // the Drive's web application
    WebPlace docs;   // editors of native documents, in /document/, /presentation/, /spreadsheets/, /drawings/, /forms/
    WebPlace viewer; // the document viewer, with its views for printing
    WebPlace userContent; // signed addresses of files' contents
    WebPlace accounts;
    WebPlace search;              // the search site, which also has settings, feedback and printing pages
    WebPlace providerDomain;      // every host of the provider, the search site's domain
    WebPlace maps;                // below the search site
    QList<WebPlace> storagePages; // of the account's storage, and where the Drive application is offered
    QList<WebPlace> shareTargets; // of social networks
    WebPlace socialNetwork;
    QList<WebPlace> externalSites; // help, video and the like

    static WebPlaces provider();
    // Of the local Drive, whose hosts are first path segments; its neighbours are the provider's.
    static WebPlaces localDrive(const QUrl& base);
};

} // namespace quenby
