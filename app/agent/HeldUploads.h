// Uploads that were begun and wait for their account: those of a sign-in that ended by itself, and those of a program
// before this one. What was meant for one account's Drive never goes to another's unasked.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <map>

namespace quenby {

class HeldUploads {
public:
    // Lines of the upload pipeline. The account is any text that tells one account from another; empty: not known.
    void hold(const QString& account, const QList<QByteArray>& lines);
    // Those of the account; they are no longer held.
    QList<QByteArray> take(const QString& account);

    QStringList accounts() const;
    QList<QByteArray> of(const QString& account) const;
    QList<QByteArray> all() const;
    qsizetype count() const;

private:
    std::map<QString, QList<QByteArray>> lines_; // by account, none of them empty
};

} // namespace quenby
