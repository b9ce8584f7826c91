// Makes a movie of pictures: encodes them with one encoder and writes the file.
//
// The file is written in pieces of a second, each of which can be played by itself; at its end it becomes one ordinary
// movie. Threads: as Pipeline.
#pragma once

#include "platform/linux/media/engine/capture/EncoderChoice.h"
#include "platform/linux/media/engine/capture/Pipeline.h"

#include <gst/app/gstappsrc.h>

namespace quenby {

class MoviePipeline {
public:
    enum class End { whole, encoderFailed, diskFull, writingFailed };
    // On the thread that made it. Whole comes last; after a failure of the encoder it comes as well when the movie
    // could still be ended in order. May come more than once.
    using Ended = std::function<void(End end, const QString& text)>;

    explicit MoviePipeline(Ended ended);

    // Once. Fails with a sentence. The descriptor stays the caller's, and must stay open until stop().
    Result<void> start(const Encoder& encoder, int frameRate, int descriptor);
    // Where the pictures go in.
    GstAppSrc* pictures() const;
    // How many pictures have come out of the encoder.
    int recorded() const { return *recorded_; }
    // No more pictures: the movie is brought to its end, and ended() tells.
    void finish();
    // The same without the encoder, which does not answer any more.
    void finishWithoutEncoder();
    void stop() { pipeline_.stop(); }

private:
    void tell(const PipelineReport& report);

    const std::shared_ptr<std::atomic<int>> recorded_ = std::make_shared<std::atomic<int>>(0);
    const Ended ended_;
    Pipeline pipeline_; // last: it stops before the rest goes
};

} // namespace quenby
