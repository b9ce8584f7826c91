// What every Keyring must do.
#pragma once

#include "platform/Keyring.h"

#include <QSignalSpy>
#include <QTest>

#include <functional>

namespace quenby::testing {

inline constexpr int keyringPatience = 30'000; // ms

// Operations on one item, answered in words: the bytes that were read, "done", or the error's code in brackets.
class KeyringClient {
public:
    KeyringClient(Keyring& keyring, const QString& account)
        : keyring_(keyring)
        , item_{QStringLiteral("Drive: Google Drive"), account} {}

    CompletionTicket read() {
        return keyring_.read(item_, &context_, [this](const Result<QByteArray>& data) {
            answers.append(data.ok() ? data.value() : word(data.error()));
        });
    }
    CompletionTicket write(const QByteArray& data) { return keyring_.write(item_, data, &context_, done()); }
    CompletionTicket remove() { return keyring_.remove(item_, &context_, done()); }

    QByteArrayList answers;

private:
    static QByteArray word(const Error& error) {
        if (error.domain() != keyringErrorDomain || error.description().isEmpty())
            return "(foreign error)";
        return '(' + QByteArray::number(error.code()) + ')';
    }
    Keyring::Done done() {
        return [this](const MaybeError& error) { answers.append(error ? word(*error) : QByteArray("done")); };
    }

    Keyring& keyring_;
    KeyringItem item_;
    QObject context_;
};

inline const QByteArray notFound = "(1)", isLocked = "(2)", isUnavailable = "(3)", hasFailed = "(4)";

#define QUENBY_ANSWERS(client, ...)                                                                                    \
    do {                                                                                                               \
        QTRY_COMPARE_WITH_TIMEOUT((client).answers.size(), (QByteArrayList{__VA_ARGS__}).size(), keyringPatience);     \
        QCOMPARE(std::exchange((client).answers, {}), (QByteArrayList{__VA_ARGS__}));                                  \
    } while (false)

// The keyring is unlocked and holds nothing.
inline void keyringKeepsItsContract(Keyring& keyring) {
    QCOMPARE(keyring.unavailableBecause(), QString());
    KeyringClient client(keyring, QStringLiteral("OAuth"));
    KeyringClient other(keyring, QStringLiteral("other"));
    client.read();
    client.remove();
    QVERIFY(client.answers.isEmpty()); // never from inside of a call
    QUENBY_ANSWERS(client, notFound, "done");

    // In the order in which they were asked for, and each account for itself.
    client.write("refresh_token=1%2F2&x=%C3%BC");
    client.read();
    client.write("second");
    client.read();
    QUENBY_ANSWERS(client, "done", "refresh_token=1%2F2&x=%C3%BC", "done", "second");
    other.read();
    QUENBY_ANSWERS(other, notFound);

    // Any bytes, one kind after the other.
    const QByteArrayList bytes{"caf\xc3\xa9\n", QByteArray("a\0b", 3), "\xff\xfe", "plain again", QByteArray()};
    for (const QByteArray& data : bytes) {
        client.write(data);
        client.read();
        QUENBY_ANSWERS(client, "done", data);
    }

    // Who is not interested any more is not told.
    QVERIFY(client.read().cancel());
    {
        KeyringClient gone(keyring, QStringLiteral("OAuth"));
        gone.read();
    }
    client.remove();
    client.read();
    QUENBY_ANSWERS(client, "done", notFound);
}

// What happens around a keyring.
struct KeyringUser {
    std::function<void()> locks;
    // Answers the question for the password, after it has come up.
    std::function<void()> dismisses;
    std::function<void()> typesPassword;
    // In another program.
    std::function<void()> unlocksElsewhere;
};

// The keyring is unlocked.
inline void lockedKeyringKeepsItsContract(Keyring& keyring, const KeyringUser& user) {
    KeyringClient client(keyring, QStringLiteral("OAuth"));
    QSignalSpy available(&keyring, &Keyring::becameAvailable);
    client.write("secret");
    QUENBY_ANSWERS(client, "done");

    // Waiting for the password is no failure, and no other news.
    user.locks();
    client.read();
    user.typesPassword();
    QUENBY_ANSWERS(client, "secret");
    user.locks();
    client.write("newer");
    user.typesPassword();
    QUENBY_ANSWERS(client, "done");

    // A dismissed question is not taken for an entry that is not there, nor for one that was removed.
    user.locks();
    client.read();
    user.dismisses();
    QUENBY_ANSWERS(client, isLocked);
    client.remove();
    user.dismisses();
    QUENBY_ANSWERS(client, isLocked);
    client.write("newest");
    user.dismisses();
    QUENBY_ANSWERS(client, isLocked);

    available.clear();
    user.unlocksElsewhere();
    QTRY_COMPARE_WITH_TIMEOUT(available.size(), 1, keyringPatience);
    client.read();
    QUENBY_ANSWERS(client, "newer");
    client.remove();
    QUENBY_ANSWERS(client, "done");
}

} // namespace quenby::testing
