// Tells a key that goes down from one that repeats itself because it is held. Threads: any.
#pragma once

#include <QHash>
#include <QList>

#include <optional>

namespace quenby {

class PressedKeys {
public:
    using Time = quint32; // milliseconds of the X server

    // What was seen before is forgotten: these are down, and the others are not.
    void startWith(const QList<quint8>& down) {
        released_.clear();
        for (const quint8 code : down)
            released_.insert(code, std::nullopt);
    }
    // Whether the key went down. The server tells each repetition as a release and a press at the same time, or as a
    // press alone.
    bool press(quint8 code, Time time) {
        const auto before = released_.constFind(code);
        const bool isRepetition = before != released_.cend() && (!*before || **before == time);
        released_.insert(code, std::nullopt);
        return !isRepetition;
    }
    void release(quint8 code, Time time) {
        if (const auto pressed = released_.find(code); pressed != released_.end())
            *pressed = time;
    }

private:
    QHash<quint8, std::optional<Time>> released_; // no time: the key is down
};

} // namespace quenby
