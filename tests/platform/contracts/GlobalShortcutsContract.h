// What every GlobalShortcuts must do that takes the keys which it is given.
#pragma once

#include "platform/GlobalShortcuts.h"

#include <QSignalSpy>
#include <QTest>

#include <functional>

namespace quenby::testing {

// Who sits at the keyboard, and another program. Keys are as QKeySequence writes them down.
struct ShortcutsUser {
    std::function<void(const QString& keys)> presses;
    // Another program has them from now on.
    std::function<void(const QString& keys)> takes;
};

// Three chords that nobody has.
inline void globalShortcutsKeepTheirContract(GlobalShortcuts& shortcuts, const ShortcutsUser& user,
                                             const QStringList& chords) {
    constexpr int patience = 20'000; // ms
    QSignalSpy activated(&shortcuts, &GlobalShortcuts::activated);
    const auto pressed = [&activated] { return activated.isEmpty() ? QString() : activated.last().first().toString(); };
    // Whether it was bound, or why not.
    const auto bind = [&](const QString& identifier, const QString& keys) {
        QString outcome;
        shortcuts.bind({identifier, QStringLiteral("Does it"), QKeySequence(keys, QKeySequence::PortableText)},
                       &shortcuts, [&outcome](const MaybeError& trouble) {
                           outcome = trouble ? trouble->detail(errorKey::reason).toString() : QStringLiteral("bound");
                       });
        return outcome.isEmpty() && QTest::qWaitFor([&outcome] { return !outcome.isEmpty(); }, patience) ? outcome
                                                                                                         : QString();
    };
    const QString bound = QStringLiteral("bound");
    const QString one = QStringLiteral("one");
    const QString other = QStringLiteral("other");

    QVERIFY(shortcuts.unavailableBecause().isEmpty());
    QCOMPARE(bind(one, chords.at(0)), bound);
    QCOMPARE(bind(other, chords.at(1)), bound);
    user.presses(chords.at(0));
    QTRY_COMPARE_WITH_TIMEOUT(activated.size(), 1, patience);
    QCOMPARE(pressed(), one);
    user.presses(chords.at(1));
    QTRY_COMPARE_WITH_TIMEOUT(activated.size(), 2, patience);
    QCOMPARE(pressed(), other);

    // Other keys take the place of the former ones; those do nothing, or the last press would not be the third.
    QCOMPARE(bind(one, chords.at(2)), bound);
    user.presses(chords.at(0));
    user.presses(chords.at(2));
    QTRY_COMPARE_WITH_TIMEOUT(activated.size(), 3, patience);
    QCOMPARE(pressed(), one);

    // Another program's: that is said, and what was bound before is bound no longer.
    user.takes(chords.at(0));
    const QString reason = bind(one, chords.at(0));
    QVERIFY(reason != bound && reason.endsWith(QLatin1Char('.')));
    user.presses(chords.at(2));
    user.presses(chords.at(1));
    QTRY_COMPARE_WITH_TIMEOUT(activated.size(), 4, patience);
    QCOMPARE(pressed(), other);

    // Given back at once, and as often as one likes; a ticket that was cancelled is silent.
    shortcuts.unbind(other);
    shortcuts.unbind(other);
    shortcuts.unbind(QStringLiteral("unheard"));
    const CompletionTicket ticket =
        shortcuts.bind({one, {}, QKeySequence(chords.at(2), QKeySequence::PortableText)}, &shortcuts,
                       [](const MaybeError&) { QFAIL("a cancelled completion was called"); });
    QVERIFY(ticket.cancel());
    QCOMPARE(bind(one, chords.at(2)), bound);
    user.presses(chords.at(1));
    user.presses(chords.at(2));
    QTRY_COMPARE_WITH_TIMEOUT(activated.size(), 5, patience);
    QCOMPARE(pressed(), one);
    shortcuts.unbind(one);
}

} // namespace quenby::testing
