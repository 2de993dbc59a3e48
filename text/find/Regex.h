// A regular expression, compiled by PCRE2 and matched in windows of a text that need not be contiguous. When a window is too short
// to decide, the result is "undecided", and the caller tries again with a longer one. Internal to the engine.
//
// '^' and '$' match at every line, '.' matches no line break; LF, CR LF and CR are line breaks. "\n" matches any of them, unless
// the pattern contains "\r". Classes such as \w are those of Unicode. Bytes that are not valid UTF-8 match nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/find/Scan.h"

namespace text {

class Regex {
 public:
  Regex(const std::string& pattern, bool matchCase, bool wholeWord);
  ~Regex();
  Regex(const Regex&) = delete;
  Regex& operator=(const Regex&) = delete;

  const std::string& error() const { return error_; }   // why it does not compile; empty: it does
  int lookBehind() const { return lookBehind_; }        // characters before the start that a match may look at
  bool namesLineBreaks() const { return namesLineBreaks_; }
  // True: a match never holds a line break and does not depend on other lines. Then windows of whole lines decide everything, and
  // the search is twice as fast. False when this is not obvious.
  bool staysInLine() const { return staysInLine_; }
  bool needsWholeText() const { return needsWholeText_; }   // the meaning would differ in windows (\G and control verbs)
  // Every match contains one of these bytes; empty: unknown.
  const ByteSet& required() const { return required_; }
  std::optional<int> groupByName(std::string_view name) const;
  int groupCount() const { return groupCount_; }   // without the whole match

  struct Outcome {
    enum Kind { found, none, undecided, failed, stopped } kind = none;
    std::size_t begin = 0, end = 0;   // of the match; undecided: begin is the first possible start
  };
  struct Options {
    bool last = true;       // the subject ends where the text ends; else the result may be `undecided`
    bool endsLine = true;   // with last: '$' matches at its end
    bool notEmptyAtStart = false;
    bool onlyAtStart = false;   // a match must begin at `from`
  };

  // Working memory of the matcher; one for each thread and search.
  class Matcher {
   public:
    // `stop` is called during expensive matches; if it returns true, the match ends as `stopped`. So does an attempt that costs
    // more than `steps`. With 0 steps the usual limit applies, which ends as `failed`.
    explicit Matcher(const Regex& regex, std::function<bool()> stop = {}, std::uint32_t steps = 0);
    ~Matcher();
    Matcher(const Matcher&) = delete;
    Matcher& operator=(const Matcher&) = delete;
    // The window of the following matches; it must not be moved meanwhile.
    void setSubject(std::string_view subject);
    Outcome match(std::size_t from, const Options& options);
    const std::string& error() const { return error_; }   // of a failed match: the limit that was reached
    // Of the last match: group n; npos for both if the group did not take part.
    std::pair<std::size_t, std::size_t> group(int n) const;

   private:
    struct Memory;
    int run(std::size_t from, const Options& options, bool careful);
    const Regex& regex_;
    std::unique_ptr<Memory> memory_;
    std::string_view subject_;
    std::string error_;
    bool careful_ = false;   // this subject turned out to be expensive
  };

 private:
  struct Programs;
  std::unique_ptr<Programs> programs_;
  std::string error_;
  ByteSet required_;
  int lookBehind_ = 0, groupCount_ = 0;
  bool namesLineBreaks_ = false, needsWholeText_ = false, staysInLine_ = false;
};

}   // namespace text
