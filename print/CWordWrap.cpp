#include "print/CWordWrap.h"

#include <QCoreApplication>
#include <QDate>
#include <QLocale>
#include <algorithm>
#include <cmath>

#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "control/CodeMax.h"
#include "control/code/LanguageTable.h"
#include "page/VSPrinter.h"
#include "text/line/LineReader.h"
#include "text/line/Segments.h"

namespace {

constexpr QChar kCommentStart(15), kCommentEnd(16);

// A number in print: one blank in place of the sign, then the digits.
QString signedText(qint64 number) { return QStringLiteral(" %1").arg(number); }

bool isWordChar(QChar c) { return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || c == u'_'; }

// Number of code units of the character at `at`: two for a surrogate pair.
QStringView characterAt(QStringView run, qsizetype at) {
  const bool pair = run[at].isHighSurrogate() && at + 1 < run.size() && run[at + 1].isLowSurrogate();
  return run.mid(at, pair ? 2 : 1);
}

// A byte that is not valid text prints as its two hex digits in angle brackets. An invisible character, or one that would change
// the text direction, prints as its name in angle brackets. Joiners and variation selectors between emoji are kept.
QString printable(QStringView run) {
  QString text;
  bool picture = false;
  for (qsizetype at = 0; at < run.size();) {
    const QStringView part = characterAt(run, at);
    at += part.size();
    const char32_t code = part.size() == 2 ? QChar::surrogateToUcs4(part[0], part[1]) : char32_t(part[0].unicode());
    const QString label = part.size() == 1 && part[0].isLowSurrogate()
                              ? QStringLiteral("%1").arg(code & 0xff, 2, 16, QLatin1Char('0'))
                          : picture && text::variesPictures(code) ? QString()
                                                                  : QString::fromStdString(text::hiddenLabel(code));
    picture = picture ? text::variesPictures(code) || text::isPictograph(code) : text::isPictograph(code);
    if (label.isEmpty()) text += part;
    else text += u'<' + label + u'>';
  }
  return text;
}

}   // namespace

struct CWordWrap::Job {
  VSPrinter& control;
  std::shared_ptr<const text::Highlighter> language;
  bool plainBold, plainItalic;
  QColor plainColor;
  int tabSize;
  double zeroWidth;
  bool inComment = false;   // set and cleared by the marks only
  QChar stringOpen;         // delimiter of the string being printed, if strings are coloured or the line turns
  bool turns = false;       // comments, strings and texts without a language may stand in another order than code

  void plain() {
    control.setFontBold(plainBold);
    control.setFontItalic(plainItalic);
    control.setTextColor(plainColor);
  }
};

void CWordWrap::PrintSelectedText() {
  printSelection_ = false;
  if (!cmx || cmx->GetSel(true).IsEmpty()) return;
  printSelection_ =
      MsgBox(QCoreApplication::translate("CWordWrap", "Do you just want to print the selected text only"),
             QCoreApplication::translate("CWordWrap", "Zelkor Printing"), Icon::question, Buttons::yesNo) == Answer::yes;
}

void CWordWrap::cmPrintText(VSPrinter& control, QString& line, const QString& title, bool lineNumbers, bool& result,
                            const std::function<bool(qint64, qint64)>& goOn) {
  result = false;
  qint64 first = 0, last = cmx->LineCount() - 1;
  if (printSelection_) {
    const LineRange lines = cmx->editor().selectedLines(LineAtEnd::included);
    first = lines.first;
    last = lines.end - 1;
  }
  if (last > first && last == cmx->LineCount() - 1 && cmx->GetLineLength(last) == 0)
    --last;   // behind the last line end stands no line
  const QFont font = control.Font();
  const QColor color = control.TextColor();
  control.StartDoc();
  control.setDocName(title);
  clippedLines_.clear();
  pageCounter_ = 0;
  if (lineNumbers) {
    const double width = control.TextWidth(QString(signedText(last).size() + 2, u' '));
    control.setIndentLeft(width);
    control.setIndentTab(width);
    control.setIndentFirst(-width);
  } else {
    control.setIndentLeft(0);
    control.setIndentFirst(0);
  }
  const QString language = cmx->Language();
  Job job{control,
          language.isEmpty() ? nullptr : LanguageTable::find(language),
          control.FontBold(),
          control.FontItalic(),
          color,
          std::max(1, TabSize > 0 ? TabSize : cmx->TabSize()),
          std::max(0.1, control.TextWidth(QStringLiteral("0"))),
          false,
          QChar()};
  const auto labelWidth = signedText(last).size();
  result = true;
  // The text as it is now: while the job goes on, a started program may write into a log that is being printed.
  text::LineReader reader(cmx->model()->snapshot(), text::LineNo(first));
  std::string_view bytes;
  for (qint64 i = first; i <= last && reader.next(&bytes); ++i) {
    NewLineCount = 0;
    if (lineNumbers) {
      const QString number = signedText(i + 1);
      const bool bold = control.FontBold(), italic = control.FontItalic();
      const QColor present = control.TextColor();
      if (job.inComment || inBlock_) job.plain();   // the line number is not part of a comment
      control.Print(number.rightJustified(labelWidth, u' ') + QStringLiteral(": "));
      control.setFontBold(bold);
      control.setFontItalic(italic);
      control.setTextColor(present);
    }
    line = toQString(bytes);
    if (!language.isEmpty()) ProcessComments(line);
    printLine(job, line);
    control.Print(QStringLiteral("\r\n"));
    if (NewLineCount > 1) clippedLines_.push_back(i);
    if (goOn && !goOn(i - first + 1, last - first + 1)) {
      result = false;
      break;
    }
  }
  control.setFont(font);
  control.setTextColor(color);
  control.EndDoc();
}

void CWordWrap::printLine(Job& job, const QString& line) {
  VSPrinter& control = job.control;
  job.stringOpen = QChar();
  job.turns = turns(line);
  control.setNaturalOrder(job.turns && (job.inComment || !job.language));
  for (qsizetype at = 0; at < line.size();) {
    const qsizetype begin = at;
    if (line[at] > u' ') {
      const bool word = isWordChar(line[at]);
      while (at < line.size() && line[at] > u' ' && isWordChar(line[at]) == word) ++at;
      if (!word && at < line.size() && isWordChar(line[at])) at = beforeKeyword(job, line, begin, at);
      printWord(job, line.mid(begin, at - begin));
      continue;
    }
    const QChar c = line[at];
    if (c == u' ') {
      while (at < line.size() && line[at] == u' ') ++at;
      control.Print(QString(at - begin, u' '));
      continue;
    }
    ++at;
    if (c == kCommentStart) {
      control.setFontBold(CommentsBold);
      control.setFontItalic(CommentsItalic);
      if (commentColor.isValid()) control.setTextColor(commentColor);
      job.inComment = true;
      control.setNaturalOrder(job.turns);
    } else if (c == kCommentEnd) {
      job.plain();
      job.inComment = false;
      control.setNaturalOrder(false);
    } else if (c == u'\t') {
      const double left =
          control.MarginLeft() + control.IndentLeft();   // behind the line numbers, so that tab stops are those of the screen
      auto column = static_cast<qint64>(std::nearbyint((control.CurrentX() - left) / job.zeroWidth));   // halves to the even one
      column += job.tabSize - column % job.tabSize;
      control.setCurrentX(left + static_cast<double>(column) * job.zeroWidth);
    }
  }
  control.setNaturalOrder(false);
}

// Keywords may begin with signs ("`ifdef", "$display"). If one begins within the run of signs between `begin` and the word at `at`,
// the run ends before it. If the run itself begins the keyword, it ends behind the keyword.
qsizetype CWordWrap::beforeKeyword(const Job& job, const QString& line, qsizetype begin, qsizetype at) const {
  if (job.inComment || !job.language || !job.stringOpen.isNull()) return at;
  qsizetype end = at;
  while (end < line.size() && isWordChar(line[end])) ++end;
  for (qsizetype from = std::max(begin, at - 2); from < at; ++from)
    if (job.language->isKeyword(fromQString(QStringView(line).mid(from, end - from)))) return from > begin ? from : end;
  return at;
}

void CWordWrap::printWord(Job& job, const QString& run) {
  VSPrinter& control = job.control;
  const bool emphasis = Keywordsbold || KeywordsItalic || keywordColor.isValid();
  if (!job.inComment && emphasis && job.stringOpen.isNull() && job.language && job.language->isKeyword(fromQString(run))) {
    control.setFontBold(Keywordsbold);
    control.setFontItalic(KeywordsItalic);
    if (keywordColor.isValid()) control.setTextColor(keywordColor);
    control.Print(run);
    job.plain();
    return;
  }
  if (!job.inComment && (stringColor.isValid() || job.turns) && job.language && !isWordChar(run[0])) {
    // a delimiter may stand in a run with other signs
    const auto& delims = job.language->tables().stringDelims;
    qsizetype printed = 0;
    const auto printTo = [&](qsizetype end) {
      control.Print(printable(QStringView(run).mid(printed, end - printed)));
      printed = end;
    };
    for (qsizetype at = 0; at < run.size();) {
      const QStringView c = characterAt(run, at);
      const bool delimiter = std::find(delims.begin(), delims.end(), fromQString(c)) != delims.end();
      if (delimiter && job.stringOpen.isNull()) {
        printTo(at);
        job.stringOpen = c[0];
        if (stringColor.isValid()) control.setTextColor(stringColor);
        control.setNaturalOrder(job.turns);
      } else if (c[0] == job.stringOpen) {
        printTo(at + c.size());
        job.stringOpen = QChar();
        control.setTextColor(job.plainColor);
        control.setNaturalOrder(false);
      }
      at += c.size();
    }
    printTo(run.size());
    return;
  }
  control.Print(printable(run));
}

// The marks are collected and inserted at the end, so that a line with many comments is copied only once.
void CWordWrap::ProcessComments(QString& line) {
  std::vector<std::pair<qsizetype, QChar>> marks;   // position in the original line; marks of one position in their order
  const auto cut = [&](qsizetype at) {              // a mark lies inside the delimiter that begins at `at`
    for (auto mark = marks.rbegin(); mark != marks.rend() && mark->first > at; ++mark)   // they ascend
      if (mark->first < at + single_.size()) return true;
    return false;
  };
  qsizetype block = 0, single = single_.isEmpty() ? -1 : line.indexOf(single_), end = 0;
  for (bool goOn = true; goOn;) {
    if (!inBlock_) {
      if (block >= 0) block = blockStart_.isEmpty() ? -1 : line.indexOf(blockStart_, block);
      // Not moved past closed block comments: a delimiter inside one counts, unless a mark lies between its characters.
      if (single >= 0 && !marks.empty() && marks.back().first < single + single_.size())
        while (single >= 0 && cut(single)) single = line.indexOf(single_, single + 1);
      if (single >= 0 && (block < 0 || single <= block)) {
        marks.push_back({single, kCommentStart});
        marks.push_back({line.size(), kCommentEnd});
        blockOpenMarker_ = 0;
        break;
      }
      if (block >= 0) {
        marks.push_back({block, kCommentStart});
        inBlock_ = true;
        blockOpenMarker_ = 1;
        end = block;   // the end may share the first character of the start
      } else {
        goOn = false;
      }
    }
    if (inBlock_) {
      const qsizetype found = blockOpenMarker_ != 1 || blockEnd_.isEmpty() ? -1 : line.indexOf(blockEnd_, end);
      if (found >= 0) {
        block = end = found + blockEnd_.size();
        marks.push_back({end, kCommentEnd});
        inBlock_ = false;
      } else {
        goOn = false;
      }
    }
  }
  if (marks.empty()) return;
  std::stable_sort(marks.begin(), marks.end(), [](const auto& x, const auto& y) { return x.first < y.first; });
  QString marked;
  marked.reserve(line.size() + static_cast<qsizetype>(marks.size()));
  qsizetype copied = 0;
  for (const auto& [at, mark] : marks) {
    marked += QStringView(line).mid(copied, at - copied);
    marked += mark;
    copied = at;
  }
  marked += QStringView(line).mid(copied);
  line = marked;
}

void CWordWrap::PrintReviewTable(VSPrinter& control) {
  const auto tr = [](const char* text) { return QCoreApplication::translate("CWordWrap", text); };
  const QFont font = control.Font();
  const double indent = control.IndentLeft(), first = control.IndentFirst();
  control.setIndentLeft(0);
  control.setIndentFirst(0);
  control.StartDoc();
  control.setDocName(tr("Review Sheet"));
  QFont heading(control.document().edgeFont);
  heading.setPointSizeF(18);
  heading.setBold(true);
  control.setFont(heading);
  control.Print(QStringLiteral("\r\n") + tr("Review Sheet"));
  QFont text(heading);
  text.setPointSizeF(10);
  text.setBold(false);
  control.setFont(text);
  QStringList subtitle{plainForDisplay(FilePath), plainForDisplay(UserName),
                       QLocale().toString(QDate::currentDate(), QLocale::ShortFormat)};
  subtitle.removeAll(QString());
  control.Print(QStringLiteral("\r\n") + subtitle.join(QStringLiteral(", ")) + QStringLiteral("\r\n"));
  const double inches = control.pageLayout().paintRectPoints().width() / 72;
  const int middle = std::max(1, static_cast<int>(inches) - 3);
  const auto rows = static_cast<int>(control.SpaceLeft() / (control.LineHeight() * 1.5)) - 1;   // the header row is the first one
  control.AddTable(QStringLiteral("^+1in|^+%1in|^+2in").arg(middle), tr("Line") + u'|' + tr("Comment") + u'|' + tr("Type") + u';',
                   QString(std::max(2, rows), u';'));
  control.EndDoc();
  control.setFont(font);
  control.setIndentLeft(indent);
  control.setIndentFirst(first);
}
