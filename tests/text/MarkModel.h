// A mark as the rules of Document.h say it: the plain model that tests compare with.
#pragma once

#include "text/Document.h"

namespace test {

struct ModelMark {
  text::MarkId id;
  std::int64_t at;
  text::Gravity gravity;
  // The spans as single edits, from the last to the first, so that no offset has moved when it is used.
  void move(const text::Change& change) {
    std::int64_t grown = 0;
    for (const auto& s : change.spans) grown += s.inserted - s.removed;
    for (auto s = change.spans.rbegin(); s != change.spans.rend(); ++s) {
      grown -= s->inserted - s->removed;
      const auto begin = s->begin.value - grown;
      if (at > begin && at >= begin + s->removed) at += s->inserted - s->removed;
      else if (at >= begin) at = gravity == text::Gravity::right ? begin + s->inserted : begin;
    }
  }
};

}  // namespace test
