/// @file The raw status numbers of stored schedules that this system tells apart.
#pragma once

namespace appliance {

inline constexpr int kStatusWaiting = 4; ///< a one-shot schedule whose recording has not begun
inline constexpr int kStatusRepeat = 19; ///< a repeat schedule
inline constexpr int kStatusRepeatOther = 20;

} // namespace appliance
