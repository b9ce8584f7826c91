// A process of its own for tests: says on its output what it notices, and ends when its input does.
//
//   session_helper instance WORK...   is the one instance with this work; ends when it is asked to
//   session_helper stubborn WORK...   the same, but stays
//   session_helper end                waits for the session's end
//   session_helper over               has done so, and does no more
#include "platform/linux/session/BusSingleInstance.h"
#include "platform/linux/session/PosixSessionEnd.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>

#include <unistd.h>

using namespace quenby;

namespace {

void say(const QByteArray& line) {
    std::puts(line.constData());
    std::fflush(stdout);
}

void beInstance(BusSingleInstance& instance, const QStringList& work, bool isStubborn) {
    instance.setHandover([work] {
        Handover handover;
        for (const QString& one : work)
            handover.append(one.toUtf8());
        return handover;
    });
    QObject::connect(&instance, &SingleInstance::endRequested, &instance, [isStubborn] {
        say("end");
        if (!isStubborn)
            QCoreApplication::quit();
    });
    instance.acquire(&instance, [](const Handover& handover) { say("acquired " + handover.join(',')); });
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    const QString role = QCoreApplication::arguments().value(1);
    if (role == QLatin1String("end")) {
        PosixSessionEnd sessionEnd;
        QObject::connect(&sessionEnd, &SessionEnd::endRequested, &application, [] { say("end"); });
        say("ready");
        return QCoreApplication::exec();
    }
    if (role == QLatin1String("over")) {
        std::make_unique<PosixSessionEnd>().reset();
        say("ready");
        return QCoreApplication::exec();
    }
    BusSingleInstance instance(QDBusConnection::sessionBus(), makeSystemTimeSource());
    beInstance(instance, QCoreApplication::arguments().mid(2), role == QLatin1String("stubborn"));
    return QCoreApplication::exec();
}
