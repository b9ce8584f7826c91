// What the program is made of besides its own sources, and under which licences.
//
// Threads: any.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace quenby {

struct UsedPart {
    QString name;
    QString purpose;
    QString version; // in use, or built against; empty: the one that this computer has
    QString licence; // an SPDX expression
    // Where a copy of it is looked for: names in the folder of licences that Debian's systems share, and packages whose
    // notice stands beside their documents.
    QStringList sharedTexts;
    QString package;
};

// The program itself first.
QList<UsedPart> usedParts();

// Its identifiers, each once: "GPL-2.0-only" and "MIT" of "GPL-2.0-only OR (MIT AND MIT)".
QStringList licenceIdentifiers(const QString& expression);

// The whole texts as this computer has them: the shared licences, then the notice of the part's package. Empty when it
// has none. Reads files below the root folder, which is "/" but in tests.
QString licenceText(const UsedPart& part, const QString& root = QStringLiteral("/"));

} // namespace quenby
