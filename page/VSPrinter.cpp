#include "page/VSPrinter.h"

#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

namespace {
constexpr double kInch = 72, kColumnGap = 18;
}   // namespace

// Widths of one style: ASCII from a table (without kerning), other characters asked of the font and cached.
struct VSPrinter::Metrics {
  explicit Metrics(const PrintStyle& style)
      : font(printFont(style.font)),
        metrics(font),
        scale((style.font.pointSizeF() > 0 ? style.font.pointSizeF() : 10) / font.pixelSize()),
        natural(style.natural) {
    for (int c = 32; c < 127; ++c) ascii[c] = metrics.horizontalAdvance(QChar(c)) * scale;
  }
  double width(QStringView text) const {
    double sum = 0;
    for (const QChar c : text) {
      const char16_t code = c.unicode();
      if (code < 32 || code >= 127)
        return metrics.horizontalAdvance(natural ? text.toString() : leftToRight(text.toString())) * scale;
      sum += ascii[code];
    }
    return sum;
  }
  double ascent() const { return metrics.ascent() * scale; }
  double height() const { return metrics.lineSpacing() * scale; }
  QFont font;
  QFontMetricsF metrics;
  double scale;
  bool natural;
  double ascii[128] = {};
};

VSPrinter::VSPrinter(QObject* parent) : QObject(parent) {
  font_ = QFont(QStringLiteral("monospace"), 9);
  font_.setStyleHint(QFont::Monospace);
  document_.edgeFont = QFont(QStringLiteral("sans"), 8);
  setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(54, 54, 54, 54)));
}
VSPrinter::~VSPrinter() = default;

void VSPrinter::setPageLayout(const QPageLayout& layout) {
  layout_ = layout;
  layout_.setUnits(QPageLayout::Point);
  const QSizeF sheet = layout_.fullRectPoints().size();
  QMarginsF margins = layout_.margins();
  const auto fit = [](double low, double high, double room, double least) {
    low = std::max(0.0, low);
    high = std::max(0.0, high);
    if (low + high > room - least) {
      const double factor = std::max(0.0, room - least) / std::max(1.0, low + high);
      low *= factor;
      high *= factor;
    }
    return std::pair(low, high);
  };
  const auto [left, right] = fit(margins.left(), margins.right(), sheet.width(), kInch);
  const auto [top, bottom] = fit(margins.top(), margins.bottom(), sheet.height(), kInch);
  margins = QMarginsF(left, top, right, bottom);
  layout_.setMinimumMargins(QMarginsF());
  layout_.setMargins(margins);
  area_ = QRectF(left, top, sheet.width() - left - right, sheet.height() - top - bottom);
}

void VSPrinter::setColumns(int columns) { columns_ = std::clamp(columns, 1, 2); }

void VSPrinter::StartDoc() {
  document_.pages.clear();
  document_.styles.clear();
  document_.layout = layout_;
  metrics_.clear();
  present_ = nullptr;
  style_ = -1;
  inDocument_ = true;
  setPageLayout(layout_);   // the body within the margins
  const double need = edgeHeight(document_), top = std::max(area_.top(), document_.header.isEmpty() ? 0 : need);
  const double sheet = layout_.fullRectPoints().height();
  const double bottom = std::min(area_.bottom(), document_.footer.isEmpty() ? sheet : sheet - need);
  if (bottom - top > kInch / 2) area_.setTop(top), area_.setBottom(bottom);
  startPage();
}

void VSPrinter::EndDoc() {
  if (!inDocument_) return;
  if (lineStarted_) endLine();
  document_.pages.push_back(page_);
  page_.reset();
  inDocument_ = false;
}

int VSPrinter::pageCount() const { return static_cast<int>(document_.pages.size()) + (page_ ? 1 : 0); }

void VSPrinter::startPage() {
  page_ = std::make_shared<PrintPage>();
  column_ = 0;
  y_ = area_.top();
  x_ = MarginLeft();
  lineRun_ = wordRun_ = 0;
  lineStarted_ = false;
  emit NewPageEvent(pageCount());
}

void VSPrinter::NewPage() {
  if (lineStarted_) endLine();
  page_->text.squeeze();
  page_->runs.shrink_to_fit();
  document_.pages.push_back(page_);
  startPage();
}

void VSPrinter::setFont(const QFont& font) {
  font_ = font;
  style_ = -1;
  present_ = nullptr;
}
void VSPrinter::setFontBold(bool on) {
  if (on == font_.bold()) return;
  font_.setBold(on);
  style_ = -1;
  present_ = nullptr;
}
void VSPrinter::setFontItalic(bool on) {
  if (on == font_.italic()) return;
  font_.setItalic(on);
  style_ = -1;
  present_ = nullptr;
}
void VSPrinter::setTextColor(const QColor& color) {
  if (color == color_) return;
  color_ = color;
  style_ = -1;
  present_ = nullptr;
}

void VSPrinter::setNaturalOrder(bool on) {
  if (on == natural_) return;
  natural_ = on;
  style_ = -1;
  present_ = nullptr;
}

int VSPrinter::styleIndex() {
  if (style_ >= 0) return style_;
  const PrintStyle wanted{font_, color_, natural_};
  const auto found = std::find(document_.styles.begin(), document_.styles.end(), wanted);
  style_ = static_cast<int>(found - document_.styles.begin());
  if (found == document_.styles.end()) document_.styles.push_back(wanted);
  return style_;
}

const VSPrinter::Metrics& VSPrinter::metricsOf(int style) {
  auto& held = metrics_[style];
  if (!held) held = std::make_shared<Metrics>(document_.styles[static_cast<std::size_t>(style)]);
  return *held;
}

const VSPrinter::Metrics& VSPrinter::metrics() {
  if (!present_) present_ = &metricsOf(styleIndex());
  return *present_;
}

double VSPrinter::columnWidth() const { return columns_ == 1 ? area_.width() : (area_.width() - kColumnGap) / 2; }
double VSPrinter::MarginLeft() const { return area_.left() + column_ * (columnWidth() + kColumnGap); }
double VSPrinter::rightEdge() const { return MarginLeft() + columnWidth(); }
double VSPrinter::TextWidth(const QString& text) { return metrics().width(text); }
double VSPrinter::LineHeight() { return metrics().height(); }
double VSPrinter::SpaceLeft() const { return area_.bottom() - y_; }

// The first text of a line fixes its position. A full page is left only when more text follows.
void VSPrinter::startLine() {
  if (lineStarted_) return;
  height_ = metrics().height();
  if (y_ + height_ > area_.bottom() + 0.01 && y_ > area_.top()) {
    if (column_ + 1 < columns_) {
      ++column_;
      y_ = area_.top();
    } else {
      NewPage();
    }
  }
  ascent_ = metrics().ascent();
  x_ = MarginLeft() + indentLeft_ + (paragraphStarted_ ? 0 : indentFirst_);
  lineHasText_ = textBeforeWord_ = false;
  lineRun_ = wordRun_ = page_->runs.size();
  lineStarted_ = paragraphStarted_ = true;
}

void VSPrinter::append(QStringView text, double width) {
  const auto start = static_cast<qint32>(page_->text.size());
  page_->text.append(text);
  page_->runs.push_back(
      {static_cast<float>(x_), static_cast<float>(y_ + ascent_), start, static_cast<qint32>(text.size()), styleIndex()});
  x_ += width;
}

// Each word has its own run until it is certain that it stays in the line. Then adjacent runs of one style are joined.
void VSPrinter::joinRuns() {
  auto& runs = page_->runs;
  if (runs.size() <= lineRun_ + 1) return;
  std::size_t kept = lineRun_;
  const auto widthOf = [&](const PrintRun& run) {
    return metricsOf(run.style).width(QStringView(page_->text).mid(run.start, run.length));
  };
  double end = runs[kept].x + widthOf(runs[kept]);
  for (std::size_t i = kept + 1; i < runs.size(); ++i) {
    const PrintRun run = runs[i];
    PrintRun& last = runs[kept];
    if (run.style == last.style && last.start + last.length == run.start && std::abs(run.x - end) < 0.05) last.length += run.length;
    else runs[++kept] = run;
    end = run.x + widthOf(run);
  }
  runs.resize(kept + 1);
}

// Breaks the line in front of the word that is being added, if a blank stands before that word.
void VSPrinter::breakLine() {
  std::vector<PrintRun> moved;
  auto& runs = page_->runs;
  if (wordRun_ > lineRun_ && wordRun_ < runs.size()) {
    moved.assign(runs.begin() + static_cast<std::ptrdiff_t>(wordRun_), runs.end());
    runs.resize(wordRun_);
  }
  const auto old = page_;
  wrapLine();
  if (moved.empty()) return;
  lineHasText_ = true;
  const float shift = static_cast<float>(x_) - moved.front().x;
  for (PrintRun run : moved) {
    if (page_ != old) {
      const QString text = old->runText(run);
      run.start = static_cast<qint32>(page_->text.size());
      page_->text += text;
    }
    run.x += shift;
    run.baseline = static_cast<float>(y_ + ascent_);
    page_->runs.push_back(run);
  }
  const PrintRun& last = page_->runs.back();
  x_ = last.x + metricsOf(last.style).width(QStringView(page_->text).mid(last.start, last.length));
}

// Ends the printed line in the middle of a paragraph and begins the next one.
void VSPrinter::wrapLine() {
  if (wrapMark_) {
    const auto x = static_cast<float>(rightEdge() + 2), y = static_cast<float>(y_ + height_ * 0.6),
               w = static_cast<float>(std::min(6.0, height_ / 2));
    page_->rules.push_back({x + w, y - w, x + w, y});
    page_->rules.push_back({x, y, x + w, y});
    page_->rules.push_back({x, y, x + w / 3, y - w / 3});
    page_->rules.push_back({x, y, x + w / 3, y + w / 3});
  }
  endLine();
  startLine();
}

void VSPrinter::gap() {
  wordRun_ = page_->runs.size();
  textBeforeWord_ = lineHasText_;
}

void VSPrinter::setCurrentX(double x) {
  startLine();
  x_ = x;
  gap();
}

void VSPrinter::endLine() {
  startLine();
  joinRuns();
  y_ += height_;
  lineStarted_ = false;
  emit NewLineEvent();
}

// A piece without tab and line break.
void VSPrinter::place(QStringView text) {
  startLine();
  const double least = MarginLeft() + indentLeft_;
  while (!text.isEmpty()) {
    // blanks, then the word behind them
    qsizetype blanks = 0;
    while (blanks < text.size() && text[blanks] == u' ') ++blanks;
    if (blanks > 0) {
      const double width = metrics().width(text.left(blanks));
      if (x_ + width > rightEdge() + 0.01 && blanks < text.size()) {
        if (lineHasText_) wordRun_ = page_->runs.size(), breakLine();   // blanks at the break go
      } else {
        append(text.left(blanks), width);
        gap();
      }
      text = text.mid(blanks);
      continue;
    }
    qsizetype end = text.indexOf(u' ');
    if (end < 0) end = text.size();
    QStringView word = text.left(end);
    text = text.mid(end);
    double width = metrics().width(word);
    if (x_ + width > rightEdge() + 0.01 && textBeforeWord_) {
      breakLine();
      wordRun_ = lineRun_;
      textBeforeWord_ = false;
    }
    while (x_ + width > rightEdge() + 0.01 && word.size() > 0) {   // too long for a whole line: break anywhere
      qsizetype fits = 0, high = word.size();
      while (fits < high) {
        const qsizetype middle = (fits + high + 1) / 2;
        if (x_ + metrics().width(word.left(middle)) <= rightEdge() + 0.01) fits = middle;
        else high = middle - 1;
      }
      if (fits > 0 && fits < word.size() && word[fits].isLowSurrogate() && word[fits - 1].isHighSurrogate()) --fits;
      if (fits == 0) {
        if (x_ > least + 0.01 || page_->runs.size() > lineRun_) {
          wrapLine();
          continue;
        }
        fits =
            // at least one character, so that the loop ends
            std::min<qsizetype>(word.size(), word[0].isHighSurrogate() && word.size() > 1 ? 2 : 1);
      }
      lineHasText_ = true;
      append(word.left(fits), metrics().width(word.left(fits)));
      word = word.mid(fits);
      width = metrics().width(word);
      if (!word.isEmpty()) wrapLine();
    }
    if (word.isEmpty()) continue;
    lineHasText_ = lineHasText_ || x_ > least - 0.01;
    append(word, width);
  }
}

void VSPrinter::Print(const QString& text) {
  if (!inDocument_) return;
  qsizetype at = 0;
  while (at < text.size()) {
    qsizetype end = at;
    while (end < text.size() && text[end] != u'\r' && text[end] != u'\n' && text[end] != u'\t') ++end;
    if (end > at) place(QStringView(text).mid(at, end - at));
    if (end == text.size()) return;
    if (text[end] == u'\t') {
      startLine();
      const double stop = std::max(1.0, indentTab_), from = MarginLeft();
      x_ = from + (std::floor((x_ - from) / stop + 0.001) + 1) * stop;
      gap();
    } else {
      endLine();
      paragraphStarted_ = false;
      if (text[end] == u'\r' && end + 1 < text.size() && text[end + 1] == u'\n') ++end;
    }
    at = end + 1;
  }
}

void VSPrinter::AddTable(const QString& format, const QString& header, const QString& rows) {
  if (!inDocument_) return;
  if (lineStarted_) endLine();
  struct Column {
    double width;
    QChar align;
  };
  std::vector<Column> columns;
  for (QString cell : format.split(u'|')) {
    Column column{kInch, u'<'};
    while (!cell.isEmpty() && QStringLiteral("<^>+").contains(cell[0])) {
      if (cell[0] != u'+') column.align = cell[0];
      cell.remove(0, 1);
    }
    if (cell.endsWith(QLatin1String("in"))) column.width = cell.chopped(2).toDouble() * kInch;
    columns.push_back(column);
  }
  double total = 0;
  for (const Column& column : columns) total += column.width;
  for (Column& column : columns) column.width *= std::min(1.0, columnWidth() / std::max(1.0, total));   // never off the paper
  const double height = LineHeight() * 1.5, left = MarginLeft();
  const auto row = [&](const QString& cells, bool bold) {
    if (y_ + height > area_.bottom() + 0.01) NewPage();
    const bool was = FontBold();
    setFontBold(bold || was);
    const QStringList parts = cells.split(u'|');
    double x = left;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const QString text = parts.value(static_cast<qsizetype>(i));
      const double space = columns[i].width - TextWidth(text);
      if (!text.isEmpty()) {
        lineRun_ = wordRun_ = page_->runs.size();
        ascent_ = metrics().ascent() + LineHeight() * 0.25;
        x_ = x + (columns[i].align == u'^' ? space / 2 : columns[i].align == u'>' ? space - 3 : 3);
        append(text, TextWidth(text));
      }
      page_->rules.push_back({float(x), float(y_), float(x), float(y_ + height)});
      x += columns[i].width;
    }
    setFontBold(was);
    page_->rules.push_back({float(x), float(y_), float(x), float(y_ + height)});
    page_->rules.push_back({float(left), float(y_), float(x), float(y_)});
    page_->rules.push_back({float(left), float(y_ + height), float(x), float(y_ + height)});
    y_ += height;
    lineRun_ = wordRun_ = page_->runs.size();
    emit NewLineEvent();
  };
  for (const QString& cells : header.split(u';', Qt::SkipEmptyParts)) row(cells, true);
  QStringList body = rows.split(u';');
  if (!body.isEmpty() && body.last().isEmpty()) body.removeLast();
  for (const QString& cells : body) row(cells, false);
  paragraphStarted_ = false;
}
