// How much of the account's quota is used, and by which of its services.
#pragma once

#include <QList>
#include <QString>

namespace quenby {

struct ServiceUsage {
    QString name; // as people know it: "Drive", "Gmail", "Photos"
    qint64 bytes = 0;

    friend bool operator==(const ServiceUsage&, const ServiceUsage&) = default;
};

struct AccountUsage {
    qint64 total = 0; // bytes; 0: without limit, or not known
    qint64 used = 0;  // by all services together
    QList<ServiceUsage> services;

    friend bool operator==(const AccountUsage&, const AccountUsage&) = default;
};

} // namespace quenby
