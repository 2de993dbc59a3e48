// What the line ends of a text are, taken together.
#pragma once

#include "text/store/Snapshot.h"

namespace text {

#ifdef _WIN32
inline constexpr bool kPlatformCrlf = true;   // what ends the lines of this platform's texts
#else
inline constexpr bool kPlatformCrlf = false;
#endif

enum class LineEnds { none, lf, crlf, mixed };

// Of the first `limit` bytes. none: no line ends there. A text of lone carriage returns is none of them, too.
LineEnds lineEndsOf(const Snapshot& text, std::int64_t limit);

}   // namespace text
