// What an X server shows.
#pragma once

#include "platform/linux/media/engine/capture/CaptureSource.h"

namespace quenby {

class X11Source final : public CaptureSource {
    Q_OBJECT

public:
    void prepare(const CaptureInput& input) override;

private:
    void watchDisplay(const QString& name);
};

// Of the desktop's picture, whose size is not known here. The rectangle has a width and a height of two pixels at
// least.
QByteArray x11SourceDescription(const QRect& pixels, int frameRate);

} // namespace quenby
