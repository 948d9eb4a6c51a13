#pragma once

/// What every command of projectctl ends with.
inline constexpr int exitDone = 0;      ///< made, shown, sound or valid
inline constexpr int exitNegative = 1;  ///< judged, and found unsound or invalid
inline constexpr int exitFailed = 2;    ///< refused, failed, or could not be judged
