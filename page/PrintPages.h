// Laid-out pages as plain data: what VSPrinter makes, and what is drawn to a screen, a printer or a PDF file by one and the same code.
//
// All lengths are points (1/72 inch) from the upper left corner of the sheet. A page holds its text once; runs point into it, so that the
// layout of a long text stays small.
#pragma once

#include <QColor>
#include <QFont>
#include <QPageLayout>
#include <QString>
#include <memory>
#include <vector>

class QPainter;

struct PrintStyle {
  QFont font;   // its point size counts
  QColor color;
  bool operator==(const PrintStyle&) const = default;
};

struct PrintRun {
  float x = 0;
  float baseline = 0;
  qint32 start = 0, length = 0;   // in the page's text
  qint32 style = 0;               // in the document's styles
};

struct PrintRule {   // a thin line: gutters and tables
  float x1, y1, x2, y2;
};

struct PrintPage {
  QString text;
  std::vector<PrintRun> runs;
  std::vector<PrintRule> rules;
  QString runText(const PrintRun& run) const { return text.mid(run.start, run.length); }
};

// The three parts of a header or footer, ready but for "%d" (the page) and "%n" (the number of pages).
struct PrintEdge {
  QString left, centre, right;
  bool isEmpty() const { return left.isEmpty() && centre.isEmpty() && right.isEmpty(); }
};

struct PrintDocument {
  QString name;
  QPageLayout layout;
  PrintEdge header, footer;
  QFont edgeFont;
  std::vector<PrintStyle> styles;
  std::vector<std::shared_ptr<const PrintPage>> pages;
  int firstPage = 1;   // the number of the first one
  int pageTotal = 0;   // what "%n" prints; 0: as many as there are
};

// Between "%" and a letter: keeps what a value holds from being taken for a page number. Not printed.
inline constexpr QChar kNoField(0xFDD0);
// The height that a header or footer needs from the edge of the sheet.
double edgeHeight(const PrintDocument& document);
// As it is drawn and measured: in the order of its characters, as on the screen, whatever script they are of.
QString leftToRight(const QString& text);

// Splits "left|centre|right"; missing parts are empty, what comes behind a third "|" belongs to the right part.
PrintEdge splitEdge(const QString& text);

// Draws page `index` (from 0) into a painter whose unit is one point and whose origin is the sheet's corner.
void drawPage(QPainter& painter, const PrintDocument& document, int index);
// A font for painting and measuring in points: not hinted and not kerned, so that every device gives the same widths.
QFont printFont(const QFont& font);
