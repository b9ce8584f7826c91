// What the windows show of the account in words, whatever is known of it at the moment.
#pragma once

#include <QString>

#include <optional>

namespace quenby {

struct AccountDisplay {
    QString userName;
    QString accountName; // the e-mail address
    QString quota;       // "37% of 15 GB used", or why there is nothing to tell
    std::optional<int> percentUsed;

    friend bool operator==(const AccountDisplay&, const AccountDisplay&) = default;
};

} // namespace quenby
