#include "text/fold/FoldRules.h"

#include <algorithm>

namespace text {

namespace {

constexpr std::size_t kMostWords = 1000;   // the numbers of openers and closers fit into an event

std::vector<std::string> wordsOf(const std::string& line) {
  std::vector<std::string> words;
  std::size_t at = 0;
  while ((at = line.find_first_not_of(" \t\r", at)) != std::string::npos) {
    const std::size_t end = std::min(line.find_first_of(" \t\r", at), line.size());
    words.push_back(line.substr(at, end - at));
    at = end;
  }
  return words;
}

// Whether the closer names the opener: "endcase" for "casex" and "randcase", "endgroup" for "covergroup", "esac" for "case".
bool names(const std::string& closer, const std::string& opener) {
  if (std::equal(closer.rbegin(), closer.rend(), opener.begin(), opener.end())) return true;
  if (!closer.starts_with("end") || closer.size() < 5) return false;
  const std::string rest = closer.substr(3);
  return opener.ends_with(rest) || opener.starts_with(rest);
}

}   // namespace

FoldRules::FoldRules(const FoldLists& lists, std::shared_ptr<const Highlighter> colors)
    : colors_(std::move(colors)), set_(!lists.caseSensitive), folds_(!lists.caseSensitive) {
  const auto folded = [&](std::string text) {
    if (folds_) std::transform(text.begin(), text.end(), text.begin(), lowerAscii);
    return text;
  };
  const auto isBracket = [](const std::string& text) { return text.size() == 1 && !wordByte(text[0]); };
  bool needsIs = false;
  for (std::string entry : lists.start) {
    entry = folded(entry);
    if (entry.empty() || isBracket(entry) || words_.size() > kMostWords) continue;
    const char mark = entry.size() > 1 ? entry.back() : ' ';
    if (mark == '*' || mark == '~' || mark == '-') entry.pop_back();
    if (mark == '~') {
      const std::vector<std::string> parts = wordsOf(entry);
      if (parts.size() == 2) {
        const int first = word(parts[0]);
        words_[static_cast<std::size_t>(word(parts[1]))].nothingBefore.push_back(first);
      } else {
        words_[static_cast<std::size_t>(word(entry))].opensNothing = true;
      }
      continue;
    }
    Word& found = words_[static_cast<std::size_t>(word(entry))];
    if (mark == '-') found.needsIs = needsIs = true;
    if (found.opener >= 0) continue;
    found.opener = static_cast<int>(openerWords_.size());
    openerWords_.push_back(entry);
    openers_.push_back({.always = entry == "begin"});
  }
  for (const std::string& entry : lists.end) {
    const std::string text = folded(entry);
    if (text.empty() || isBracket(text) || words_.size() > kMostWords) continue;
    Word& found = words_[static_cast<std::size_t>(word(text))];
    if (found.closer >= 0) continue;
    found.closer = static_cast<int>(closerWords_.size());
    closerWords_.push_back(text);
  }
  indent_ = lists.start.empty();
  if (needsIs) {
    words_[static_cast<std::size_t>(word("is"))].is = true;
    words_[static_cast<std::size_t>(word("new"))].isNew = true;
  }
  std::vector<std::vector<std::string>> pairs;
  for (const std::string& rule : lists.rules) readRule(folded(rule), pairs);
  endsByName_ = endsByName_ || (closerWords_.size() == 1 && openerWords_.size() > 1);
  pairUp(pairs);
}

int FoldRules::word(std::string_view text) {
  const int known = set_.find(text);
  if (known >= 0) return known;
  const int number = static_cast<int>(words_.size());
  set_.add(text, number);
  words_.emplace_back();
  spellings_.emplace_back(text);
  if (!text.empty() && !wordByte(text[0])) signs_[static_cast<unsigned char>(text[0])] = true;
  return number;
}

void FoldRules::readRule(const std::string& rule, std::vector<std::vector<std::string>>& pairs) {
  std::vector<std::string> words = wordsOf(rule);
  if (words.empty() || words_.size() > kMostWords) return;
  const std::string what = words[0];
  words.erase(words.begin());
  const auto openerOf = [&](const std::string& text) {
    const int known = set_.find(text);
    const int number = known < 0 ? -1 : words_[static_cast<std::size_t>(known)].opener;
    return number < 0 ? nullptr : &openers_[static_cast<std::size_t>(number)];
  };
  const auto setAll = [&](bool Opener::*flag) {
    for (const std::string& text : words)
      if (Opener* opener = openerOf(text)) opener->*flag = true;
  };
  if (what == "pair") {
    if (words.size() > 1) pairs.push_back(words);
  } else if (what == "unit") {
    setAll(&Opener::unit);
  } else if (what == "named") {
    setAll(&Opener::named);
    endsByName_ = true;
  } else if (what == "arms") {
    setAll(&Opener::arms);
  } else if (what == "becomes") {
    for (const std::string& text : words) words_[static_cast<std::size_t>(word(text))].becomes = true;
  } else if (what == "stop") {
    hasStops_ = true;
    for (const std::string& text : words) words_[static_cast<std::size_t>(word(text))].stops = true;
  } else if (what == "layer") {
    int part = Word::opens;
    for (const std::string& text : words) {
      if (text == "/") ++part;
      else if (part <= Word::closes) words_[static_cast<std::size_t>(word(text))].layer = static_cast<Word::Layer>(part);
    }
  } else if (what == "region") {
    // Two marks; a mark of two words ("-- region") comes in two pairs.
    const auto half = static_cast<std::ptrdiff_t>(words.size() / 2);
    if (words.size() % 2 != 0 || words.empty()) return;
    const auto joined = [](auto from, auto to) {
      std::string text = *from;
      while (++from != to) text += ' ' + *from;
      return text;
    };
    regions_.push_back({joined(words.begin(), words.begin() + half), joined(words.begin() + half, words.end())});
  } else if (what == "commands") {
    commands_ = true;
  } else if (what == "indent") {
    indent_ = true;
  }
}

void FoldRules::pairUp(const std::vector<std::vector<std::string>>& pairs) {
  std::vector<bool> claimed(closerWords_.size()), served(openerWords_.size());
  for (Opener& opener : openers_) opener.closers.assign(closerWords_.size(), false);
  for (const std::vector<std::string>& pair : pairs) {
    const auto opener = std::find(openerWords_.begin(), openerWords_.end(), pair[0]);
    if (opener == openerWords_.end()) continue;
    const auto o = static_cast<std::size_t>(opener - openerWords_.begin());
    for (std::size_t i = 1; i < pair.size(); ++i) {
      const auto closer = std::find(closerWords_.begin(), closerWords_.end(), pair[i]);
      if (closer == closerWords_.end()) continue;
      const auto c = static_cast<std::size_t>(closer - closerWords_.begin());
      openers_[o].closers[c] = claimed[c] = served[o] = true;
    }
  }
  const std::vector<bool> ruled = served;
  for (std::size_t o = 0; o < openerWords_.size(); ++o)
    for (std::size_t c = 0; c < closerWords_.size() && !ruled[o]; ++c)
      if (names(closerWords_[c], openerWords_[o])) openers_[o].closers[c] = claimed[c] = served[o] = true;
  for (std::size_t o = 0; o < openerWords_.size(); ++o)
    for (std::size_t c = 0; c < closerWords_.size() && !served[o]; ++c)
      if (!claimed[c]) openers_[o].closers[c] = true;
}

}   // namespace text
