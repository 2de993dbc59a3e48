#include "script/CommandField.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTextBlock>
#include <algorithm>

#include "control/keys/KeyCommands.h"
#include "script/Statements.h"

using namespace Qt::StringLiterals;

namespace {

std::vector<Completion> allStatements() {
  std::vector<Completion> list;
  for (const statements::Verb& verb : statements::verbs())
    list.push_back({QString::fromLatin1(verb.name), QString::fromLatin1(verb.help)});
  const QString prefix = QString::fromLatin1(statements::kEditPrefix);
  for (const statements::SelectionStatement& row : statements::selectionStatements())
    list.push_back({prefix + QString::fromLatin1(row.name), QString::fromLatin1(row.help)});
  for (const Command& command : commands())
    list.push_back({prefix + QString::fromLatin1(command.name), QString::fromLatin1(command.help)});
  return list;
}

bool isVariableLetter(QChar c) { return c.isLetterOrNumber(); }

}   // namespace

std::vector<Completion> completionsFor(const QString& beforeCaret, qsizetype* begin) {
  std::vector<Completion> all;
  const qsizetype blank = beforeCaret.indexOf(u' ');
  qsizetype dollar = beforeCaret.size();
  while (dollar > 0 && isVariableLetter(beforeCaret[dollar - 1])) --dollar;
  *begin = 0;
  if (dollar > 0 && beforeCaret[dollar - 1] == u'$') {
    *begin = dollar - 1;
    for (const statements::Variable& variable : statements::variables())
      all.push_back({QString::fromLatin1(variable.name), QString::fromLatin1(variable.help)});
    all.push_back({u"$Input("_s, u"asks for a text; put the question and \")\" behind it"_s});
  } else if (blank < 0) {
    all = allStatements();
  } else if (statements::codeOf(beforeCaret.left(blank).toUpper()) == statements::Code::usage) {
    *begin = beforeCaret.lastIndexOf(u' ');
    for (const statements::UsageOption& option : statements::usageOptions())
      all.push_back({QString::fromLatin1(option.text), QString::fromLatin1(option.help)});
  }
  const QString piece = beforeCaret.mid(*begin);
  const QString bare = piece.startsWith(QLatin1String(statements::kEditPrefix), Qt::CaseInsensitive) ? piece : QString();
  std::vector<Completion> fitting;
  for (Completion& completion : all) {
    const bool starts = completion.text.startsWith(piece, Qt::CaseInsensitive);
    // An edit command is also found without its prefix.
    const bool inside =
        bare.isEmpty() && piece.size() > 1 && blank < 0 && completion.text.mid(3).startsWith(piece, Qt::CaseInsensitive);
    if (starts || inside) fitting.push_back(std::move(completion));
  }
  // Best first: complete words, then those with the fewest missing letters.
  std::stable_sort(fitting.begin(), fitting.end(),
                   [&](const Completion& a, const Completion& b) { return !piece.isEmpty() && a.text.size() < b.text.size(); });
  return fitting;
}

QString commandHelp(const QString& line, qsizetype caret) {
  qsizetype end = caret;
  while (end < line.size() && isVariableLetter(line[end])) ++end;
  qsizetype begin = caret;
  while (begin > 0 && isVariableLetter(line[begin - 1])) --begin;
  const QString word = line.mid(begin, end - begin);
  if (begin > 0 && line[begin - 1] == u'$') {
    for (const statements::Variable& variable : statements::variables())
      if (word.startsWith(QLatin1String(variable.name + 1), Qt::CaseInsensitive))
        return QString::fromLatin1(variable.name) + u": "_s + QString::fromLatin1(variable.help);
  }
  const QString verb = statements::split(line).verb;
  for (const statements::Verb& row : statements::verbs())
    if (verb == QLatin1String(row.name))
      return u"%1 %2: %3"_s.arg(QString::fromLatin1(row.name), QString::fromLatin1(row.argument), QString::fromLatin1(row.help))
          .simplified();
  if (verb.size() <= 3) return {};
  for (const statements::SelectionStatement& row : statements::selectionStatements())
    if (verb.mid(3) == QLatin1String(row.name)) return QString::fromLatin1(row.help);
  const Command* const command = scriptCommandByName(QStringView(verb).mid(3));
  return command ? QString::fromLatin1(command->help) : QString();
}

CommandField::CommandField(QWidget* parent) : TextField(parent) {
  setLineWrapMode(NoWrap);
  setTabChangesFocus(true);
  completer_.setWidget(this);
  completer_.setCompletionMode(QCompleter::UnfilteredPopupCompletion);
  connect(&completer_, qOverload<const QModelIndex&>(&QCompleter::activated), this,
          [this](const QModelIndex& index) { insert(index.data(Qt::UserRole).toString()); });
}

void CommandField::markLine(int line) {
  QList<QTextEdit::ExtraSelection> marks;
  if (line > 0) {
    QTextEdit::ExtraSelection mark;
    mark.cursor = QTextCursor(document()->findBlockByNumber(line - 1));
    mark.format.setBackground(palette().color(QPalette::Base).lightnessF() > 0.5 ? QColor(255, 205, 205) : QColor(110, 30, 30));
    mark.format.setProperty(QTextFormat::FullWidthSelection, true);
    setTextCursor(mark.cursor);
    marks << mark;
  }
  setExtraSelections(marks);
}

// Tab moves the focus before keyPressEvent() is called.
bool CommandField::event(QEvent* event) {
  const bool tab = event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Tab;
  if (!tab || !completer_.popup()->isVisible()) return TextField::event(event);
  keyPressEvent(static_cast<QKeyEvent*>(event));
  event->accept();
  return true;
}

void CommandField::keyPressEvent(QKeyEvent* event) {
  const bool popup = completer_.popup()->isVisible();
  switch (event->key()) {
    case Qt::Key_Tab:
      if (popup) {
        const QModelIndex chosen = completer_.popup()->currentIndex();
        insert((chosen.isValid() ? chosen : completer_.completionModel()->index(0, 0)).data(Qt::UserRole).toString());
        completer_.popup()->hide();
        return;
      }
      break;
    case Qt::Key_Enter:
    case Qt::Key_Return:
      if (event->modifiers() & Qt::ControlModifier) {
        completer_.popup()->hide();
        emit runAsked();
        return;
      }
      [[fallthrough]];
    case Qt::Key_Escape:
      // If the user has moved into the list, the list takes Return; else Return ends the line.
      if (popup && (event->key() == Qt::Key_Escape || completer_.popup()->currentIndex().isValid())) {
        event->ignore();
        return;
      }
      break;
    default: break;
  }
  if (event->key() == Qt::Key_Space && event->modifiers() == Qt::ControlModifier) {
    offer(true);
    return;
  }
  TextField::keyPressEvent(event);
  if (!event->text().isEmpty() && event->text().at(0).isPrint()) {
    offer(false);
  } else if (event->key() == Qt::Key_Backspace && popup) {
    offer(false);
  } else if (popup && !event->text().isEmpty()) {
    completer_.popup()->hide();
  }
}

void CommandField::offer(bool evenWithoutLetters) {
  const QTextCursor cursor = textCursor();
  qsizetype begin = 0;
  const QString before = cursor.block().text().left(cursor.positionInBlock());
  const auto list = completionsFor(before, &begin);
  const bool complete = list.size() == 1 && list.front().text.compare(before.mid(begin), Qt::CaseInsensitive) == 0;
  if (list.empty() || complete || (before.mid(begin).isEmpty() && !evenWithoutLetters)) {
    completer_.popup()->hide();
    return;
  }
  auto* const model = new QStandardItemModel(&completer_);
  for (const Completion& completion : list) {
    auto* const item = new QStandardItem(completion.text.trimmed() + u"    "_s + completion.help);
    item->setData(completion.text, Qt::UserRole);
    model->appendRow(item);
  }
  delete completer_.model();
  completer_.setModel(model);
  QRect place = cursorRect();
  place.setWidth(
      std::min(700, completer_.popup()->sizeHintForColumn(0) + completer_.popup()->verticalScrollBar()->sizeHint().width() + 8));
  completer_.complete(place);
  completer_.popup()->setCurrentIndex({});   // nothing is selected until the user moves into the list; Tab takes the first entry
}

void CommandField::insert(const QString& completion) {
  QTextCursor cursor = textCursor();
  qsizetype begin = 0;
  const QString before = cursor.block().text().left(cursor.positionInBlock());
  completionsFor(before, &begin);
  cursor.setPosition(cursor.block().position() + int(begin), QTextCursor::KeepAnchor);
  cursor.insertText(completion);
  setTextCursor(cursor);
}

#include "moc_CommandField.cpp"
