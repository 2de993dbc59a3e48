// Turns a document's text into the content of a print job: line by line a paragraph of styled runs, line numbers in a gutter, tab
// stops, and the list of source lines that took more than one printed line. Wrapping is VSPrinter's; this class measures, styles and counts.
//
// Source lines count from 0; printed numbers are one more. One object per print set-up.
#pragma once

#include <QColor>
#include <QString>
#include <functional>
#include <vector>

class CodeMax;
class VSPrinter;

class CWordWrap {
 public:
  // Header and footer templates: three parts split by "|", variables of the command language not yet put in.
  QString HeaderText = QStringLiteral("Zelkor Editor|$Title");
  QString FooterText = QStringLiteral("$User|$Date|Page %d");
  bool HeaderEnabled = true, FooterEnabled = true;
  bool LineNumbers = false;
  bool WrapMark = false;   // an arrow where a line goes on in the next
  int TabSize = 0;         // 0: the control's
  bool Keywordsbold = false, KeywordsItalic = false;
  bool CommentsBold = true, CommentsItalic = true;
  QString UserName, FilePath;   // for the review sheet
  int NewLineCount = 0;         // printed lines of the present source line; raised by the new-line event
  CodeMax* cmx = nullptr;       // the document's control

  // Colours are off unless set: paper has its own style.
  QColor keywordColor, commentColor, stringColor;

  int Pages() const { return pages_; }
  void setPages(int pages) { pages_ = pages; }   // by the preview, from the control's page event
  const std::vector<qint64>& ClippedLines() const { return clippedLines_; }

  // An empty delimiter switches that kind of comment off.
  void SetSingleComment(const QString& delimiter) { single_ = delimiter; }
  void SetMultiLineComment(const QString& start, const QString& end) { blockStart_ = start, blockEnd_ = end; }

  // Asks whether only the selection is to be printed; an empty one is never asked about and prints the whole text.
  void PrintSelectedText();
  void setPrintSelection(bool on) { printSelection_ = on; }
  bool printSelection() const { return printSelection_; }

  // Prints the text (or the selected lines) into the control. `line` receives each line in turn and holds the last one, as marked up, at the
  // end. `result` is true when the job ran to its end. `goOn`, when given, is asked after each line with the number done; false ends the job.
  void cmPrintText(VSPrinter& control, QString& line, const QString& title, bool lineNumbers, bool& result,
                   const std::function<bool(qint64 done, qint64 all)>& goOn = {});
  // Marks comments in one line: character 15 before the first character of each, 16 behind the last. An open block comment is carried
  // from call to call.
  void ProcessComments(QString& line);
  // A page with a table for reviewers' notes.
  void PrintReviewTable(VSPrinter& control);

 private:
  struct Job;
  void printLine(Job& job, const QString& line);
  void printWord(Job& job, const QString& run);
  qsizetype beforeKeyword(const Job& job, const QString& line, qsizetype begin, qsizetype at) const;

  QString single_, blockStart_, blockEnd_;
  bool inBlock_ = false;      // a block comment of an earlier line is open
  int blockOpenMarker_ = 0;   // 1 while the end of one opened here is looked for
  int pages_ = 0, pageCounter_ = 0;
  bool printSelection_ = false;
  std::vector<qint64> clippedLines_;
};
