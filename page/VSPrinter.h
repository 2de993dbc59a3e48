// The page-layout control: takes text and styles, breaks lines and pages, and keeps the pages as plain data (PrintPages.h).
//
// All lengths are points. The next text goes to the print position: CurrentX counts from the left edge of the sheet, its height from the
// top of the sheet to the top of the line.
#pragma once

#include <QHash>
#include <QObject>
#include <QRectF>

#include "page/PrintPages.h"

class VSPrinter : public QObject {
  Q_OBJECT
 public:
  explicit VSPrinter(QObject* parent = nullptr);
  ~VSPrinter() override;

  // Page set-up, before StartDoc. Margins that are too large are reduced so that a column of at least one inch is left.
  void setPageLayout(const QPageLayout& layout);
  const QPageLayout& pageLayout() const { return layout_; }
  void setColumns(int columns);   // 1 or 2 side by side

  void StartDoc();   // deletes the pages of the last document
  void EndDoc();
  void setDocName(const QString& name) { document_.name = name; }
  // "%d" is the page number, "%n" the number of pages. Set both before StartDoc: if a margin is too low for its text, the body
  // shrinks.
  void setHeader(const PrintEdge& header) { document_.header = header; }
  void setFooter(const PrintEdge& footer) { document_.footer = footer; }

  // Style of the following text.
  QFont Font() const { return font_; }
  void setFont(const QFont& font);
  bool FontBold() const { return font_.bold(); }
  void setFontBold(bool on);
  bool FontItalic() const { return font_.italic(); }
  void setFontItalic(bool on);
  QColor TextColor() const { return color_; }
  void setTextColor(const QColor& color);
  void setNaturalOrder(bool on);   // PrintStyle::natural

  // Paragraphs: lines begin at MarginLeft + IndentLeft, the first line IndentFirst further right (it may be negative).
  double IndentLeft() const { return indentLeft_; }
  void setIndentLeft(double points) { indentLeft_ = points; }
  double IndentFirst() const { return indentFirst_; }
  void setIndentFirst(double points) { indentFirst_ = points; }
  void setIndentTab(double points) { indentTab_ = points; }   // distance of the tab stops in Print

  double MarginLeft() const;   // of the present column
  double CurrentX() {
    startLine();
    return x_;
  }
  void setCurrentX(double x);                     // like a blank: the line may break there
  void setWrapMark(bool on) { wrapMark_ = on; }   // a small arrow where a line wraps
  double TextWidth(const QString& text);          // in the present style
  double LineHeight();

  // Prints text at the print position. CR LF or LF ends the paragraph. Lines break at blanks and tabs that text follows, else
  // anywhere. Text in the hanging indent of the first line is a label and never stands alone in a line.
  void Print(const QString& text);
  void NewPage();
  // A table over the width of the text. Format and rows are cells separated by "|"; rows end with ";". A format cell is an
  // alignment ("<" left, "^" centre, ">" right), "+" (wrap, always on) and a width such as "1in".
  void AddTable(const QString& format, const QString& header, const QString& rows);
  double SpaceLeft() const;   // height below the print position

  const PrintDocument& document() const { return document_; }
  int pageCount() const;   // pages begun so far

 signals:
  void NewLineEvent();           // once for each printed line, the paragraph's last one included
  void NewPageEvent(int page);   // page (from 1) has begun

 private:
  struct Metrics;
  const Metrics& metrics();
  void startLine();
  void place(QStringView text);
  void append(QStringView text, double width);
  void breakLine();
  void wrapLine();
  void endLine();
  void gap();
  void joinRuns();
  const Metrics& metricsOf(int style);
  void startPage();
  int styleIndex();
  double columnWidth() const;
  double rightEdge() const;

  QPageLayout layout_;
  QRectF area_;   // the printable part within the margins
  int columns_ = 1, column_ = 0;
  PrintDocument document_;
  std::shared_ptr<PrintPage> page_;
  QFont font_;
  QColor color_ = Qt::black;
  bool natural_ = false;
  int style_ = -1;
  double indentLeft_ = 0, indentFirst_ = 0, indentTab_ = 36;
  double x_ = 0, y_ = 0, ascent_ = 0, height_ = 0;
  std::size_t lineRun_ = 0;       // first run of the current line
  std::size_t wordRun_ = 0;       // first run behind the last blank of the line
  bool lineHasText_ = false;      // something other than a label and blanks
  bool textBeforeWord_ = false;   // ... in front of the last blank
  bool wrapMark_ = false;
  bool inDocument_ = false, lineStarted_ = false, paragraphStarted_ = false;
  QHash<int, std::shared_ptr<Metrics>> metrics_;   // by style
  const Metrics* present_ = nullptr;
};
