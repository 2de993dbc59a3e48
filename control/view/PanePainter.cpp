#include "control/view/PanePainter.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "control/edit/ColumnBlock.h"
#include "control/folds/FoldMarks.h"
#include "control/folds/PaneFolds.h"
#include "control/marks/ChangeMarks.h"
#include "control/marks/TextAids.h"

using text::ByteOffset;
using text::ByteRange;
using text::LineNo;

namespace {

ColorSlot slotOf(text::TokenKind kind) {
  switch (kind) {
    case text::TokenKind::keyword: return ColorSlot::Keyword;
    case text::TokenKind::operatorSign: return ColorSlot::Operator;
    case text::TokenKind::comment: return ColorSlot::Comment;
    case text::TokenKind::string: return ColorSlot::String;
    case text::TokenKind::number: return ColorSlot::Number;
    case text::TokenKind::text: break;
  }
  return ColorSlot::Text;
}

QColor mixed(const QColor& a, const QColor& b, double part) {
  return QColor::fromRgbF(static_cast<float>(a.redF() + (b.redF() - a.redF()) * part),
                          static_cast<float>(a.greenF() + (b.greenF() - a.greenF()) * part),
                          static_cast<float>(a.blueF() + (b.blueF() - a.blueF()) * part));
}

// Adjacent glyphs of one colour are drawn in one call.
class GlyphBatch {
 public:
  GlyphBatch(QPainter& painter, const QRawFont& font, double baseline) : painter_(painter), baseline_(baseline) {
    run_.setRawFont(font);
  }
  ~GlyphBatch() { flush(); }
  void add(quint32 glyph, double x, const QColor& color) {
    if (!indexes_.isEmpty() && color != color_) flush();
    color_ = color;
    indexes_ << glyph;
    positions_ << QPointF(x, baseline_);
  }
  void flush() {
    if (indexes_.isEmpty()) return;
    run_.setGlyphIndexes(indexes_);
    run_.setPositions(positions_);
    painter_.setPen(color_);
    painter_.drawGlyphRun(QPointF(), run_);
    indexes_.clear();
    positions_.clear();
  }

 private:
  QPainter& painter_;
  double baseline_;
  QGlyphRun run_;
  QColor color_;
  QList<quint32> indexes_;
  QList<QPointF> positions_;
};

constexpr int kCaretWidth = 2;
constexpr std::int64_t kHitBytes = 64 << 10;       // of what a row hides, searched for a match
constexpr std::chrono::milliseconds kHitTime{4};   // for those of all rows
constexpr double kChangeWidth = 3;
constexpr double kRulerStrength = 0.2, kGuideStrength = 0.12, kSameWordStrength = 0.14;

// The left edge of a caret: of one as wide as its character, that of the character.
double caretLeft(const Row& row, ByteOffset at, bool block) {
  const std::int64_t byte = at - row.start;
  return block && row.layout.widthAt(byte) > 0 ? row.layout.leftOf(byte) : row.layout.xOf(byte);
}

// The first byte of the blanks at the line's end, if they are shown and laid out; else behind all. Not while they are typed.
std::int64_t trailingFrom(const TextView& view, const Row& row, ByteOffset caret) {
  if (!view.state().options->aids.trailingBlanks || row.layout.end().byte < row.length) return INT64_MAX;
  std::int64_t from = INT64_MAX;
  const auto& items = row.layout.items();
  for (auto item = items.rbegin(); item != items.rend(); ++item) {
    if (item->kind != LayoutItem::blank && item->kind != LayoutItem::tab) break;
    from = item->byte;
  }
  const std::int64_t at = caret - row.start;
  return at >= from && at <= row.length ? INT64_MAX : from;
}

}   // namespace

double Preedit::cursorX() const {
  return layout.xOf(
      static_cast<std::int64_t>(fromQString(QStringView(text).first(std::clamp<qsizetype>(cursor, 0, text.size()))).size()));
}

QColor PanePainter::hitBack() const { return mixed(color(ColorSlot::Window), color(ColorSlot::MatchingBrace), 0.6); }

PanePainter::PanePainter(QPainter& painter, TextView& view, const PaneLook& look)
    : painter_(painter), view_(view), look_(look), rulers_(textAids::rulers(view)) {
  const text::SelectionState& s = look.selection;
  selected_ = {std::min(s.anchor, s.caret), std::max(s.anchor, s.caret)};
  const text::Snapshot& text = view.snapshot();
  caretPlace_ = view.placeOf(s.caret);
  caretLine_ = caretPlace_.line.value;
  firstLine_ = text.lineAt(selected_.begin).value;
  lastLine_ = text.lineAt(selected_.end).value;
  if (s.column) {
    const ColumnBlock block = columnBlock(*view.state().model, s, view.state().options->tabSize);
    blockLeft_ = block.left;
    blockRight_ = block.right;
  }
}

void PanePainter::paint(const QRect& part) {
  painter_.setClipRect(part);
  const text::DisplayMap& map = view_.rows.map;
  const std::int64_t lines = view_.snapshot().lineCount();
  for (TextView::Place place = view_.placeAtY(part.top()); place.line.value < lines && view_.yOf(place) <= part.bottom();) {
    paintRow(place, part);
    if (++place.row >= map.rowsOf(place.line)) place = {map.shownFrom(place.line + 1), 0};
  }
  const int below = view_.bottomOf(lines - 1);
  if (below <= part.bottom()) {
    painter_.fillRect(QRect(0, below, view_.width + view_.margin, view_.height - below), color(ColorSlot::Window));
    paintLines(rulers_, below, view_.height - below, kRulerStrength);
    if (view_.margin > 0) {
      painter_.fillRect(QRect(0, below, view_.margin - 1, view_.height - below), color(ColorSlot::LeftMargin));
      painter_.fillRect(QRect(view_.margin - 1, below, 1, view_.height - below), color(ColorSlot::Divider));
    }
  }
}

void PanePainter::fill(const Span& span, int y, const QColor& color) {
  const double left = std::clamp(left_ + std::max(span.from, shown_.from), -10.0, 1e5),
               right = std::clamp(left_ + std::min(span.to, shown_.to), -10.0, 1e5);
  if (right > left) painter_.fillRect(QRectF(left, y, right - left, view_.lineHeight()), color);
}

void PanePainter::fillBytes(const Row& row, const ByteRange& range, int y, const QColor& color) {
  for (const Span& piece : row.layout.pieces(range.begin - row.start, range.end - row.start)) fill(piece, y, color);
}

void PanePainter::enter(const TextView::Place& place) {
  left_ = view_.textLeft();
  begin_ = 0;
  end_ = text::LinePlace::any;
  shown_ = {-1e9, 1e9 + static_cast<double>(view_.left)};
  last_ = true;
  if (!view_.rows.wraps()) return;
  last_ = place.row + 1 >= view_.rows.map.rowsOf(place.line);
  const text::LinePlace begin = view_.rows.begin(place.line, place.row);
  if (place.row > 0) {
    left_ += view_.rows.shift(place.line, place.row);
    begin_ = begin.byte;
    shown_.from = begin.x;
  }
  shown_.to = begin.x + 1e9;
  if (last_) return;
  const text::LinePlace end = view_.rows.begin(place.line, place.row + 1);
  end_ = end.byte;
  shown_.to = end.x;
}

void PanePainter::fillCells(std::int64_t line, const Row& row, int y, const QColor& color) {
  if (!row.layout.arranged()) return fill({view_.xOfCell(line, blockLeft_), view_.xOfCell(line, blockRight_)}, y, color);
  const ByteRange bytes = selectedBytes(line, row);
  fillBytes(row, {row.start + bytes.begin.value, row.start + bytes.end.value}, y, color);
  const std::int64_t end = cellOf(*view_.state().model, row.start + row.length, 0, view_.state().options->tabSize);
  if (blockRight_ > end) fill({view_.xOfCell(line, std::max(end, blockLeft_)), view_.xOfCell(line, blockRight_)}, y, color);
}

void PanePainter::paintSelection(std::int64_t line, const Row& row, int y) {
  if (line < firstLine_ || line > lastLine_) return;
  const QColor chosen = color(look_.focused ? ColorSlot::SelectionBack : ColorSlot::InactiveSelectionBack);
  if (look_.selection.column) {
    if (blockLeft_ < blockRight_) return fillCells(line, row, y, chosen);
    const double x = view_.xOfCell(line, blockLeft_);
    return fill({x, x + 2}, y, mixed(chosen, color(ColorSlot::Text), 0.5));
  }
  if (selected_.empty()) return;
  fillBytes(row, selected_, y, chosen);
  // The break of a selected line shows as one cell.
  const double end = row.layout.end().x;
  if (line < lastLine_) fill({end, end + view_.metrics().cell()}, y, chosen);
}

ByteRange PanePainter::selectedBytes(std::int64_t line, const Row& row) const {
  if (line < firstLine_ || line > lastLine_) return {};
  if (!look_.selection.column) return {ByteOffset(selected_.begin - row.start), ByteOffset(selected_.end - row.start)};
  if (blockLeft_ == blockRight_) return {};
  const ColumnRow part = columnRow(*view_.state().model, LineNo(line), blockLeft_, blockRight_, view_.state().options->tabSize);
  return {ByteOffset(part.body.begin - row.start), ByteOffset(part.body.end - row.start)};
}

std::span<const Caret> PanePainter::othersIn(const Row& row) const {
  const ByteOffset from = row.start + row.layout.begin().byte, to = row.start + row.layout.end().byte;
  const auto first = std::ranges::lower_bound(look_.others, from, {}, &Caret::end);
  return {first, std::ranges::upper_bound(first, look_.others.end(), to, {}, &Caret::begin)};
}

void PanePainter::paintOtherSelections(const Row& row, int y) {
  const ByteOffset end = row.start + row.length;
  for (const Caret& caret : othersIn(row)) {
    if (caret.empty() || caret.end() <= row.start) continue;
    const QColor chosen = color(look_.focused ? ColorSlot::SelectionBack : ColorSlot::InactiveSelectionBack);
    fillBytes(row, {caret.begin(), caret.end()}, y, chosen);
    if (caret.end() > end) fill({row.layout.end().x, row.layout.end().x + view_.metrics().cell()}, y, chosen);
  }
}

void PanePainter::paintOtherCarets(const Row& row, int y) {
  for (const Caret& caret : othersIn(row)) {
    const std::int64_t byte = caret.caret - row.start;
    if (byte < begin_ || byte > row.length || (byte >= end_ && !last_)) continue;
    double width = kCaretWidth;
    if (look_.overtype) {
      const double here = row.layout.widthAt(byte);
      width = here > 0 ? here : view_.metrics().cell();
    }
    const double left = std::clamp(std::floor(left_ + caretLeft(row, caret.caret, look_.overtype)), -1e6, 1e6);
    paintCaret({static_cast<int>(left), y, std::max(1, static_cast<int>(width)), view_.lineHeight()}, look_.overtype);
  }
}

void PanePainter::paintCaret(const QRect& caret, bool block) {
  QColor ink = color(ColorSlot::Text);
  if (block) ink.setAlphaF(0.35f);
  painter_.fillRect(caret, ink);
}

void PanePainter::paintBackgrounds(std::int64_t line, const Row& row, const QRect& band, const LineBack& back) {
  const int y = band.top();
  const bool current = line == caretLine_ && selected_.empty() && !look_.selection.column;
  painter_.fillRect(band, back.line.isValid() ? back.line : color(current ? ColorSlot::HighlightedLine : ColorSlot::Window));
  for (const ByteRange& range : back.parts) fillBytes(row, range, y, back.part);
  if (const std::int64_t trailing = trailingFrom(view_, row, look_.selection.caret); trailing < row.length)
    fillBytes(row, {row.start + trailing, row.start + row.length}, y,
              mixed(color(ColorSlot::Window), color(ColorSlot::RemovedLine), 0.22));
  const QColor same = mixed(color(ColorSlot::Window), color(ColorSlot::Text), kSameWordStrength);
  for (const ByteRange& range : textAids::places(view_.snapshot(), row, begin_, end_, look_.sameWord))
    fillBytes(row, range, y, same);
  const QColor hit = hitBack();
  for (const ByteRange& range : row.hits) fillBytes(row, range, y, hit);
  paintSelection(line, row, y);
  paintOtherSelections(row, y);
  if (look_.pair) {
    for (const ByteRange& word : *look_.pair)
      if (word.begin >= row.start && word.begin < row.start + row.length) fillBytes(row, word, y, color(ColorSlot::MatchingBrace));
  }
}

// Vertical lines at the places, from the start of lines: one device pixel wide at one pixel each, in the colour of the text made as
// weak as that.
void PanePainter::paintLines(const std::vector<double>& places, int y, int height, double strength) {
  const double scale = painter_.device()->devicePixelRatioF(), width = std::max(1.0, std::floor(scale)) / scale;
  const QColor ink = mixed(color(ColorSlot::Window), color(ColorSlot::Text), strength);
  for (const double place : places) {
    const double x = std::floor((view_.textLeft() + place) * scale) / scale;
    if (x >= view_.margin && x < view_.margin + view_.width) painter_.fillRect(QRectF(x, y, width, height), ink);
  }
}

void PanePainter::paintRow(const TextView::Place& place, const QRect& part) {
  const std::int64_t line = place.line.value;
  const int y = view_.yOf(place), height = view_.lineHeight();
  const LineBack back = view_.state().lineBack ? view_.state().lineBack(LineNo(line)) : LineBack();
  if (part.right() >= view_.margin) {
    const QRect band(view_.margin, y, view_.width, height);
    const Row& row = view_.row(line);
    enter(place);
    paintBackgrounds(line, row, band, back);
    paintLines(rulers_, y, height, kRulerStrength);
    if (view_.state().options->aids.indentGuides) {
      std::vector<double> guides = textAids::guidesOf(view_, place.line);
      const double text = left_ - view_.textLeft() + shown_.from;   // where a row that continues its line begins
      if (place.row > 0) std::erase_if(guides, [text](double x) { return x >= text; });
      paintLines(guides, y, height, kGuideStrength);
    }
    const bool preedit = look_.preedit && place == caretPlace_;
    if (preedit) {
      LineLayout shifted = row.layout;
      const ByteOffset caret = look_.selection.caret;
      const double x = view_.shownX(caret, look_.selection.caretVirtual) - view_.rows.shift(place.line, place.row);
      shifted.insertGap(caret - row.start, look_.preedit->layout.end().x);
      paintText(row, shifted, line, band);
      paintPreedit(x, y);
    } else {
      paintText(row, row.layout, line, band);
    }
    if (last_) paintHidden(line);
    if (look_.caretOn) paintOtherCarets(row, y);
    if (look_.caretOn && place == caretPlace_) paintCaret(caretRect(view_, look_), look_.overtype && !preedit);
    if (look_.dropAt && view_.placeOf(*look_.dropAt) == place)
      painter_.fillRect(QRectF(left_ + view_.xOf(line, *look_.dropAt), y, 2, height), color(ColorSlot::Bookmark));
  }
  if (view_.margin > 0 && part.left() < view_.margin) paintMargin(place, y, back);
  paintRules(y, back);
}

void PanePainter::paintText(const Row& row, const LineLayout& layout, std::int64_t line, const QRect& band) {
  const double left = left_;
  const double baseline = band.top() + view_.metrics().ascent();
  const auto& plainSlot = view_.state().model->plainSlot;
  const QColor plain = color(plainSlot ? static_cast<ColorSlot>(plainSlot(LineNo(line))) : ColorSlot::Text);
  const bool recolor = !view_.state().colors.selectionKeepsColors(look_.focused);
  const QColor selectedColor = color(look_.focused ? ColorSlot::SelectionText : ColorSlot::InactiveSelectionText);
  const ByteRange selected = recolor ? selectedBytes(line, row) : ByteRange{};
  const std::span<const Caret> others = recolor && row.length > 0 ? othersIn(row) : std::span<const Caret>();
  auto other = others.begin();
  GlyphBatch batch(painter_, view_.metrics().rawFont(), baseline);
  const auto& items = layout.items();
  const std::int64_t trailing = trailingFrom(view_, row, look_.selection.caret);
  const auto before = [](const LayoutItem& i, std::int64_t byte) { return i.byte < byte; };
  auto token = static_cast<std::size_t>(std::partition_point(row.tokens.begin(), row.tokens.end(),
                                                             [&](const text::Token& t) { return t.begin + t.length <= begin_; }) -
                                        row.tokens.begin());
  const auto inkOf = [&](const LayoutItem& item) {   // asked for items that follow each other
    while (token < row.tokens.size() && row.tokens[token].begin + row.tokens[token].length <= item.byte) ++token;
    const bool inToken = token < row.tokens.size() && row.tokens[token].begin <= item.byte;
    const ByteOffset at = row.start + item.byte;
    while (other != others.end() && other->end() <= at) ++other;
    const bool chosen =
        (item.byte >= selected.begin.value && item.byte < selected.end.value) || (other != others.end() && other->begin() <= at);
    return chosen ? selectedColor : inToken ? color(slotOf(row.tokens[token].kind)) : plain;
  };
  for (auto next = std::lower_bound(items.begin(), items.end(), begin_, before); next != items.end() && next->byte < end_; ++next) {
    const LayoutItem& item = *next;
    if (left + item.x > band.right() + 1) {
      if (layout.turned()) continue;
      break;
    }
    if (left + item.x + item.width < band.left()) continue;
    const QColor ink = inkOf(item);
    switch (item.kind) {
      case LayoutItem::glyph: batch.add(item.glyphIndex, left + item.x, ink); break;
      case LayoutItem::shaped: {
        batch.flush();
        painter_.save();
        painter_.setClipRect(QRectF(left + item.x - 1, band.top(), item.width + 2, band.height()), Qt::IntersectClip);
        painter_.setPen(ink);
        const shape::Shaped& cluster = view_.metrics().shaped(layout.text(item));
        // Fits a glyph into its cells: centred, and narrowed if it is wider; the next character is not moved.
        painter_.translate(left + item.x + std::max(0.0, (item.width - cluster.advance) / 2), baseline);
        if (cluster.advance > item.width) painter_.scale(item.width / cluster.advance, 1);
        for (const QGlyphRun& run : cluster.runs) painter_.drawGlyphRun(QPointF(), run);
        painter_.restore();
        break;
      }
      case LayoutItem::joined: {
        batch.flush();
        auto end = next + 1;
        while (end != items.end() && end->byte < end_ && end->kind == LayoutItem::joined && end->text == item.text &&
               layout.movedBy(*end) == layout.movedBy(item) && inkOf(*end) == ink)
          ++end;
        paintWord(layout, next, end, band, ink);
        next = end - 1;
        break;
      }
      case LayoutItem::label:
        batch.flush();
        paintLabel(layout.text(item), item, band.top());
        break;
      case LayoutItem::oddBlank:
        batch.flush();
        paintWhiteSpace(item, band.top());
        break;
      case LayoutItem::blank:
      case LayoutItem::tab:
        if (view_.state().whiteSpace || item.byte >= trailing) paintWhiteSpace(item, band.top());
        break;
    }
  }
  batch.flush();
  if (view_.state().whiteSpace && last_ && (row.whole || layout.end().byte >= row.length)) {
    const text::LineBreak lineBreak = view_.snapshot().lineBreak(LineNo(line));
    if (lineBreak != text::LineBreak::none) {
      const char* name = lineBreak == text::LineBreak::lf ? "LF" : lineBreak == text::LineBreak::cr ? "CR" : "CRLF";
      painter_.setFont(view_.metrics().labelFont());
      painter_.setPen(color(ColorSlot::TagText));
      painter_.drawText(QPointF(left + layout.end().x + 3, baseline), QString::fromLatin1(name));
    }
  }
}

// Signs that belong to several items are cut where their colour ends; the ends of a whole word may stick out.
void PanePainter::paintWord(const LineLayout& layout, Item first, Item end, const QRect& band, const QColor& ink) {
  constexpr double kOut = 6;   // pixels
  const LayoutWord& word = layout.word(*first);
  const Item last = std::prev(end);
  const auto ofWord = [&](Item i) { return i->kind == LayoutItem::joined && i->text == first->text; };
  const double before = first == layout.items().begin() || !ofWord(std::prev(first)) ? kOut : 0;
  const double behind = end == layout.items().end() || !ofWord(end) ? kOut : 0;
  const double from = first->rightToLeft ? last->x - behind : first->x - before;
  const double to = first->rightToLeft ? first->x + first->width + before : last->x + last->width + behind;
  painter_.save();
  painter_.setClipRect(QRectF(left_ + from, band.top(), to - from, band.height()), Qt::IntersectClip);
  painter_.setPen(ink);
  painter_.translate(left_ + word.x + layout.movedBy(*first), band.top() + view_.metrics().ascent());
  painter_.scale(word.scale, 1);
  for (const QGlyphRun& run : word.shaped.runs) painter_.drawGlyphRun(QPointF(), run);
  painter_.restore();
}

// A box with the name of an invisible character; the box of an invalid byte is filled.
void PanePainter::paintLabel(const QString& label, const LayoutItem& item, int y) {
  const QRectF box(left_ + item.x + 0.5, y + 1.5, item.width - 1, view_.lineHeight() - 3);
  const QColor tag = color(ColorSlot::TagText);
  const QColor ink = mixed(tag, color(ColorSlot::Text), 0.5);
  painter_.setPen(tag);
  painter_.setBrush(item.badByte ? QBrush(mixed(color(ColorSlot::Window), color(ColorSlot::String), 0.22)) : QBrush(Qt::NoBrush));
  painter_.drawRect(box);
  painter_.setFont(view_.metrics().labelFont());
  painter_.setPen(ink);
  painter_.drawText(box, Qt::AlignCenter | Qt::TextDontClip, label);
}

void PanePainter::paintWhiteSpace(const LayoutItem& item, int y) {
  const double x = left_ + item.x, middle = std::floor(y + view_.lineHeight() * 0.55) + 0.5;
  const QColor tag = color(ColorSlot::TagText);
  if (item.kind == LayoutItem::oddBlank) {   // an unusual blank: an outline, open at the top
    const double bottom = y + view_.lineHeight() - 3.5, height = view_.lineHeight() * 0.25;
    painter_.setPen(tag);
    painter_.drawPolyline(QPolygonF({QPointF(x + 1.5, bottom - height), QPointF(x + 1.5, bottom),
                                     QPointF(x + item.width - 1.5, bottom), QPointF(x + item.width - 1.5, bottom - height)}));
  } else if (item.kind == LayoutItem::tab) {
    painter_.setPen(tag);
    const double right = x + item.width - 2;
    painter_.drawLine(QPointF(x + 2, middle), QPointF(right, middle));
    const double head = std::min(3.0, item.width / 3);
    painter_.drawLine(QPointF(right - head, middle - head), QPointF(right, middle));
    painter_.drawLine(QPointF(right - head, middle + head), QPointF(right, middle));
  } else {
    const double size = std::max(1.5, view_.lineHeight() / 9.0);
    painter_.fillRect(QRectF(x + (item.width - size) / 2, middle - size / 2, size, size), tag);
  }
}

void PanePainter::paintPreedit(double x, int y) {
  const double left = left_ + x, width = look_.preedit->layout.end().x;
  const Row none;
  {
    const double row = std::exchange(left_, left);
    const auto bytes = std::pair(std::exchange(begin_, 0), std::exchange(end_, text::LinePlace::any));
    paintText(none, look_.preedit->layout, caretLine_, QRect(view_.margin, y, view_.width, view_.lineHeight()));
    left_ = row;
    std::tie(begin_, end_) = bytes;
  }
  painter_.fillRect(QRectF(left, y + view_.lineHeight() - 2, width, 1), color(ColorSlot::Text));
}

void PanePainter::paintRules(int y, const LineBack& back) {
  const QRect rule(0, y, view_.width + view_.margin, 2);
  if (back.ruleAbove) painter_.fillRect(rule, back.rule);
  if (back.ruleBelow) painter_.fillRect(rule.translated(0, view_.lineHeight() - 2), back.rule);
}

void PanePainter::paintMargin(const TextView::Place& place, int y, const LineBack& back) {
  const std::int64_t line = place.line.value;
  const int height = view_.lineHeight();
  painter_.fillRect(QRect(0, y, view_.margin - 1, height), back.line.isValid() ? back.line : color(ColorSlot::LeftMargin));
  painter_.fillRect(QRect(view_.margin - 1, y, 1, height), color(ColorSlot::Divider));
  if (look_.changes) paintChange(place, y);
  if (place.row > 0) return paintContinued(y);
  const std::int64_t hidden = look_.folds ? look_.folds->hiddenBehind(place.line) : 0;
  const bool marked = view_.state().model->hasBookmark(LineNo(line));
  if (marked || (hidden > 0 && view_.state().model->hasBookmark(LineNo(line + 1), LineNo(line + 1 + hidden)))) {
    painter_.save();
    painter_.setRenderHint(QPainter::Antialiasing);
    if (marked) painter_.fillPath(ribbon(y), color(ColorSlot::Bookmark));
    else painter_.strokePath(ribbon(y), color(ColorSlot::Bookmark));   // of a line that is hidden
    painter_.restore();
  }
  paintHandle(line, y);
  const QColor ink =
      line == caretLine_ ? mixed(color(ColorSlot::LineNumbers), color(ColorSlot::Text), 0.6) : color(ColorSlot::LineNumbers);
  const QByteArray digits = QByteArray::number(static_cast<qlonglong>(line) + 1);
  double x = view_.margin - view_.foldMargin - 6;
  GlyphBatch batch(painter_, view_.metrics().rawFont(), y + view_.metrics().ascent());
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
    x -= view_.metrics().asciiAdvance(static_cast<unsigned char>(*digit));
    batch.add(view_.metrics().asciiGlyph(static_cast<unsigned char>(*digit)), x, ink);
  }
}

QPainterPath PanePainter::ribbon(int y) const {
  const int height = view_.lineHeight();
  const double size = std::min(height - 4.0, 10.0), x = 3, top = y + (height - size) / 2;
  QPainterPath path;
  path.addPolygon(QPolygonF({QPointF(x, top), QPointF(x + size * 0.8, top), QPointF(x + size * 0.8, top + size),
                             QPointF(x + size * 0.4, top + size * 0.68), QPointF(x, top + size)}));
  path.closeSubpath();
  return path;
}

void PanePainter::paintHandle(std::int64_t line, int y) {
  const PaneFolds::Handle handle = look_.folds ? look_.folds->handleAt(LineNo(line)) : PaneFolds::Handle::none;
  if (handle == PaneFolds::Handle::none) return;
  const bool folded = handle == PaneFolds::Handle::folded;
  const QColor ink = folded ? color(ColorSlot::Text) : mixed(color(ColorSlot::LineNumbers), color(ColorSlot::Text), 0.25);
  foldMarks::paintHandle(painter_, QRectF(view_.margin - 1 - view_.foldMargin, y, view_.foldMargin, view_.lineHeight()), folded,
                         ink);
}

// Whether a match is among the hidden lines, as far as can be seen at once.
bool PanePainter::holdsHit(std::int64_t first, std::int64_t last) {
  if (!view_.state().hits || hitTime_ > kHitTime) return false;
  const auto begin = std::chrono::steady_clock::now();
  const text::Snapshot& text = view_.snapshot();
  const ByteOffset from = text.lineStart(LineNo(first)), to = std::min(text.lineEnd(LineNo(last)), from + kHitBytes);
  text::FindBudget budget(kHitTime);
  const bool found = !view_.state().hits->all(text, {from, to}, nullptr, &budget).ranges.empty();
  hitTime_ += std::chrono::steady_clock::now() - begin;
  return found;
}

void PanePainter::paintHidden(std::int64_t line) {
  const QRectF box = foldMarks::boxOf(view_, line);
  if (box.isEmpty() || !look_.folds) return;   // the line at the top has none
  const QColor window = color(ColorSlot::Window), ink = color(ColorSlot::Text);
  const std::int64_t hidden = look_.folds->hiddenBehind(LineNo(line));
  const bool hit = holdsHit(line + 1, line + hidden);
  painter_.setFont(view_.metrics().labelFont());
  foldMarks::paintBox(painter_, box, hidden, hit ? hitBack() : mixed(window, ink, 0.08), mixed(window, ink, 0.35),
                      mixed(window, ink, 0.75));
}

// How the line differs from the file: a bar beside the number, and a wedge where lines are missing.
void PanePainter::paintChange(const TextView::Place& place, int y) {
  const text::DisplayMap& map = view_.rows.map;
  const bool last = place.row + 1 >= map.rowsOf(place.line);
  const ChangeMarks::Line change = look_.changes->at(place.line, map.shownFrom(place.line + 1));
  const double height = view_.lineHeight(), right = view_.margin - 1 - view_.foldMargin;
  if (change.kind != ChangeMarks::Line::Kind::same)
    painter_.fillRect(QRectF(right - kChangeWidth, y, kChangeWidth, height),
                      color(change.kind == ChangeMarks::Line::Kind::added ? ColorSlot::AddedLine : ColorSlot::ChangedLine));
  const auto wedge = [&](double edge, double inward) {
    QPainterPath path;
    path.addPolygon(QPolygonF({QPointF(right - 2 * kChangeWidth, edge), QPointF(right, edge), QPointF(right, edge + inward)}));
    painter_.save();
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.fillPath(path, color(ColorSlot::RemovedLine));
    painter_.restore();
  };
  if (change.removedAbove && place.row == 0) wedge(y, 2 * kChangeWidth);
  if (change.removedBelow && last) wedge(y + height, -2 * kChangeWidth);
}

// The mark of a row that continues its line: an arrow from above to the right.
void PanePainter::paintContinued(int y) {
  const double right = view_.margin - view_.foldMargin - 6.5, middle = std::floor(y + view_.lineHeight() * 0.5) + 0.5;
  const double size = std::max(3.0, view_.lineHeight() / 5.0), left = right - 2.2 * size;
  painter_.setPen(color(ColorSlot::LineNumbers));
  painter_.drawPolyline(QPolygonF({QPointF(left, middle - size), QPointF(left, middle), QPointF(right, middle)}));
  painter_.drawPolyline(QPolygonF({QPointF(right - size * 0.6, middle - size * 0.6), QPointF(right, middle),
                                   QPointF(right - size * 0.6, middle + size * 0.6)}));
}

double PanePainter::caretX(TextView& view, const PaneLook& look) {
  const text::SelectionState& s = look.selection;
  const TextView::Place place = view.placeOf(s.caret);
  double x = view.shownX(s.caret, s.caretVirtual);
  if (s.column && view.metrics().fixedPitch())
    x = view.xOfCell(place.line.value, cellOf(*view.state().model, s.caret, s.caretVirtual, view.state().options->tabSize)) +
        view.rows.shift(place.line, place.row);
  return look.preedit ? x + look.preedit->cursorX() : x;
}

QRect PanePainter::caretRect(TextView& view, const PaneLook& look) {
  const text::SelectionState& s = look.selection;
  const TextView::Place place = view.placeOf(s.caret);
  double x = caretX(view, look), width = kCaretWidth;
  if (look.overtype && !look.preedit) {
    const Row& row = view.row(place.line.value);
    const double here = row.layout.widthAt(s.caret - row.start);
    width = here > 0 ? here : view.metrics().cell();
    if (row.layout.turned()) x = caretLeft(row, s.caret, true) + view.rows.shift(place.line, place.row);
  }
  const double left = std::clamp(std::floor(view.textLeft() + x), -1e6, 1e6);
  return {static_cast<int>(left), view.yOf(place), std::max(1, static_cast<int>(width)), view.lineHeight()};
}
