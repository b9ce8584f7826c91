// The report's sections on the services of the session bus. They are asked all at once, and only those that run:
// nothing is started for a report.
//
// Threads: the main thread; nothing blocks.
#pragma once

#include "app/diagnostics/DiagnosticsReport.h"
#include "core/TimeSource.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace quenby {

class BusFacts final : public QObject {
    Q_OBJECT

public:
    BusFacts(const QDBusConnection& bus, std::shared_ptr<TimeSource> timeSource, QObject* parent = nullptr);
    ~BusFacts() override;

    // Once. Done with the last answer, or when the patience is over; never from inside.
    void ask(std::function<void()> done);
    // What has not answered says so.
    QList<DiagnosticsSection> sections() const;

private:
    enum Part { portals, keyring, notifications, trays }; // in the report's order

    struct Place {
        Part part;
        qsizetype line;
    };

    // A line that says "no answer" until it is set.
    Place addLine(Part part, const QString& what);
    void set(const Place& place, const QString& how) { sections_[place.part].lines[place.line].second = how; }

    using Answered = std::function<void(const QDBusMessage& reply)>;
    void call(QDBusMessage question, Answered answered);
    void callBus(const QString& method, Answered answered);
    void namesAreKnown();
    // Says in the part's first line whether the service runs.
    bool runs(Part part, const QString& service);
    void askPortals();
    void askKeyring();
    void askKeyringLocked(const QString& collection, const Place& place);
    void askNotifications();
    void askTrays();
    void finishSoon();

    QDBusConnection bus_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::function<void()> done_;
    std::unique_ptr<Timer> patience_;
    int unanswered_ = 0;
    std::optional<QStringList> running_;   // names on the bus
    std::optional<QStringList> startable_; // names that the bus would start somebody for
    QList<DiagnosticsSection> sections_;   // by part
};

} // namespace quenby
