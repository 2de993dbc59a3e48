// Turns the text of a document into a print job: each source line is a paragraph of styled runs, with line numbers in a gutter and
// tab stops. It also lists the source lines that needed more than one printed line. VSPrinter wraps the lines; this class measures,
// styles and counts.
//
// Source lines count from 0; printed numbers are one higher. One object for each print set-up.
#pragma once

#include <QColor>
#include <QString>
#include <functional>
#include <vector>

class CodeMax;
class VSPrinter;

class CWordWrap {
 public:
  // Templates of header and footer: three parts separated by "|", variables of the command language not replaced yet.
  QString HeaderText = QStringLiteral("Zelkor Editor|$Title");
  QString FooterText = QStringLiteral("$User|$Date|Page %d");
  bool HeaderEnabled = true, FooterEnabled = true;
  bool LineNumbers = false;
  bool WrapMark = false;   // an arrow where a line wraps
  int TabSize = 0;         // 0: the control's
  bool Keywordsbold = false, KeywordsItalic = false;
  bool CommentsBold = true, CommentsItalic = true;
  QString UserName, FilePath;   // for the review sheet
  int NewLineCount = 0;         // printed lines of the current source line; incremented by the new-line event
  CodeMax* cmx = nullptr;       // the document's control

  // By default there are no colours: bold and italic mark the text on paper.
  QColor keywordColor, commentColor, stringColor;

  int Pages() const { return pages_; }
  void setPages(int pages) { pages_ = pages; }   // set by the preview from the control's page event
  const std::vector<qint64>& ClippedLines() const { return clippedLines_; }

  // An empty delimiter disables that kind of comment.
  void SetSingleComment(const QString& delimiter) { single_ = delimiter; }
  void SetMultiLineComment(const QString& start, const QString& end) { blockStart_ = start, blockEnd_ = end; }

  // Asks whether to print the selection only. Without a selection it does not ask, and the whole text is printed.
  void PrintSelectedText();
  void setPrintSelection(bool on) { printSelection_ = on; }
  bool printSelection() const { return printSelection_; }

  // Prints the text (or the selected lines) into the control. `line` receives each line in turn, with its marks, and finally holds
  // the last one. `result` is true when the job ran to its end. `goOn`, if given, is called after each line with the number of
  // lines done; false cancels the job.
  void cmPrintText(VSPrinter& control, QString& line, const QString& title, bool lineNumbers, bool& result,
                   const std::function<bool(qint64 done, qint64 all)>& goOn = {});
  // Marks comments in one line: character 15 before the first character of each comment, 16 behind its last. An open block comment
  // is continued in the next call.
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
  int blockOpenMarker_ = 0;   // 1 while the end of a comment that began in this line is searched
  int pages_ = 0, pageCounter_ = 0;
  bool printSelection_ = false;
  std::vector<qint64> clippedLines_;
};
