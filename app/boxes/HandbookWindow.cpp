#include "app/boxes/HandbookWindow.h"

#include <QAction>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QScrollBar>
#include <QSplitter>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QVBoxLayout>

#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "control/edit/TextModel.h"
#include "text/file/FileIo.h"

namespace {
constexpr int kBlockRole = Qt::UserRole;
constexpr std::size_t kLargestPage = 8 << 20;

// The headings of a page with their block numbers.
template <class F>
void eachHeading(const QTextDocument& document, F use) {
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
    if (const int level = block.blockFormat().headingLevel(); level > 0) use(block, level);
}
}   // namespace

QString headingLink(const QString& heading) {
  QString link;
  for (const QChar c : heading.toLower()) {
    if (c.isLetterOrNumber() || c == u'_' || c == u'-') link += c;
    else if (c.isSpace()) link += u'-';
  }
  return link;
}

HandbookWindow::HandbookWindow(QWidget* parent)
    : QWidget(parent, Qt::Window),
      text_(new QTextBrowser(this)),
      headings_(new QListWidget(this)),
      search_(new QLineEdit(this)),
      folder_(joinPath(applicationFolder(), QStringLiteral("docs"))) {
  setObjectName(QStringLiteral("handbook"));
  setWindowTitle(tr("Handbook"));
  text_->setOpenLinks(false);
  text_->document()->setDocumentMargin(12);
  headings_->setAccessibleName(tr("Headings"));
  search_->setPlaceholderText(tr("Find in this page (Enter: next, Shift+Enter: previous)"));
  search_->setClearButtonEnabled(true);
  const auto labelled = [this](const QString& text, QWidget* field, QBoxLayout::Direction direction) {
    auto* holder = new QWidget(this);
    auto* layout = new QBoxLayout(direction, holder);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(text, holder);
    label->setBuddy(field);
    layout->addWidget(label);
    layout->addWidget(field, 1);
    return holder;
  };
  auto* split = new QSplitter(this);
  split->addWidget(labelled(tr("&Headings"), headings_, QBoxLayout::TopToBottom));
  split->addWidget(text_);
  split->setStretchFactor(1, 1);
  split->setSizes({220, 620});
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(labelled(tr("&Find:"), search_, QBoxLayout::LeftToRight));
  layout->addWidget(split, 1);
  resize(900, 640);
  connect(text_, &QTextBrowser::anchorClicked, this, [this](const QUrl& url) { follow(url.toString()); });
  connect(headings_, &QListWidget::itemClicked, this,
          [this](QListWidgetItem* item) { showPage(page_, item->data(kBlockRole).toString()); });
  connect(headings_, &QListWidget::itemActivated, this,
          [this](QListWidgetItem* item) { showPage(page_, item->data(kBlockRole).toString()); });
  connect(search_, &QLineEdit::returnPressed, this, [this] { find(true); });
  const auto key = [this](const QKeySequence& keys, auto act) {
    auto* action = new QAction(this);
    action->setShortcut(keys);
    addAction(action);
    connect(action, &QAction::triggered, this, act);
  };
  key(Qt::SHIFT | Qt::Key_Return, [this] { find(false); });
  key(QKeySequence::Find, [this] { search_->setFocus(); });
  key(Qt::Key_F3, [this] { find(true); });
  key(Qt::Key_Escape, [this] { close(); });
}

bool HandbookWindow::showPage(const QString& file, const QString& heading) {
  if (file != page_) {
    std::string error;
    const std::string bytes = text::readBytes(fromQString(joinPath(folder_, file)), &error, kLargestPage);
    if (!error.empty()) return false;
    page_ = file;
    text_->setMarkdown(toQString(bytes));
    headings_->clear();
    eachHeading(*text_->document(), [this](const QTextBlock& block, int level) {
      auto* item = new QListWidgetItem(QString((level - 1) * 3, u' ') + block.text(), headings_);
      item->setData(kBlockRole, headingLink(block.text()));
    });
  }
  if (heading.isEmpty()) {
    text_->verticalScrollBar()->setValue(0);
    return true;
  }
  bool found = false;
  eachHeading(*text_->document(), [&](const QTextBlock& block, int) {
    if (found || headingLink(block.text()) != heading) return;
    found = true;
    QTextCursor cursor(block);
    text_->moveCursor(QTextCursor::End);   // from there the heading scrolls up to the upper edge
    text_->setTextCursor(cursor);
    text_->verticalScrollBar()->setValue(text_->verticalScrollBar()->value() + text_->cursorRect(cursor).top());
  });
  return found;
}

void HandbookWindow::follow(const QString& link) {
  const QString file = link.section(u'#', 0, 0), heading = link.section(u'#', 1);
  if (link.contains(QLatin1String("://"))) dialogs().openUrl(link);
  else if (!showPage(file.isEmpty() ? page_ : file, heading)) MsgBox(tr("The handbook has no page %1").arg(link));
}

void HandbookWindow::find(bool forward) {
  const QTextDocument::FindFlags flags = forward ? QTextDocument::FindFlags() : QTextDocument::FindBackward;
  if (search_->text().isEmpty() || text_->find(search_->text(), flags)) return;
  text_->moveCursor(forward ? QTextCursor::Start : QTextCursor::End);
  text_->find(search_->text(), flags);
}
