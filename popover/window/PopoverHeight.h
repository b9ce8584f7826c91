// The popover's height, which the user chooses and the settings keep. In logical pixels.
#pragma once

namespace quenby {

class Defaults;

inline constexpr int leastPopoverHeight = 250;
inline constexpr int greatestPopoverHeight = 550;
inline constexpr int usualPopoverHeight = 432;

// What is kept under "heightForStatusMenu", brought between the limits; the usual height when nothing is kept, or
// nothing that is a number.
int keptPopoverHeight(const Defaults& defaults);
void keepPopoverHeight(Defaults& defaults, int height);

} // namespace quenby
