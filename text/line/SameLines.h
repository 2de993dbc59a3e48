// Whether lines of two texts are the same. Their ends do not count.
#pragma once

#include <atomic>

#include "text/store/Snapshot.h"

namespace text {

// Lines [aBegin, aEnd) of one text against [bBegin, bEnd) of the other, one by one. Linear. Cancelled: the result means nothing.
bool sameLines(const Snapshot& a, LineNo aBegin, LineNo aEnd, const Snapshot& b, LineNo bBegin, LineNo bEnd,
               const std::atomic<bool>* cancel = nullptr);

}   // namespace text
