// One instance per session bus, known by the name org.quenby.Quenby.
//
// The newcomer calls Quit on whoever has the name. That one answers its handover, gives the name back and ends; the
// newcomer takes the name and waits until the older process has left the bus. Several newcomers at once end up as one:
// each asks whoever has the name at the moment, and what was handed over is handed on.
#pragma once

#include "core/TimeSource.h"
#include "platform/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>
#include <QSet>

#include <memory>

namespace quenby {

class BusSingleInstance final : public SingleInstance, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.quenby.Quenby")

public:
    // How long an older instance is waited for: for its answer, and again for its end.
    static constexpr std::chrono::seconds patience{5};
    // What is handed over at most, in bytes; the rest of a longer handover is dropped. A bus closes the connection of
    // whoever sends twice as much.
    static constexpr qsizetype largestHandover = 16 * 1024 * 1024;

    BusSingleInstance(const QDBusConnection& bus, std::shared_ptr<TimeSource> timeSource, QObject* parent = nullptr);
    ~BusSingleInstance() override;

    QString unavailableBecause() const override;
    void setHandover(std::function<Handover()> handover) override { handover_ = std::move(handover); }
    void acquire(QObject* context, Acquired acquired) override;

    // For other instances on the bus.
    Q_SCRIPTABLE QByteArrayList Quit();

private Q_SLOTS:
    void nameLost(const QString& name);

private:
    // A call of the bus itself.
    QDBusPendingCall callBus(const QString& method, const QVariantList& arguments) const;
    void requestName(bool isReplacing);
    void findOlder();
    void askOlder(const QString& uniqueName);
    // Only the first call for an older instance counts: its answer, its death, or the end of patience.
    void olderAnswered(bool isReplacing);
    void waitForOlder();
    void olderLeft(const QString& uniqueName);
    void finish();

    QDBusConnection bus_;
    std::shared_ptr<TimeSource> timeSource_;
    std::function<Handover()> handover_;
    CompletionGate<Handover> acquired_;
    Handover inherited_;          // of the older instances, until acquire() is answered
    Handover given_;              // the answer itself, until it has arrived
    QDBusServiceWatcher leaving_; // the unique names of the older instances
    QSet<QString> remaining_;     // those of them that are still on the bus
    QString asked_;               // the one whose answer is waited for
    QString refusing_;            // the last one whose answer was an error; it keeps the name until it is taken
    std::unique_ptr<Timer> timer_;
    int rounds_ = 0;
    bool hasName_ = false;
    bool isEnding_ = false;
};

} // namespace quenby
