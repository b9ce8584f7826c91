// What every Alerts must do.
#pragma once

#include "platform/Alerts.h"

#include <QTest>
#include <QWidget>

#include <functional>
#include <memory>

namespace quenby::testing {

// The user in front of the screen.
struct AlertsUser {
    // Presses a button of the alert that was shown first of those that are to be answered.
    std::function<void(int)> presses;
    // Dismisses what is there until nothing is left.
    std::function<void()> dismissesAll;
};

inline void alertsKeepTheirContract(Alerts& alerts, QWidget& window, const AlertsUser& user) {
    const Alert question{QStringLiteral("Sure?"), {}, {}, {QStringLiteral("Yes"), QStringLiteral("No")}};
    QStringList answers;
    const auto answered = [&answers](const QString& name) {
        return [&answers, name](int button) { answers.append(name + QString::number(button)); };
    };
    QObject context;

    // One after the other, in order; never from inside of a call.
    alerts.show(&window, question, &context, answered(QStringLiteral("first ")));
    alerts.show(&window, {QStringLiteral("Told"), {}, {}, {}});
    alerts.show(&window, question, &context, answered(QStringLiteral("third ")));
    QVERIFY(answers.isEmpty());
    user.presses(1);
    user.presses(0);
    user.presses(0);
    QTRY_COMPARE(answers, (QStringList{QStringLiteral("first 1"), QStringLiteral("third 0")}));

    // Whoever cancels hears nothing, and neither does who is gone; whether the alert is still shown is up to the
    // screen.
    answers.clear();
    const CompletionTicket ticket = alerts.show(&window, question, &context, answered(QStringLiteral("cancelled ")));
    QVERIFY(ticket.cancel());
    auto gone = std::make_unique<QObject>();
    alerts.show(&window, question, gone.get(), answered(QStringLiteral("gone ")));
    gone.reset();
    user.dismissesAll();
    alerts.show(&window, question, &context, answered(QStringLiteral("last ")));
    user.presses(1);
    QTRY_COMPARE(answers, QStringList{QStringLiteral("last 1")});
}

} // namespace quenby::testing
