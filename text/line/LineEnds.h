// The line ends of a whole text.
#pragma once

#include "text/store/Snapshot.h"

namespace text {

#ifdef _WIN32
inline constexpr bool kPlatformCrlf = true;   // line end of the platform
#else
inline constexpr bool kPlatformCrlf = false;
#endif

enum class LineEnds { none, lf, crlf, mixed };

// Examines the first `limit` bytes. none: no line end there, or a text with lone carriage returns.
LineEnds lineEndsOf(const Snapshot& text, std::int64_t limit);

}   // namespace text
