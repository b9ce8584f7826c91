// The screens as the toolkit has them, and their pixels as the X server has them.
#pragma once

#include "platform/Displays.h"

#include <QHash>

#include <optional>

struct xcb_connection_t;

namespace quenby {

class ScreenDisplays final : public Displays {
    Q_OBJECT

public:
    ScreenDisplays();

    QList<Display> all() const override;
    Display main() const override;
    QScreen* screen(const Display& display) const override;
    bool isComposited() const override;
    QImage picture(const Display& display) const override;

private:
    void watch(QScreen* screen);
    void mayHaveChanged();
    void tellChange();
    QList<Display> read() const;

    xcb_connection_t* const connection_; // the application's; null without an X server
    quint32 compositor_ = 0;             // the selection that it owns
    QHash<const QScreen*, quint32> identifiers_;
    quint32 lastIdentifier_ = 0;
    mutable std::optional<QList<Display>> displays_; // as read since the last change
    QList<Display> told_;                            // as whoever listens knows them
    quint32 toldMain_ = 0;                           // identifier
    bool isTelling_ = false;
};

} // namespace quenby
