#include "control/complete/Completer.h"

#include <QApplication>
#include <QHash>
#include <QKeyEvent>
#include <QListWidget>
#include <QScopedValueRollback>
#include <QScreen>
#include <QStyle>
#include <algorithm>
#include <bit>

#include "base/Program.h"
#include "base/Strings.h"
#include "base/Workspace.h"
#include "base/dialog/MarkedRows.h"
#include "bridge/QStringBytes.h"
#include "control/CodeMax.h"
#include "control/complete/TextWords.h"
#include "control/edit/Carets.h"
#include "control/view/Pane.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

using text::ByteOffset;

namespace {

constexpr std::int64_t kLongestLine = 4000;   // bytes; in longer lines colours are not looked at
constexpr int kWidest = 60;                   // characters of a row

// The words that the user took, the last one with the highest number.
struct TakenWords {
  QHash<QString, int> order;
  int last = 0;
};
TakenWords& taken() { return Workspace::current().part<TakenWords>(); }

QString kindName(CompletionKind kind) {
  switch (kind) {
    case CompletionKind::hotKey: return Completer::tr("hot key");
    case CompletionKind::word: return Completer::tr("word");
    case CompletionKind::keyword: return Completer::tr("keyword");
    case CompletionKind::otherText: return Completer::tr("other text");
  }
  return {};
}

}   // namespace

Completer::Completer(CodeMax& control) : QObject(&control), control_(control) {
  add(std::make_unique<TextWords>());
  add(std::make_unique<Keywords>());
  wait_.setSingleShot(true);
  connect(&wait_, &QTimer::timeout, this, &Completer::show);
  connect(&control, &CodeMax::Typed, this, &Completer::typed);
  connect(&control, &CodeMax::SelChange, this, &Completer::moved);
  connect(&control, &CodeMax::LostFocus, this, &Completer::hide);
  connect(&control, &CodeMax::Scrolled, this, [this] {
    if (list_ && list_->isVisible()) place();
  });
  connect(&control, &CodeMax::CompletionWanted, this, [this] { offer(true); });
}

Completer::~Completer() { delete list_; }

void Completer::add(std::unique_ptr<CompletionSource> source) { sources_.push_back(std::move(source)); }

// --- The question -----------------------------------------------------------------------------------------------------------------

// What stands directly before the caret of a word. False: a selection, a number, or more than any word has.
bool Completer::readTyped(CompletionQuestion& question) const {
  Editor& editor = control_.editor();
  const text::SelectionState& selection = editor.selection();
  if (selection.anchor != selection.caret || selection.column) return false;
  const text::Snapshot& text = editor.snapshot();
  const ByteOffset from = std::max(ByteOffset(0), selection.caret - static_cast<std::int64_t>(text::kLongestTyped) - 4);
  const std::string before = text.bytes({from, selection.caret});
  std::string_view rest = before;
  while (!rest.empty()) {
    const text::Char c = text::decodeLast(rest);
    if (c.bad || text::classOf(c.code) != text::CharClass::word) break;
    rest.remove_suffix(static_cast<std::size_t>(c.bytes));
  }
  question.typedBytes = before.substr(rest.size());
  question.typed = {selection.caret - static_cast<std::int64_t>(question.typedBytes.size()), selection.caret};
  question.model = control_.model().get();
  const char first = question.typedBytes.empty() ? 'a' : question.typedBytes[0];
  return question.typedBytes.size() <= text::kLongestTyped && !(first >= '0' && first <= '9');
}

bool Completer::isCode(ByteOffset at) const {
  TextModel& model = *control_.model();
  const text::Highlighter* highlighter = model.highlighter();
  const text::Snapshot& text = model.snapshot();
  const text::LineNo line = text.lineAt(at);
  const ByteOffset start = text.lineStart(line);
  if (!highlighter || text.lineEnd(line) - start > kLongestLine) return true;
  std::vector<text::Token> tokens;
  highlighter->scanLine(text.line(line), model.stateAt(line, 1 << 20), &tokens);
  const std::int64_t byte = at - start - 1;
  return std::none_of(tokens.begin(), tokens.end(), [&](const text::Token& token) {
    const bool dead =
        token.kind == text::TokenKind::comment || token.kind == text::TokenKind::string || token.kind == text::TokenKind::number;
    return dead && token.begin <= byte && byte < token.begin + token.length;
  });
}

void Completer::typed() {
  if (inserting_) return;
  CompletionQuestion now;
  if (!readTyped(now) || now.typedBytes.empty()) return hide();
  const bool asked = open_ && question_.asked && now.typed.begin == question_.typed.begin;
  if (asked || control_.Aids().completeTyped) offer(asked);
}

// The list goes when the caret leaves the end of the word; when letters were deleted, the question is asked again.
void Completer::moved() {
  if (!open_ || inserting_) return;
  CompletionQuestion now;
  if (!readTyped(now) || now.typed.begin != question_.typed.begin) return hide();
  if (now.typedBytes == question_.typedBytes) return;
  if (now.typedBytes.size() < question_.typedBytes.size()) offer(question_.asked);
}

void Completer::offer(bool asked) {
  CompletionQuestion question;
  Editor& editor = control_.editor();
  if (gBusy() || control_.ReadOnly() || !readTyped(question)) return hide();
  const ByteOffset caret = question.typed.end;
  question.asked = asked;
  question.code = isCode(caret);
  if (!asked) {
    const text::Snapshot& text = editor.snapshot();
    const auto letters = toQString(question.typedBytes).size();
    const std::string behind = text.bytes({caret, std::min(text.size(), caret + 4)});
    const text::Char next = text::decode(behind);
    const bool inWord = next.bytes > 0 && !next.bad && text::classOf(next.code) == text::CharClass::word;
    if (letters < kShortestTyped || inWord || !question.code) return hide();
  }
  const bool stays = open_ && question.typed.begin == question_.typed.begin;
  if (!stays) hide();
  entered_ = asked;
  open_ = true;
  question_ = std::move(question);
  rows_.clear();
  shown_ = 0;   // the list still shows the old ones
  wait_.start(kWaitMs);
  const std::uint64_t number = ++asked_;
  for (const auto& source : sources_)
    source->ask(question_, [self = QPointer(this), number, from = source.get()](std::vector<WordOffer> words) {
      if (self && self->asked_ == number && self->open_) self->came(*from, std::move(words));
    });
}

// --- The rows ---------------------------------------------------------------------------------------------------------------------

bool Completer::before(const Row& a, const Row& b) const {
  const auto whole = [this](const Row& row) {
    return row.word.kind == CompletionKind::hotKey && row.word.match.fit == text::PartFit::begins &&
           row.word.text.size() == toQString(question_.typedBytes).size();
  };
  if (whole(a) != whole(b)) return whole(a);
  if (a.word.match.fit != b.word.match.fit) return a.word.match.fit < b.word.match.fit;
  const int usedA = taken().order.value(a.word.text), usedB = taken().order.value(b.word.text);
  if (usedA != usedB) return usedA > usedB;
  // Twice as far is a step; what is not near comes last.
  const auto steps = [](const Row& row) {
    return row.word.distance < 0 ? 64 : std::bit_width(static_cast<std::uint64_t>(row.word.distance) / 64);
  };
  if (steps(a) != steps(b)) return steps(a) < steps(b);
  if (a.word.kind != b.word.kind) return a.word.kind < b.word.kind;
  if (a.word.count != b.word.count) return a.word.count > b.word.count;
  if (a.word.text.size() != b.word.text.size()) return a.word.text.size() < b.word.text.size();
  return a.word.text < b.word.text;
}

void Completer::came(CompletionSource& source, std::vector<WordOffer> words) {
  const QString typed = toQString(question_.typedBytes);
  QHash<std::pair<QString, bool>, std::size_t> known;   // by text, hot keys apart
  for (std::size_t i = 0; i < rows_.size(); ++i)
    known.insert({rows_[i].word.text, rows_[i].word.kind == CompletionKind::hotKey}, i);
  for (WordOffer& word : words) {
    const bool hotKey = word.kind == CompletionKind::hotKey;
    if (word.text == typed && !hotKey) continue;
    const auto same = known.constFind({word.text, hotKey});
    if (same == known.cend()) {
      known.insert({word.text, hotKey}, rows_.size());
      rows_.push_back({std::move(word), &source});
      continue;
    }
    WordOffer& old = rows_[*same].word;
    if (old.distance < 0) old.distance = word.distance;
    old.count += word.count;
    if (word.kind == CompletionKind::keyword || (old.kind == CompletionKind::otherText && word.kind == CompletionKind::word))
      old.kind = word.kind;
  }
  if (!wait_.isActive()) show();
}

void Completer::show() {
  wait_.stop();
  if (!open_) return;
  const auto better = [this](const Row& a, const Row& b) { return before(a, b); };
  // What comes late never moves the chosen row.
  const bool keeps = list_ && list_->isVisible() && list_->currentRow() >= 0 && shown_ <= rows_.size();
  const std::size_t stay = keeps ? shown_ : 0, most = std::max(stay, std::min<std::size_t>(rows_.size(), kMostRows));
  std::partial_sort(rows_.begin() + static_cast<std::ptrdiff_t>(stay), rows_.begin() + static_cast<std::ptrdiff_t>(most),
                    rows_.end(), better);
  rows_.resize(most);
  if (rows_.empty()) {
    if (question_.asked) emit control_.Note(tr("No word fits"));
    return conceal();   // answers may still come
  }
  if (keeps && shown_ > 0 && shown_ == rows_.size()) return;
  fill();
}

void Completer::fill() {
  if (!list_) {
    list_ = new QListWidget(&control_);
    list_->setObjectName(QStringLiteral("lstCompletion"));
    list_->setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    list_->setAttribute(Qt::WA_ShowWithoutActivating);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setAccessibleName(tr("Words that fit"));
    list_->setItemDelegate(new MarkedRows(list_));
    list_->setFrameStyle(QFrame::Box | QFrame::Plain);
    list_->setUniformItemSizes(true);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setTextElideMode(Qt::ElideRight);
    connect(list_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
      if (shown_ > 0) accept(list_->row(item));
    });
  }
  const int chosen = entered_ ? std::max(0, list_->isVisible() && shown_ > 0 ? list_->currentRow() : 0) : -1;
  QPalette colors = control_.palette();   // a border that stands out from dark and light text
  colors.setColor(QPalette::WindowText, colors.color(QPalette::PlaceholderText));
  list_->setPalette(colors);
  list_->setFont(control_.Font());
  list_->clear();
  for (const Row& row : rows_) {
    const QString word = plainForDisplay(row.word.text, kWidest);
    QString detail = kindName(row.word.kind);
    if (!row.word.detail.isEmpty()) detail += QStringLiteral(": ") + plainForDisplay(row.word.detail, kWidest);
    auto* item = new QListWidgetItem(word + QStringLiteral("   ") + detail, list_);
    const std::string bytes = fromQString(row.word.text);
    QList<QVariant> marks;
    for (const auto& [first, length] : row.word.match.places)
      marks << static_cast<int>(toQString(std::string_view(bytes).substr(0, static_cast<std::size_t>(first))).size())
            << static_cast<int>(
                   toQString(std::string_view(bytes).substr(static_cast<std::size_t>(first), static_cast<std::size_t>(length)))
                       .size());
    item->setData(MarkedRows::kMarks, marks);
    item->setData(MarkedRows::kGreyFrom, static_cast<int>(word.size()));
  }
  shown_ = rows_.size();
  const auto keys = static_cast<CompletionKeys>(control_.Aids().completionKeys);
  choose(entered_ ? std::min(chosen, list_->count() - 1) : keys == CompletionKeys::entered ? -1 : 0);
  place();
}

// -1: no row.
void Completer::choose(int row) {
  list_->setCurrentRow(row);
  if (row < 0) list_->scrollToTop();
}

void Completer::place() {
  auto* pane = qobject_cast<Pane*>(QApplication::focusWidget());
  if (!pane || !control_.isAncestorOf(pane)) return hide();
  const QPoint start = pane->view().pointOf(question_.typed.begin);
  if (!pane->viewport()->rect().adjusted(0, -1, 0, 1).contains(start)) return hide();
  const int rows = std::min(list_->count(), kRowsShown);
  const int bar = list_->count() > rows ? list_->style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
  const QRect screen = pane->screen()->availableGeometry();
  const int bold = list_->fontMetrics().averageCharWidth() * 2;
  const int widest = std::min(screen.width() / 2, list_->fontMetrics().averageCharWidth() * (kWidest + 20));
  const QSize size(std::min(widest, list_->sizeHintForColumn(0) + bold + bar + 2 * list_->frameWidth()),
                   list_->sizeHintForRow(0) * rows + 2 * list_->frameWidth());
  QPoint at = pane->viewport()->mapToGlobal(start + QPoint(-list_->frameWidth() - 2, pane->view().lineHeight() + 2));
  if (at.y() + size.height() > screen.bottom()) at.setY(pane->viewport()->mapToGlobal(start).y() - size.height() - 2);
  at.setX(std::max(screen.left(), std::min(at.x(), screen.right() - size.width())));
  list_->setGeometry(QRect(at, size));
  if (!list_->isVisible()) {
    list_->show();
    qApp->installEventFilter(this);   // only while the list is shown
  }
}

void Completer::hide() {
  open_ = entered_ = false;
  ++asked_;
  wait_.stop();
  rows_.clear();
  shown_ = 0;
  conceal();
}

void Completer::conceal() {
  qApp->removeEventFilter(this);
  if (list_) list_->hide();
}

QListWidget* Completer::list() const { return list_; }
QString Completer::typedText() const { return toQString(question_.typedBytes); }

void Completer::accept(int row) {
  if (row < 0 || row >= static_cast<int>(rows_.size())) return hide();
  const Row chosen = rows_[static_cast<std::size_t>(row)];
  const text::ByteRange typed = question_.typed;
  const std::string typedBytes = question_.typedBytes;
  const QString typedBefore = typedText();
  hide();
  taken().order[chosen.word.text] = ++taken().last;
  Editor& editor = control_.editor();
  if (editor.selection().caret != typed.end || editor.snapshot().bytes(typed) != typedBytes) return;
  // What was typed is replaced at each caret; where it does not stand at all of them, at this one.
  const auto follows = [&](const Caret& caret) {
    const ByteOffset begin = std::max(ByteOffset(0), caret.caret - std::ssize(typedBytes));
    return caret.empty() && editor.snapshot().bytes({begin, caret.caret}) == typedBytes;
  };
  if (!std::ranges::all_of(carets::others(editor), follows)) carets::drop(editor);
  const QScopedValueRollback inserting(inserting_, true);
  const EditBlock block(control_);   // one undo step
  const auto deleteTyped = [&] {     // at each caret
    for (std::string_view left = typedBytes; !left.empty(); left.remove_prefix(static_cast<std::size_t>(text::clusterLength(left))))
      control_.ExecuteCmd(Cmd::DELETEBACK);
  };
  QString rest = chosen.word.text;
  bool gone = false;
  if (chosen.word.kind == CompletionKind::hotKey) {
    gone = carets::several(editor);
    if (gone) deleteTyped();
    else editor.setSelection({typed.begin, typed.end, 0, 0, false});
    if (chosen.source->accept(chosen.word)) return;
    if (!gone) editor.moveCaret(typed.end, false);
  }
  // As the user would type it, so that a recorded macro has it.
  const bool overtype = std::exchange(editor.overtype, false);
  if (!gone && rest.startsWith(typedBefore)) rest.remove(0, typedBefore.size());
  else if (!gone) deleteTyped();
  editor.typeText(rest);
  editor.overtype = overtype;
}

// --- Keys -------------------------------------------------------------------------------------------------------------------------

bool Completer::takesKey(int key, Qt::KeyboardModifiers modifiers) {
  modifiers &= ~Qt::KeypadModifier;
  const auto keys = static_cast<CompletionKeys>(control_.Aids().completionKeys);
  const int row = list_->currentRow();
  const bool whole = row >= 0 && rows_[static_cast<std::size_t>(row)].word.kind != CompletionKind::hotKey && list_->item(row) &&
                     rows_[static_cast<std::size_t>(row)].word.text == typedText();
  if (key == Qt::Key_F1 && modifiers == Qt::ShiftModifier)
    return std::any_of(rows_.begin(), rows_.end(), [](const Row& each) { return each.word.kind == CompletionKind::hotKey; });
  if (modifiers != Qt::NoModifier) return false;
  switch (key) {
    case Qt::Key_Escape:
    case Qt::Key_Up:
    case Qt::Key_Down: return true;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: return entered_;
    case Qt::Key_Tab: return row >= 0 && (entered_ || keys != CompletionKeys::entered);
    case Qt::Key_Return:
    case Qt::Key_Enter: return row >= 0 && !whole && (entered_ || keys == CompletionKeys::both);
    default: return false;
  }
}

bool Completer::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride) return false;
  const auto* widget = qobject_cast<QWidget*>(watched);
  if (!widget || !(widget == &control_ || control_.isAncestorOf(widget)) || !list_ || !list_->isVisible()) return false;
  const auto* key = static_cast<QKeyEvent*>(event);
  if (!key->text().isEmpty() && key->text()[0].isPrint()) return false;   // text
  if (wait_.isActive()) show();                                           // the key means what is typed by now
  if (!list_ || !list_->isVisible() || !takesKey(key->key(), key->modifiers())) return false;
  if (event->type() == QEvent::ShortcutOverride) {
    event->accept();   // the list takes these keys before a menu
    return true;
  }
  const int row = list_->currentRow(), last = list_->count() - 1;
  entered_ = key->key() != Qt::Key_Escape;
  switch (key->key()) {
    case Qt::Key_Escape: hide(); break;
    case Qt::Key_Down: choose(row < 0 || row == last ? 0 : row + 1); break;
    case Qt::Key_Up: choose(row <= 0 ? last : row - 1); break;
    case Qt::Key_PageDown: choose(std::min(last, row + kRowsShown)); break;
    case Qt::Key_PageUp: choose(std::max(0, row - kRowsShown)); break;
    case Qt::Key_F1:
      accept(static_cast<int>(
          std::find_if(rows_.begin(), rows_.end(), [](const Row& each) { return each.word.kind == CompletionKind::hotKey; }) -
          rows_.begin()));
      break;
    default: accept(row);
  }
  return true;
}
