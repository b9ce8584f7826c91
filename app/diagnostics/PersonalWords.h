// What tells who the user is, and so has no place in a report.
//
// Threads: any.
#pragma once

#include <QString>
#include <QStringList>

namespace quenby {

struct PersonalWords {
    QStringList homes; // absolute paths
    QStringList names; // of the login, the computer, the person

    // As the environment has them. Nobody is asked: a directory service may take its time.
    static PersonalWords ofThisUser();
};

// Without secrets, addresses, paths and these words: each has a word in its place that says what it was. One line.
QString anonymousText(const QString& text, const PersonalWords& personal);

} // namespace quenby
