#include "script/frmCommand.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTextBlock>
#include <QVBoxLayout>

#include "base/FixedFont.h"
#include "base/Strings.h"
#include "script/CommandField.h"
#include "script/mCMXParser.h"
#include "settings/modRegistry.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int kHistoryLength = 20;
const QString kHistoryKey = u"Software\\Zelkor Editor\\Commands"_s;

QString entryName(int n) { return u"COMMAND%1"_s.arg(n); }

}   // namespace

frmCommand::frmCommand(QWidget* parent)
    : QDialog(parent), field_(new CommandField(this)), help_(new QLabel(this)), report_(new QLabel(this)) {
  setWindowTitle(tr("Command"));
  setSizeGripEnabled(true);
  field_->setFont(fixedFont());
  field_->setPlaceholderText(tr("One statement a line, for example: ECHO $Title"));
  for (QLabel* label : {help_, report_}) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
  }
  auto* const buttons = new QDialogButtonBox(this);
  run_ = buttons->addButton(tr("&Run"), QDialogButtonBox::ActionRole);
  older_ = buttons->addButton(tr("&Older"), QDialogButtonBox::ActionRole);
  newer_ = buttons->addButton(tr("&Newer"), QDialogButtonBox::ActionRole);
  buttons->addButton(QDialogButtonBox::Close);
  run_->setObjectName(u"run"_s);
  run_->setDefault(true);
  run_->setToolTip(tr("Ctrl+Enter"));
  older_->setToolTip(tr("Ctrl+Up"));
  newer_->setToolTip(tr("Ctrl+Down"));
  auto* const layout = new QVBoxLayout(this);
  auto* const caption = new QLabel(tr("Co&mmands:"), this);
  caption->setBuddy(field_);
  layout->addWidget(caption);
  layout->addWidget(field_, 1);
  layout->addWidget(help_);
  layout->addWidget(report_);
  layout->addWidget(buttons);
  resize(560, 280);
  connect(run_, &QPushButton::clicked, this, &frmCommand::run);
  connect(field_, &CommandField::runAsked, this, &frmCommand::run);
  connect(older_, &QPushButton::clicked, this, [this] { recall(1); });
  connect(newer_, &QPushButton::clicked, this, [this] { recall(-1); });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(field_, &CommandField::cursorPositionChanged, this, &frmCommand::showHelp);
  connect(field_, &CommandField::textChanged, this, [this] {
    report_->clear();
    field_->setExtraSelections({});
  });
  for (int n = 0; n < kHistoryLength; ++n) {
    const QString text = modRegistry::Text(kHistoryKey, entryName(n));
    if (!text.isEmpty()) history_ << text;
  }
  recall(0);
  showHelp();
}

QString frmCommand::commands() const { return field_->toPlainText(); }
void frmCommand::setCommands(const QString& text) { field_->setPlainText(text); }

void frmCommand::run() {
  const QString text = commands();
  if (text.trimmed().isEmpty()) return;
  if (mCMXParser::isRunning()) {
    report_->setText(tr("A command string is running already."));
    return;
  }
  remember(text);
  run_->setEnabled(false);
  const mCMXParser::Outcome outcome = mCMXParser::Run(0, 0, text);
  run_->setEnabled(true);
  const bool isAsItRan = commands() == text;   // text typed meanwhile is the next command string
  if (isAsItRan) field_->markLine(outcome.line);
  switch (outcome.ending) {
    case mCMXParser::Ending::done:
      if (isAsItRan) setCommands({});
      report_->setText(tr("Done."));
      break;
    case mCMXParser::Ending::invalid:
      report_->setText(tr("Line %1: %2").arg(outcome.line).arg(plainForDisplay(mCMXParser::InvalidCommandText(outcome.text), 300)));
      break;
    case mCMXParser::Ending::stopped:
      report_->setText(outcome.text.isEmpty() ? tr("Stopped in line %1.").arg(outcome.line)
                                              : tr("Stopped in line %1: %2").arg(outcome.line).arg(outcome.text));
      break;
    case mCMXParser::Ending::refused: report_->setText(tr("There is no document to work on.")); break;
  }
  field_->setFocus();
}

void frmCommand::remember(const QString& text) {
  history_.removeAll(text);
  history_.prepend(text);
  while (history_.size() > kHistoryLength) history_.removeLast();
  modRegistry::NewKey(kHistoryKey);
  for (int n = 0; n < history_.size(); ++n) modRegistry::SetText(kHistoryKey, entryName(n), history_[n]);
  recalled_ = -1;
  typed_.clear();
  recall(0);
}

void frmCommand::recall(int step) {
  const int wanted = recalled_ + step;
  if (step != 0 && wanted >= -1 && wanted < history_.size()) {
    if (recalled_ < 0) typed_ = commands();
    recalled_ = wanted;
    setCommands(recalled_ < 0 ? typed_ : history_[recalled_]);
    field_->moveCursor(QTextCursor::End);
  }
  older_->setEnabled(recalled_ + 1 < history_.size());
  newer_->setEnabled(recalled_ >= 0);
}

void frmCommand::showHelp() {
  const QTextCursor cursor = field_->textCursor();
  const QString help = commandHelp(cursor.block().text(), cursor.positionInBlock());
  help_->setText(help.isEmpty() ? tr("Ctrl+Space offers statements, variables and options.") : help);
}

void frmCommand::keyPressEvent(QKeyEvent* event) {
  const bool control = event->modifiers() & Qt::ControlModifier;
  if (control && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
    run();   // from a button
  } else if (control && (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)) {
    recall(event->key() == Qt::Key_Up ? 1 : -1);
  } else {
    QDialog::keyPressEvent(event);
  }
}

#include "moc_frmCommand.cpp"
