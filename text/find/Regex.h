// A regular expression, compiled by PCRE2 for matching in windows of a text that need not be in one piece: what a
// window cannot decide is reported as undecided, to be tried again in a longer one. Inside the engine.
//
// '^' and '$' match at every line, '.' matches no line break; LF, CR LF and CR are line breaks. "\n" is a whole line break
// of any of these kinds, unless the pattern names "\r" itself. Classes such as \w are those of Unicode. Bytes that are not
// valid UTF-8 match nothing.
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
  // No match holds a line break, nor depends on anything beyond its line: windows of whole lines decide all of it,
  // twice as fast. False where that is not plain to see.
  bool staysInLine() const { return staysInLine_; }
  bool needsWholeText() const { return needsWholeText_; }   // means something else in windows (\G and control verbs)
  // Bytes one of which every match holds; empty: no such thing is known.
  const ByteSet& required() const { return required_; }
  std::optional<int> groupByName(std::string_view name) const;
  int groupCount() const { return groupCount_; }   // without the whole match

  struct Outcome {
    enum Kind { found, none, undecided, failed, stopped } kind = none;
    std::size_t begin = 0, end = 0;   // found; undecided: begin is the first place that may match
  };
  struct Options {
    bool last = true;       // the text ends where the subject does; otherwise the answer may be `undecided`
    bool endsLine = true;   // with last: '$' matches at its end
    bool notEmptyAtStart = false;
    bool onlyAtStart = false;   // a match must begin at `from`
  };

  // Holds the memory of matching; one for each thread and search.
  class Matcher {
   public:
    // `stop` is asked while a match costs much: true ends it as `stopped`. So does an attempt
    // that costs more than `steps`; 0: the usual limit, whose breach is `failed`.
    explicit Matcher(const Regex& regex, std::function<bool()> stop = {}, std::uint32_t steps = 0);
    ~Matcher();
    Matcher(const Matcher&) = delete;
    Matcher& operator=(const Matcher&) = delete;
    // The window for the following matches; must stay in place meanwhile.
    void setSubject(std::string_view subject);
    Outcome match(std::size_t from, const Options& options);
    const std::string& error() const { return error_; }   // of a match that failed: the limit that was hit
    // Of the last match found: group n, npos for both when it took no part.
    std::pair<std::size_t, std::size_t> group(int n) const;

   private:
    struct Memory;
    int run(std::size_t from, const Options& options, bool careful);
    const Regex& regex_;
    std::unique_ptr<Memory> memory_;
    std::string_view subject_;
    std::string error_;
    bool careful_ = false;   // this subject was found to be costly
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
