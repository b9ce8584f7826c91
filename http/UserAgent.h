// How a program names itself in the User-Agent field.
#pragma once

#include <QString>

namespace quenby::userAgent {

// Spaces and commas become underscores; other white space and the characters that separate a field's words go.
QString cleaned(const QString& text);

// "MacOSX/" and the "ProductVersion" of the system's version file, the form by which servers know this family of
// clients; "10.?.?" stands for a version that cannot be read, as on every system without that file. Read once for the
// process when no other file is named.
QString systemVersionString();
QString systemVersionString(const QString& versionFile);

// What an application says of itself; empty when it does not.
struct Application {
    QString userAgentID; // goes before the identifier
    QString identifier;
    QString processName;
    QString shortVersion;
    QString version; // in place of the short one

    static Application current(); // this program, from QCoreApplication
};

// The identifier and, after a slash, the version.
QString applicationIdentifier(const Application& application = Application::current());

} // namespace quenby::userAgent
