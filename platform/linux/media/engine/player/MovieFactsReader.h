// Reads what is to be known of a movie without playing it.
#pragma once

#include "platform/MoviePlayer.h"

namespace quenby {

// On a thread of its own; the answer comes on the context's. A movie that cannot be read has no size and no length.
void readMovieFacts(const QByteArray& path, QObject* context, MoviePlayers::FactsRead read);

} // namespace quenby
