#include "widgets/QuotaBar.h"

namespace quenby {
namespace {

constexpr int barHeight = 8;

} // namespace

QuotaBar::QuotaBar(QWidget* parent)
    : ThinProgressBar(barHeight, parent) {
    setAccessibleName(QStringLiteral("Storage used"));
    QSizePolicy policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true); // the window must not jump when the account arrives
    setSizePolicy(policy);
}

} // namespace quenby
