#include "language/HotWords.h"

#include <QApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QScreen>
#include <algorithm>

#include "base/Program.h"
#include "base/Strings.h"
#include "control/CodeMax.h"
#include "language/FieldWalk.h"
#include "language/ucCM.h"
#include "text/line/Words.h"

namespace {

constexpr int kMostRows = 8;
constexpr std::int64_t kLongestLine = 4000;   // in longer lines the look-up would slow down typing

}   // namespace

HotWords::HotWords(CodeMax& cmx, ucCM& manager, std::function<int()> languageIndex, ExpandText expand)
    : QObject(&cmx), cmx_(cmx), manager_(manager), languageIndex_(std::move(languageIndex)), expand_(std::move(expand)) {
  connect(&cmx, &CodeMax::Typed, this, &HotWords::typed);
  connect(&cmx, &CodeMax::SelChange, this, [this] {
    if (!offered_.isEmpty() && prefix() != offered_) hide();
  });
  connect(&cmx, &CodeMax::LostFocus, this, &HotWords::hide);
}

HotWords::~HotWords() { delete list_; }

QListWidget* HotWords::list() const { return list_; }

QString HotWords::prefix() const {
  const text::Snapshot& text = cmx_.editor().snapshot();
  const text::LineNo number = text.lineAt(cmx_.editor().selection().caret);
  if (cmx_.HasSelection() || text.lineEnd(number) - text.lineStart(number) > kLongestLine) return {};
  const CmPosition caret = cmx_.CurrentPosition();
  const QString line = cmx_.GetLine(caret.LineNo);
  const auto isWord = [&](qsizetype at) { return at < line.size() && text::classOf(line[at].unicode()) == text::CharClass::word; };
  if (isWord(caret.ColNo)) return {};
  qsizetype begin = caret.ColNo;
  while (begin > 0 && isWord(begin - 1)) --begin;
  return line.mid(begin, caret.ColNo - begin);
}

bool HotWords::isCode() const {
  const text::Highlighter* highlighter = cmx_.model()->highlighter();
  if (!highlighter) return true;
  const CmPosition caret = cmx_.CurrentPosition();
  const std::string line = fromQString(cmx_.GetLine(caret.LineNo));
  const auto at = static_cast<std::int64_t>(fromQString(cmx_.GetLine(caret.LineNo).left(caret.ColNo)).size()) - 1;
  std::vector<text::Token> tokens;
  highlighter->scanLine(line, cmx_.model()->stateAt(text::LineNo(caret.LineNo), 1 << 20), &tokens);
  return std::none_of(tokens.begin(), tokens.end(), [&](const text::Token& token) {
    return (token.kind == text::TokenKind::comment || token.kind == text::TokenKind::string) && token.begin <= at &&
           at < token.begin + token.length;
  });
}

void HotWords::typed() {
  if (gBusy() || cmx_.ReadOnly() || FieldWalk::isActive(cmx_)) return hide();
  offered_ = prefix();
  offer();
}

void HotWords::offer() {
  const int index = languageIndex_();
  if (offered_.isEmpty() || index < 1 || index > manager_.Languages()->Count()) return hide();
  std::vector<const clsTemplate*> fitting;
  bool exact = false;
  for (const auto& item : *manager_.Languages()->Item(index)->cTemplate()) {
    if (!item->HotKey.startsWith(offered_)) continue;
    const bool same = item->HotKey == offered_;
    if (same && exact) continue;   // of equal hot keys only the first one is used
    exact = exact || same;
    fitting.insert(same ? fitting.begin() : fitting.end(), item.get());
  }
  if (fitting.empty() || (offered_.size() < 2 && !exact) || !isCode()) return hide();
  if (fitting.size() > kMostRows) fitting.resize(kMostRows);

  if (!list_) {
    list_ = new QListWidget(&cmx_);
    list_->setObjectName(QStringLiteral("lstHotWords"));
    list_->setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    list_->setAttribute(Qt::WA_ShowWithoutActivating);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(list_, &QListWidget::itemClicked, this, &HotWords::accept);
  }
  list_->clear();
  for (const clsTemplate* item : fitting) {
    auto* row =
        new QListWidgetItem(plainForDisplay(item->HotKey, 40) + QStringLiteral("   ") + plainForDisplay(item->Desc, 60), list_);
    row->setData(Qt::UserRole, item->HotKey);
  }
  list_->setCurrentRow(0);

  QWidget* pane = QApplication::focusWidget();
  if (!pane || !(pane == &cmx_ || cmx_.isAncestorOf(pane))) return hide();
  const QRect caret = pane->inputMethodQuery(Qt::ImCursorRectangle).toRect();
  const QSize size(list_->sizeHintForColumn(0) + 2 * list_->frameWidth() + 4,
                   list_->sizeHintForRow(0) * list_->count() + 2 * list_->frameWidth());
  QPoint at = pane->mapToGlobal(caret.bottomLeft() + QPoint(0, 2));
  const QRect screen = pane->screen()->availableGeometry();
  if (at.y() + size.height() > screen.bottom()) at.setY(pane->mapToGlobal(caret.topLeft()).y() - size.height() - 2);
  at.setX(std::max(screen.left(), std::min(at.x(), screen.right() - size.width())));
  list_->setGeometry(QRect(at, size));
  if (!list_->isVisible()) {
    list_->show();
    qApp->installEventFilter(this);   // only while the list is shown
  }
}

void HotWords::hide() {
  offered_.clear();
  qApp->removeEventFilter(this);
  if (list_) list_->hide();
}

void HotWords::accept() {
  const QListWidgetItem* row = list_->currentItem();
  const QString hotKey = row ? row->data(Qt::UserRole).toString() : QString();
  const CmPosition caret = cmx_.CurrentPosition();
  const CmRange typedRange{caret.LineNo, caret.ColNo - prefix().size(), caret.LineNo, caret.ColNo, false};
  hide();
  if (hotKey.isEmpty()) return;
  const EditBlock block(cmx_);   // removing the typed part and inserting the template is one undo step
  cmx_.SetSel(typedRange);
  cmx_.ReplaceSel(hotKey);
  ExpandTemplate(cmx_, manager_, languageIndex_(), expand_);
}

bool HotWords::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride) return false;
  const auto* widget = qobject_cast<QWidget*>(watched);
  if (!widget || !(widget == &cmx_ || cmx_.isAncestorOf(widget))) return false;
  const auto* key = static_cast<QKeyEvent*>(event);
  const bool take = (key->key() == Qt::Key_Tab && key->modifiers() == Qt::NoModifier) ||
                    (key->key() == Qt::Key_F1 && key->modifiers() == Qt::ShiftModifier);
  const bool leave = key->key() == Qt::Key_Escape && key->modifiers() == Qt::NoModifier;
  if (!take && !leave) return false;
  if (event->type() == QEvent::ShortcutOverride) {
    event->accept();   // the list takes these keys before a menu
    return true;
  }
  if (take) accept();
  else hide();
  return true;
}
