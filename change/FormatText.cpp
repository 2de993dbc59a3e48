#include "change/FormatText.h"

#include <QCoreApplication>
#include <algorithm>

#include "base/Program.h"
#include "bridge/LongWork.h"
#include "change/CaseFilter.h"
#include "change/LineTools.h"
#include "change/indent/Reindent.h"
#include "change/indent/StandingLines.h"
#include "control/code/LanguageTable.h"
#include "language/clsLang.h"
#include "text/line/LineReader.h"
#include "text/line/Words.h"

namespace {

constexpr qint64 kChunk = 50000;   // lines replaced in one edit: limits the memory of a run

constexpr std::int64_t kIndentBytes = 1024;   // maximum length of the indentation of a line

struct FormatTexts {
  Q_DECLARE_TR_FUNCTIONS(FormatText)
};

// Keeps the user's search settings while a step uses the control's own replace.
class KeepSearch {
 public:
  KeepSearch() : kept_(searchState()) {}
  ~KeepSearch() { searchState() = kept_; }

 private:
  SearchState kept_;
};

// Fast access to lines in ascending order.
class LinesInOrder {
 public:
  explicit LinesInOrder(const CodeMax& cmx) : text_(cmx.model()->snapshot()) {}
  QString operator()(qint64 line) {
    if (!reader_ || line != reader_->line().value + 1) reader_.emplace(text_, text::LineNo(line));
    std::string_view bytes;
    return reader_->next(&bytes) ? toQString(bytes) : QString();
  }

 private:
  text::Snapshot text_;
  std::optional<text::LineReader> reader_;
};

struct Cancelled {};

// Runs the work on a thread. Throws Cancelled when the user cancelled it; the block around the steps then rolls everything back.
void work(CodeMax& cmx, qint64 lines, const std::function<void(text::SearchControl&)>& step) {
  bool isCancelled = false;
  LongWork::run(
      cmx, lines,
      [&](text::SearchControl& control) {
        step(control);
        isCancelled = control.cancel;
      },
      FormatTexts::tr("Formatting..."), true);
  if (isCancelled) throw Cancelled();
}

// Passes every line through `change` and replaces those that changed. False: more than white space and letter case changed in a
// line.
template <class Change>
bool changeLines(CodeMax& cmx, LineRange lines, Change change) {
  for (qint64 at = lines.first; at < lines.end; at += kChunk) {
    const qint64 end = std::min(lines.end, at + kChunk);
    QStringList fresh;
    fresh.reserve(end - at);
    bool any = false, whole = true;
    LinesInOrder read(cmx);
    work(cmx, lines.end, [&](text::SearchControl& control) {
      for (qint64 i = at; i < end && whole && !control.cancel; ++i) {
        const QString old = read(i);
        QString now = change(i, old);
        if (now != old) {
          whole = sameInk(now, old);
          any = true;
        }
        fresh.push_back(std::move(now));
        control.bytesDone = i;
      }
    });
    if (!whole) return false;
    const BusyGuard busy;
    if (any) cmx.ReplaceLines(at, fresh);
  }
  return true;
}

// Shows the current step in the status bar, and clears it when the work has ended in any way.
class StepShown {
 public:
  void operator()(const QString& step) const { SetStatusText(step); }
  ~StepShown() { SetStatusText({}); }
};

// No step joins or splits lines, so both texts have the same line numbers. A line with another line break differs too.
qint64 linesThatDiffer(const text::Snapshot& before, const text::Snapshot& after) {
  if (before.sameAs(after)) return 0;
  text::LineReader old(before), now(after);
  const bool modesDiffer = before.lineMode() != after.lineMode();   // else a break is known by its length
  std::string_view a, b;
  qint64 differ = 0;
  bool differs = false;   // the line before
  text::ByteOffset oldEnd, nowEnd;
  while (old.next(&a) && now.next(&b)) {
    differs = differs || (old.line().value > 0 && (modesDiffer || old.start() - oldEnd != now.start() - nowEnd));
    differ += differs;
    differs = a != b;
    oldEnd = old.start() + static_cast<std::int64_t>(a.size());
    nowEnd = now.start() + static_cast<std::int64_t>(b.size());
  }
  return differ + differs;
}

// A tab that becomes no blank still becomes one blank between two characters that would else form one word or sign.
QString withoutTabs(const QString& line, int blanks) {
  if (blanks > 0) return QString(line).replace(u'\t', QString(blanks, u' '));
  QString out;
  for (qsizetype i = 0; i < line.size(); ++i) {
    if (line[i] != u'\t') {
      out += line[i];
      continue;
    }
    while (i + 1 < line.size() && line[i + 1] == u'\t') ++i;
    const auto classAt = [](QChar c) { return text::classOf(c.unicode()); };
    if (!out.isEmpty() && i + 1 < line.size() && classAt(out.back()) != text::CharClass::blank &&
        classAt(out.back()) == classAt(line[i + 1]))
      out += u' ';
  }
  return out;
}

void ConvertTabstoSpaces(CodeMax& cmx, int blanks) {
  const KeepSearch keep;
  const BusyGuard busy;
  searchState().options = {};
  searchState().preserveCase = false;
  cmx.ExecuteCmd(Cmd::SETFINDTEXT, QStringLiteral("\t"));
  cmx.ExecuteCmd(Cmd::SETREPLACETEXT, QString(blanks, u' '));
  cmx.ExecuteCmd(Cmd::REPLACEALLINBUFFER);
}

// Which lines begin within a string or here-document, so that their white space belongs to it. One flag for each line of the text;
// none is set in a language without such strings.
std::vector<bool> standingLines(CodeMax& cmx, qint64 end, const clsLang* language) {
  std::vector<bool> stay(static_cast<std::size_t>(end));
  const auto highlighter = language ? LanguageTable::find(language->Name) : nullptr;
  if (!highlighter || !highlighter->valid()) return stay;
  work(cmx, end, [&, text = cmx.model()->snapshot()](text::SearchControl& control) {
    StandingLines strings(highlighter.get(), formatRules(*language));
    if (!strings.mayHold(text, end)) return;
    text::LineReader reader(text);
    std::string_view line;
    for (qint64 i = 0; i < end && reader.next(&line) && !control.cancel; ++i) {
      strings.scan(line, nullptr);
      stay[static_cast<std::size_t>(i)] = strings.stays();
      control.bytesDone = i;
    }
  });
  return stay;
}

bool filterLetters(CodeMax& cmx, LineRange lines, CaseTarget target, CaseMode mode, const clsLang& language) {
  const auto highlighter = LanguageTable::find(language.Name);
  if (!highlighter || !highlighter->valid()) return true;
  text::LineState state = 0;
  StandingLines strings(highlighter.get(), formatRules(language));   // lines that begin within a string stay
  text::LineReader before(cmx.model()->snapshot());
  std::string_view line;
  const auto next = [&](std::string_view bytes) {
    strings.scan(bytes, nullptr);
    return strings.stays();
  };
  for (qint64 i = 0; i < lines.first && before.next(&line); ++i) {
    next(line);
    state = highlighter->scanLine(line, state, nullptr);
  }
  return changeLines(cmx, lines, [&](qint64, const QString& old) {
    const bool stays = next(fromQString(old));
    QString now = filterCase(old, target, mode, *highlighter, &state);
    return stays ? old : now;
  });
}

// Leading white space of `columns` columns; existing white space of that width is kept.
QString leadingFor(const QString& old, int columns, bool tabs, int tabSize) {
  const QString present = old.left(leadingLength(old));
  int width = 0;
  for (const QChar c : present) width += c == u'\t' ? tabSize - width % tabSize : 1;
  const bool fits = tabs ? !present.contains(QString(tabSize, u' ')) : !present.contains(u'\t');
  if (width == columns && fits) return present;
  return tabs ? QString(columns / tabSize, u'\t') + QString(columns % tabSize, u' ') : QString(columns, u' ');
}

bool reindent(CodeMax& cmx, LineRange lines, const FormatChoices& choices, const clsLang& language) {
  const bool wholeLine = choices.wholeLine;
  const int unit = wholeLine && choices.indentTabs ? cmx.TabSize() : choices.indent - 1;   // by tabs: one a level
  // The simple method finds block words in any letter case, the careful one as the language does.
  const BlockWords words = blockWordsOf(language, wholeLine && language.isCaseSensitive);
  const auto highlighter = LanguageTable::find(language.Name);
  // A selection is indented as a part of the whole text, so that it fits the lines around it.
  const auto reader = std::make_shared<LinesInOrder>(cmx);
  std::vector<int> indents;
  work(cmx, lines.end, [&, tabSize = cmx.TabSize()](text::SearchControl& control) {
    const LineSource source = [reader, &control](qint64 i) {
      if (control.cancel) throw Cancelled();
      control.bytesDone = i;
      return (*reader)(i);
    };
    indents = wholeLine ? indentsByWholeLine(source, lines.end, words, unit, highlighter.get(), formatRules(language), tabSize)
                        : indentsByFirstWord(source, lines.end, words, unit);
  });
  if (!wholeLine) {
    const std::vector<bool> stay = standingLines(cmx, lines.end, &language);
    for (std::size_t i = 0; i < stay.size(); ++i)
      if (stay[i]) indents[i] = kStays;
  }
  return changeLines(cmx, lines, [&](qint64 i, const QString& old) {
    const int columns = indents[static_cast<std::size_t>(i)];
    if (columns == kStays) return old;
    if (!wholeLine) return QString(columns, u' ') + old.mid(leadingLength(old));
    if (leadingLength(old) == old.size()) return QString();
    return leadingFor(old, columns, choices.indentTabs, cmx.TabSize()) + old.mid(leadingLength(old));
  });
}

}   // namespace

IndentStyle indentStyleOf(const CodeMax& cmx) {
  const text::Snapshot text = cmx.model()->snapshot();
  const auto beginning = [&](qint64 i) {   // the first bytes of a line that may be long
    return toQString(text::beginOfLine(text, text::LineNo(i), kIndentBytes));
  };
  return detectIndent(beginning, cmx.LineCount(), cmx.TabSize());
}

BlockWords blockWordsOf(const clsLang& language, bool caseSensitive) {
  return {language.BlockStart, language.BlockEnd, language.BlockMid, caseSensitive};
}

bool caseMatters(const FormatChoices& choices, const clsLang* language) {
  if (!language) return false;
  const FormatRules rules = formatRules(*language);
  return (choices.mainCase > 0 && rules.caseOfNames) || (choices.keywordCase > 0 && rules.caseOfAll);
}

FormatResult FormatIt(CodeMax& cmx, const clsLang* language, const FormatChoices& choices) {
  FormatResult result;
  if (cmx.ReadOnly()) {
    result.error = FormatTexts::tr("The document is read-only.");
    return result;
  }
  const bool tabsMatter = language && formatRules(*language).tabs, blanksMatter = language && blockWordsOf(*language).isEmpty();
  if (choices.tabs >= 1 && tabsMatter)
    result.notes += FormatTexts::tr("A tab is not the same as blanks in %1: the tabs stay.").arg(language->Name);
  if (choices.indent >= 1 && blanksMatter)
    result.notes += FormatTexts::tr("%1 has no block words: the indentation stays.").arg(language->Name);
  const auto mayChange = [&](CaseTarget target) {
    const bool names = target == CaseTarget::mainText;
    return choices.changeCaseAnyway || !caseMatters({.mainCase = names, .keywordCase = !names}, language);
  };
  const LineRange lines = choices.selectionOnly ? selectedLinesOrAll(cmx) : LineRange{0, cmx.LineCount()};
  const text::Snapshot before = cmx.model()->snapshot();
  const StepShown show;
  bool whole = true;
  try {
    std::optional<BusyGuard> busy;   // destroyed after the block, which sends the notification of the change
    const EditBlock block(cmx);
    if (choices.tabs >= 1 && !tabsMatter) {
      show(FormatTexts::tr("Processing Tabs"));
      const int blanks = choices.tabs - 1;
      const std::vector<bool> stay = standingLines(cmx, lines.end, language);
      if (choices.selectionOnly || blanks == 0 || std::find(stay.begin(), stay.end(), true) != stay.end())
        whole = changeLines(cmx, lines, [&](qint64 i, const QString& old) {
          return stay[static_cast<std::size_t>(i)] ? old : withoutTabs(old, blanks);
        });
      else ConvertTabstoSpaces(cmx, blanks);
    }
    show(FormatTexts::tr("Applying filter to main text"));
    if (whole && choices.mainCase > 0 && language && mayChange(CaseTarget::mainText))
      whole = filterLetters(cmx, lines, CaseTarget::mainText, CaseMode(choices.mainCase), *language);
    show(FormatTexts::tr("Applying filter to keywords"));
    if (whole && choices.keywordCase > 0 && language && mayChange(CaseTarget::keywords))
      whole = filterLetters(cmx, lines, CaseTarget::keywords, CaseMode(choices.keywordCase), *language);
    show(FormatTexts::tr("Processing Indentations"));
    if (whole && choices.indent >= 1 && language && !blanksMatter) whole = reindent(cmx, lines, choices, *language);
    busy.emplace();
    if (!whole) cmx.model()->document().rollbackGroup();
    if (whole && (choices.lineEnds == 1 || choices.lineEnds == 2)) cmx.ConvertLineEnds(choices.lineEnds == 2);
  } catch (const Cancelled&) {
    result.error = FormatTexts::tr("Cancelled: nothing was changed.");
    return result;
  }
  if (!whole) {
    result.error = FormatTexts::tr("The text would have lost more than white space and letter case; nothing was changed.");
    return result;
  }
  result.linesChanged = linesThatDiffer(before, cmx.model()->snapshot());
  return result;
}
