#include "control/edit/TextModel.h"

#include <algorithm>
#include <new>

#include "control/code/LanguageTable.h"
#include "text/color/LongColors.h"
#include "text/line/Chars.h"
#include "text/line/LineEnds.h"
#include "text/line/LineMap.h"
#include "text/line/LineReader.h"

struct TextModel::Impl {
  std::shared_ptr<void> subscription;
  std::shared_ptr<const text::Highlighter> highlighter;
  int generation = -1;   // generation of the language table at the last look-up
  text::StateCache states;
  text::LongColors longColors;
  text::LineMaps lines;
  std::vector<text::LineNo> bookmarks;     // ascending
  bool modified = false;                   // as last announced
  bool loadedCrlf = text::kPlatformCrlf;   // enableCrlf() until it is set: the line end of the first line
  bool crlf = loadedCrlf;                  // as last announced

  void moveBookmarks(const text::Change& change, const text::Snapshot& now);
};

// Bookmarks stay with the text of their line; those of deleted lines are removed.
void TextModel::Impl::moveBookmarks(const text::Change& change, const text::Snapshot& now) {
  if (change.reset) bookmarks.clear();
  const auto keepsLines = [](const text::Change::Span& span) { return span.linesRemoved == 0 && span.linesInserted == 0; };
  if (std::ranges::all_of(change.spans, keepsLines)) return;   // as nearly always; there may be a million bookmarks
  const text::LineNo first = change.spans.front().oldLine, last = change.spans.back().oldLastLine();
  const std::int64_t below = change.spans.back().linesGrown();
  // In place, because nothing may fail here: each bookmark gives at most one.
  std::size_t moved = std::size_t(std::ranges::lower_bound(bookmarks, first) - bookmarks.begin());
  for (std::size_t i = moved; i < bookmarks.size(); ++i) {
    bool gone = false;
    const text::LineNo old = bookmarks[i], line = old > last ? old + below : change.mapLine(old, now, text::Bias::right, &gone);
    if (!gone && (moved == 0 || bookmarks[moved - 1] < line)) bookmarks[moved++] = line;
  }
  bookmarks.resize(moved, text::LineNo(0));
}

namespace {

// For code that only shows a change: the change is valid even if the code runs out of memory.
template <class Work>
void tell(Work work) {
  try {
    work();
  } catch (const std::bad_alloc&) {}
}

}   // namespace

TextModel::TextModel() : impl_(new Impl) {
  document_.whenCancelledOut([this] { announceModified(); });
  impl_->subscription = document_.subscribe([this](const text::Change& change) {
    impl_->states.onChange(change);
    impl_->longColors.onChange(change, snapshot());
    impl_->lines.onChange(change, snapshot());
    impl_->moveBookmarks(change, snapshot());
    tell([&] { emit changed(change); });
    tell([&] { announceModified(); });
    tell([&] { announceLineEnds(); });
  });
}

TextModel::~TextModel() = default;

void TextModel::announceModified() {
  if (impl_->modified == document_.modified()) return;
  impl_->modified = document_.modified();
  emit modifiedChanged(impl_->modified);
}

void TextModel::setModified(bool on) {
  if (on) document_.markUnsaved();
  else document_.markSaved();
  announceModified();
}

void TextModel::announceLineEnds() {
  if (std::exchange(impl_->crlf, enableCrlf()) != impl_->crlf) emit lineEndsChanged();
}

bool TextModel::enableCrlf() const {
  const text::LineBreak chosen = document_.newLine();
  return chosen == text::LineBreak::none ? impl_->loadedCrlf : chosen == text::LineBreak::crlf;
}

void TextModel::setEnableCrlf(bool on) {
  if (enableCrlf() == on) return;
  document_.setNewLine(on ? text::LineBreak::crlf : text::LineBreak::lf);
  announceLineEnds();
}

text::NewLines TextModel::newLines() const {
  return {enableCrlf() ? text::LineBreak::crlf : text::LineBreak::lf, document_.newLine() != text::LineBreak::none};
}

void TextModel::convertLineEnds(bool crlf, const text::SelectionState& before) {
  if (document_.readOnly()) return;
  const text::Snapshot now = snapshot();
  const text::LineBreak chosen = crlf ? text::LineBreak::crlf : text::LineBreak::lf;
  const std::string wanted(breakBytes(chosen));
  {
    const text::UndoGroup step(document_);
    document_.setNewLine(chosen);
    if (now.lineMode() == text::LineMode::cr) {   // the text now counts its lines in another way
      text::SnapshotBuilder builder;
      for (std::int64_t i = 0; i < now.lineCount(); ++i)
        builder.append(now.line(text::LineNo(i)) + (i + 1 < now.lineCount() ? wanted : std::string()));
      document_.exchange(builder.finish(), before);
    } else {
      std::vector<text::Edit> edits;
      text::LineReader reader(now);
      text::ByteOffset end;   // end of the previous line; in these texts a break is identified by its length
      for (std::string_view line; reader.next(&line); end = reader.start() + static_cast<std::int64_t>(line.size()))
        if (reader.line().value > 0 && reader.start() - end != static_cast<std::int64_t>(wanted.size()))
          edits.push_back({{end, reader.start()}, wanted});
      document_.apply(edits, before);
    }
  }
  announceLineEnds();
}

bool TextModel::setLanguage(const QString& name) {
  const auto found = name.isEmpty() ? nullptr : LanguageTable::find(name);
  const bool bound = found && found->valid();
  language_ = bound ? name : QString();
  impl_->generation = -1;
  highlighter();
  emit appearanceChanged();
  return bound || name.isEmpty();
}

const text::Highlighter* TextModel::highlighter() {
  if (impl_->generation != LanguageTable::generation()) {
    impl_->generation = LanguageTable::generation();
    auto found = language_.isEmpty() ? nullptr : LanguageTable::find(language_);
    if (found && !found->valid()) found = nullptr;
    if (found != impl_->highlighter) {
      impl_->highlighter = std::move(found);
      impl_->states.setHighlighter(impl_->highlighter);
      impl_->longColors.clear();
    }
  }
  return impl_->highlighter.get();
}

text::LineState TextModel::stateAt(text::LineNo line, std::int64_t budget, bool* exact) {
  if (!highlighter()) {
    if (exact) *exact = true;
    return 0;
  }
  return impl_->states.stateAt(snapshot(), line, budget, exact);
}

bool TextModel::tokensInLongLine(text::LineNo line, text::LineState state, std::int64_t from, std::int64_t to, std::int64_t budget,
                                 std::vector<text::Token>* tokens) {
  tokens->clear();
  const text::Highlighter* scanner = highlighter();
  return !scanner || impl_->longColors.tokens(*scanner, snapshot(), line, state, from, to, budget, tokens);
}

text::LineMap TextModel::line(text::LineNo line, int tabSize) { return {impl_->lines, snapshot(), line, tabSize}; }
text::LineMaps& TextModel::lines() { return impl_->lines; }

bool TextModel::hasBookmark(text::LineNo line) const {
  return std::binary_search(impl_->bookmarks.begin(), impl_->bookmarks.end(), line);
}

bool TextModel::hasBookmark(text::LineNo first, text::LineNo end) const {
  const auto next = std::ranges::lower_bound(impl_->bookmarks, first);
  return next != impl_->bookmarks.end() && *next < end;
}

void TextModel::setBookmark(text::LineNo line, bool on) { setBookmarks(std::span(&line, 1), on); }

void TextModel::setBookmarks(std::span<const text::LineNo> lines, bool on) {
  std::vector<text::LineNo> result;
  if (on) std::set_union(impl_->bookmarks.begin(), impl_->bookmarks.end(), lines.begin(), lines.end(), std::back_inserter(result));
  else
    std::set_difference(impl_->bookmarks.begin(), impl_->bookmarks.end(), lines.begin(), lines.end(), std::back_inserter(result));
  const auto inText = [this](text::LineNo line) { return line.value >= 0 && line.value < snapshot().lineCount(); };
  std::erase_if(result, [&](text::LineNo line) { return !inText(line); });
  result.erase(std::unique(result.begin(), result.end()), result.end());
  if (result == impl_->bookmarks) return;
  impl_->bookmarks = std::move(result);
  emit appearanceChanged();
}

void TextModel::clearBookmarks() {
  if (impl_->bookmarks.empty()) return;
  impl_->bookmarks.clear();
  emit appearanceChanged();
}

std::vector<text::LineNo> TextModel::bookmarks() const { return impl_->bookmarks; }

void TextModel::replaceAll(text::Snapshot snapshot, text::FileFormat newFormat) {
  format = newFormat;
  // The line end of the first line; a text without line ends gets that of the platform.
  if (snapshot.lineMode() == text::LineMode::cr) {
    impl_->loadedCrlf = true;
  } else if (snapshot.lineCount() == 1) {
    impl_->loadedCrlf = text::kPlatformCrlf;
  } else {
    const text::ByteOffset end = snapshot.lineEndWithBreak(text::LineNo(0));
    impl_->loadedCrlf = snapshot.lineBreak(text::LineNo(0)) == text::LineBreak::crlf;
    for (text::ByteOffset at(0); !impl_->loadedCrlf && at < end;) {
      std::string_view chunk = snapshot.chunkAt(at);
      chunk = chunk.substr(0, static_cast<std::size_t>(std::min<std::int64_t>(end - at, static_cast<std::int64_t>(chunk.size()))));
      impl_->loadedCrlf = chunk.find('\r') != std::string_view::npos;
      at += static_cast<std::int64_t>(chunk.size());
    }
  }
  document_.reset(std::move(snapshot));
  tell([&] { announceModified(); });
  tell([&] { announceLineEnds(); });
  tell([&] { emit appearanceChanged(); });
}
