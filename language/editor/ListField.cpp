#include "language/editor/ListField.h"

#include <QKeyEvent>
#include <QTextBlock>

#include "base/Strings.h"
#include "language/DefinitionText.h"

ListField::ListField(QWidget* parent) : TextField(parent) {
  QFont fixed(QStringLiteral("Courier New"));
  fixed.setStyleHint(QFont::Monospace);
  setFont(fixed);
  setTabChangesFocus(true);
  setLineWrapMode(NoWrap);
  connect(this, &QPlainTextEdit::textChanged, this, [this] {
    markLinesAtRisk();
    if (!filling_) emit edited();
  });
}

QString ListField::entries() const {
  // toPlainText() would turn no-break spaces into blanks.
  return toCrLf(document()->toRawText().replace(QChar::ParagraphSeparator, u'\n'));
}

void ListField::setEntries(const QString& text) {
  filling_ = true;
  setPlainText(QString(text).replace(QLatin1String("\r\n"), QLatin1String("\n")));
  filling_ = false;
}

void ListField::AddCRLFifNone() {
  if (!endsWithBreak_ || isReadOnly() || document()->isEmpty() || document()->lastBlock().length() == 1) return;
  QTextCursor end(document());
  end.movePosition(QTextCursor::End);
  end.insertBlock();
}

void ListField::focusOutEvent(QFocusEvent* event) {
  TextField::focusOutEvent(event);
  if (event->reason() != Qt::PopupFocusReason) AddCRLFifNone();
}

bool ListField::event(QEvent* event) {
  // Parent windows may use Ctrl+Tab to change pages. In this field it types a tab.
  if (event->type() == QEvent::ShortcutOverride) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Tab && key->modifiers() == Qt::ControlModifier) event->accept();
  }
  return TextField::event(event);
}

void ListField::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Tab && event->modifiers() == Qt::ControlModifier && !isReadOnly())
    insertPlainText(QStringLiteral("\t"));
  else TextField::keyPressEvent(event);
}

void ListField::markLinesAtRisk() {
  atRisk_ = definition::linesTakenForHeaders(entries());
  QList<QTextEdit::ExtraSelection> marks;
  for (const int line : atRisk_) {
    QTextEdit::ExtraSelection mark;
    mark.cursor = QTextCursor(document()->findBlockByNumber(line));
    mark.cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    mark.format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
    mark.format.setUnderlineColor(Qt::red);
    mark.format.setBackground(QColor(255, 0, 0, 50));
    marks += mark;
    if (marks.size() == 100) break;
  }
  setExtraSelections(marks);
}
