// How far a recording has come; one value of the program, which the overlay and the recording read and write. Threads:
// the main thread.
#pragma once

namespace quenby {

struct RecordingState {
    bool isRecordingVideo = false;        // from the command to the stop
    bool isRecordingVideoClicked = false; // the overlay is up and waits for a selection
    bool isCropSelection = false;         // a rectangle was begun on the overlay
};

} // namespace quenby
