#include "folder/ReplaceInFiles.h"

#include <algorithm>

#include "text/line/Chars.h"
#include "text/store/ContentHash.h"

namespace folder {

using text::ByteOffset;
using text::ByteRange;
using text::LineNo;
using text::Snapshot;

namespace {

constexpr std::int64_t kShown = 300;   // bytes of a line in the preview

bool insideCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

std::string cutAt(std::string text, std::size_t length) {
  if (text.size() <= length) return text;
  while (length > 0 && insideCharacter(text[length])) --length;
  return text.substr(0, length) + "...";
}

// Counts columns from one place on to the next, so that a line with many places is read once.
struct Columns {
  ByteOffset line{-1}, offset{0};   // the beginning of the line, and where the column is
  std::int64_t column = 1;
};

// An exchange with its place and what is shown of its line. Places ascend.
Exchange exchangeAt(const Snapshot& text, ByteRange range, std::string then, Columns* columns) {
  Exchange e;
  e.range = range;
  e.now = text.bytes(range);
  e.then = std::move(then);
  const LineNo line = text.lineAt(range.begin);
  const ByteOffset begin = text.lineStart(line), end = std::max(text.lineEnd(line), range.begin);
  e.line = line.value + 1;
  if (begin != columns->line) *columns = {begin, begin, 1};
  columns->column += characters(text.bytes({columns->offset, range.begin}));
  columns->offset = range.begin;
  e.column = columns->column;
  // Of a long line, what is around the place.
  ByteOffset from = std::max(begin, range.begin - kShown / 2);
  while (from > begin && from < range.begin && insideCharacter(text.at(from))) from += 1;
  e.before = (from > begin ? "..." : "") + text.bytes({from, range.begin});
  if (range.end < end) e.after = cutAt(text.bytes({range.end, std::min(end, range.end + kShown + 4)}), kShown);
  return e;
}

// Error text, empty when all of the text is planned.
std::string planText(const Snapshot& text, const FindText& what, const Replacing& replacing, std::int64_t most,
                     text::SearchControl& control, std::vector<Exchange>* exchanges) {
  std::string error;
  const text::Finder& replacer = what.replacer();
  Columns columns;
  const auto take = [&](const text::Match& match) {
    if (static_cast<std::int64_t>(exchanges->size()) >= most) {
      error = "The text is found more than " + std::to_string(kMostExchanges) +
              " times; nothing is replaced. Search in fewer files, or for a longer text.";
      return false;
    }
    auto fresh = replacer.replacementFor(text, match, replacing.by, replacing.preserveCase, &error, {});
    if (!fresh) return false;
    if (*fresh != text.bytes(match.range)) exchanges->push_back(exchangeAt(text, match.range, std::move(*fresh), &columns));
    return true;
  };
  const text::SearchEnd end = what.each(text, take, &control);
  if (error.empty()) error = end.error;
  return error;
}

}   // namespace

std::vector<text::Edit> FilePlan::edits() const {
  std::vector<text::Edit> edits;
  for (const auto& e : exchanges)
    if (e.ticked) edits.push_back({e.range, e.then});
  return edits;
}

std::int64_t ReplacePlanned::changes() const {
  std::int64_t all = 0;
  for (const auto& file : files) all += static_cast<std::int64_t>(file.exchanges.size());
  return all;
}

ReplacePlanned planReplacing(const FindText& what, const Replacing& replacing, const FindRules& rules, const FindSource& source,
                             text::SearchControl& control) {
  ReplacePlanned planned;
  // Which files have hits at all; their rows are of no use here.
  FindRules only = rules;
  only.mostHits = 0;
  only.longestLine = only.mostLines = 1;
  struct Hit {
    std::string path;
    std::optional<Snapshot> text;
  };
  std::vector<Hit> hits;
  std::map<std::string, Snapshot> given;
  planned.found = findInFiles(
      what, only,
      [&](const auto& give) {
        source([&](FindItem item) {
          if (item.text) given.emplace(item.path, *item.text);
          return give(std::move(item));
        });
      },
      [&](const FileFinds& file) {
        if (file.hits > 0 && file.skipped == Skipped::none) hits.push_back({file.path, {}});
      },
      control);
  planned.error = planned.found.error;
  std::int64_t most = kMostExchanges;
  for (auto& hit : hits) {
    if (!planned.error.empty() || control.cancel) break;
    FilePlan file;
    file.path = hit.path;
    if (const auto open = given.find(hit.path); open != given.end()) {
      file.open = true;
      file.text = open->second;
      planned.error = planText(file.text, what, replacing, most, control, &file.exchanges);
    } else {
      const text::LoadedFile loaded = text::loadFile(hit.path);
      if (!loaded.error.empty()) {
        ++planned.found.skipped[static_cast<std::size_t>(Skipped::vanished)];
        planned.found.skippedNames.emplace_back(hit.path, loaded.error);
        continue;
      }
      file.stamp = loaded.stamp;
      file.format = loaded.format;
      planned.error = planText(loaded.text, what, replacing, most, control, &file.exchanges);
    }
    if (!planned.error.empty()) planned.error = shownPath(hit.path) + ": " + planned.error;
    most -= static_cast<std::int64_t>(file.exchanges.size());
    if (!file.exchanges.empty()) planned.files.push_back(std::move(file));
  }
  planned.cancelled = control.cancel;
  if (planned.cancelled || !planned.error.empty()) planned.files.clear();
  return planned;
}

std::string planLines(const Snapshot& text, const std::vector<NewLine>& lines, FilePlan* plan) {
  Columns columns;
  for (const NewLine& one : lines) {
    if (one.line < 1 || one.line > text.lineCount()) return "It has no line " + std::to_string(one.line);
    const LineNo line(one.line - 1);
    if (text.line(line) != one.now) return "Line " + std::to_string(one.line) + " is not as the list shows it";
    const std::string_view now = one.now, then = one.then;
    std::size_t same =
        static_cast<std::size_t>(std::mismatch(now.begin(), now.end(), then.begin(), then.end()).first - now.begin());
    while (same > 0 && ((same < now.size() && insideCharacter(now[same])) || (same < then.size() && insideCharacter(then[same]))))
      --same;
    const std::size_t shorter = std::min(now.size(), then.size()) - same;
    std::size_t behind = 0;
    while (behind < shorter && now[now.size() - 1 - behind] == then[then.size() - 1 - behind]) ++behind;
    while (behind > 0 && insideCharacter(now[now.size() - behind])) --behind;
    const ByteRange range{text.lineStart(line) + static_cast<std::int64_t>(same),
                          text.lineEnd(line) - static_cast<std::int64_t>(behind)};
    plan->exchanges.push_back(exchangeAt(text, range, std::string(then.substr(same, then.size() - behind - same)), &columns));
  }
  return {};
}

std::string planLines(const std::string& path, const std::vector<NewLine>& lines, FilePlan* plan) {
  const text::LoadedFile loaded = text::loadFile(path);
  if (!loaded.error.empty()) return loaded.error;
  plan->path = path;
  plan->stamp = loaded.stamp;
  plan->format = loaded.format;
  return planLines(loaded.text, lines, plan);
}

bool fits(const FilePlan& plan, const Snapshot& text) {
  return std::all_of(plan.exchanges.begin(), plan.exchanges.end(),
                     [&](const Exchange& e) { return e.range.end <= text.size() && text.bytes(e.range) == e.now; });
}

Outcome replaceInFile(const FilePlan& plan, ReplaceRecord& record) try {
  Outcome outcome;
  outcome.path = plan.path;
  const auto fail = [&](std::string why) {
    outcome.trouble = std::move(why);
    return outcome;
  };
  std::vector<text::Edit> edits = plan.edits();
  if (edits.empty()) return outcome;
  text::LoadOptions options;
  options.format = plan.format;
  const text::LoadedFile loaded = text::loadFile(plan.path, options);
  if (!loaded.error.empty()) return fail(loaded.error);
  if (!loaded.stamp.sameContent(plan.stamp) || !fits(plan, loaded.text)) return fail("It has been changed since the search");
  const auto changes = static_cast<std::int64_t>(edits.size());
  text::Document document;
  document.reset(loaded.text);
  if (!document.apply(edits, {})) return fail("The changes overlap");
  text::EncodeError misfit;
  const auto before = text::encodeText(loaded.text.bytes(), loaded.format, &misfit);
  if (!before || text::ContentHash::of(*before) != loaded.stamp.contentHash) return fail("Its encoding cannot be kept");
  const auto after = text::encodeText(document.snapshot().bytes(), loaded.format, &misfit);
  if (!after) {
    char code[16];
    std::snprintf(code, sizeof code, "U+%04X", static_cast<unsigned>(misfit.code));
    return fail("The character " + std::string(code) + " does not fit into its encoding, " + name(loaded.format.encoding));
  }
  if (text::writeProtected(plan.path)) return fail("It is write-protected");
  std::string error = record.keep(plan.path, *before, FileContent::of(*after));
  if (!error.empty()) return fail("Its old text could not be kept: " + error);
  const text::SaveResult saved = text::saveFile(plan.path, document.snapshot(), {loaded.format, loaded.stamp});
  if (!saved.ok()) {
    // A save that failed behind the exchange may have changed it all the same; then the record stays.
    if (text::stampOf(plan.path, true).sameContent(loaded.stamp)) record.drop();
    return fail(saved.changedOnDisk ? "It has been changed since the search" : saved.error);
  }
  outcome.changes = changes;
  return outcome;
} catch (const std::bad_alloc&) { return {plan.path, 0, "Out of memory"}; }

std::string keepOfWindow(const WindowChange& change, ReplaceRecord& record) try {
  text::EncodeError misfit;
  const auto before = text::encodeText(change.before.bytes(), change.format, &misfit);
  const auto after = text::encodeText(change.after.bytes(), change.format, &misfit);
  // A text that does not fit into its encoding cannot be saved as it is; what is saved later is not what the replacing made.
  const FileContent made = before && after ? FileContent::of(*after) : FileContent();
  return record.keepOfWindow(change.path, before ? *before : change.before.bytes(), made, FileContent::of(change.onDisk));
} catch (const std::bad_alloc&) { return "Out of memory"; }

}   // namespace folder
