// Laid-out pages as plain data. VSPrinter makes them; one function draws them on a screen, a printer or into a PDF file.
//
// All lengths are points (1/72 inch) from the upper left corner of the sheet. A page holds its text once and runs point into it, so
// that the layout of a long text stays small.
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
  bool natural = false;   // the text stands in its natural order, else in that of its characters
  bool operator==(const PrintStyle&) const = default;
};

struct PrintRun {
  float x = 0;
  float baseline = 0;
  qint32 start = 0, length = 0;   // in the page's text
  qint32 style = 0;               // index in the document's styles
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

// The three parts of a header or footer, complete except for "%d" (page number) and "%n" (number of pages).
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
  int firstPage = 1;   // number of the first page
  int pageTotal = 0;   // value of "%n"; 0: the number of pages
};

// Inserted between "%" and a letter of a value, so that the value is not taken for a page number. Not printed.
inline constexpr QChar kNoField(0xFDD0);
// The height that a header or footer needs, from the edge of the sheet.
double edgeHeight(const PrintDocument& document);
// The text as it is drawn and measured where it is not natural: its characters from left to right in their order, in every script.
QString leftToRight(const QString& text);
// Whether the two orders may differ.
bool turns(QStringView text);

// Splits "left|centre|right". Missing parts are empty; text behind a third "|" belongs to the right part.
PrintEdge splitEdge(const QString& text);

// Draws page `index` (from 0). The painter's unit is one point and its origin the corner of the sheet.
void drawPage(QPainter& painter, const PrintDocument& document, int index);
// A font for painting and measuring in points, without hinting and kerning, so that every device gives the same widths.
QFont printFont(const QFont& font);
