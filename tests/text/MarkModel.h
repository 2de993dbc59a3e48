// A mark as the rules of Document.h say it: the plain model that tests compare with.
#pragma once

#include <algorithm>

#include "text/store/Document.h"

namespace test {

struct ModelMark {
  text::MarkId id;
  std::int64_t at;
  text::Bias bias;
  // Step by step, in offsets that each span before has moved already.
  void move(const text::Change& change) {
    std::int64_t grown = 0;
    for (const auto& s : change.spans) {
      const auto begin = s.begin.value - grown, end = begin + s.removed;
      if (at < begin) break;
      const bool left = bias == text::Bias::left || bias == text::Bias::alongLeft;
      if (at < end || (at == end && s.removed == 0 && left)) {
        const auto along = std::min(at - begin, s.inserted);
        at = s.begin.value + (at == begin ? 0 : bias == text::Bias::left ? 0 : bias == text::Bias::right ? s.inserted : along);
        return;
      }
      grown += s.inserted - s.removed;
    }
    at += grown;
  }
};

}   // namespace test
