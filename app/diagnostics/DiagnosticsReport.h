// What somebody who helps needs to know of a program that does not work as it should: which parts of the desktop are
// there, and how the account stands. No names, addresses, paths or secrets.
//
// Threads: any.
#pragma once

#include "app/diagnostics/PersonalWords.h"

#include <QList>
#include <QString>

#include <utility>

namespace quenby {

struct DiagnosticsSection {
    QString title;
    QList<std::pair<QString, QString>> lines; // what, and how it is
};

// As plain text that reads well in a message. What reads like a secret, an e-mail address or the user's name and home
// is taken out, wherever it came from.
QString diagnosticsText(const QList<DiagnosticsSection>& sections,
                        const PersonalWords& personal = PersonalWords::ofThisUser());

} // namespace quenby
