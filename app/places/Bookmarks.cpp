#include "app/places/Bookmarks.h"

#include <QPointer>
#include <algorithm>
#include <utility>

#include "app/find/FindFrame.h"
#include "app/find/ResultList.h"
#include "app/frame/frmMain.h"
#include "base/Background.h"
#include "base/Counted.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"
#include "document/frmDocument.h"
#include "folder/FindInFiles.h"
#include "text/line/LineReader.h"

using text::LineNo;

namespace {
constexpr int kWrittenMs = 1500;                   // several changes are written together
constexpr std::int64_t kLookedThrough = 1 << 20;   // bytes that are looked through before the window shows
constexpr std::int64_t kLongestText = 2000;        // bytes of a line in the list
}   // namespace

Bookmarks& Bookmarks::of(frmMain& frame) {
  auto* found = frame.findChild<Bookmarks*>(QString(), Qt::FindDirectChildrenOnly);
  return found ? *found : *new Bookmarks(frame);
}

Bookmarks::Bookmarks(frmMain& frame)
    : QObject(&frame),
      frame_(frame),
      file_(std::make_shared<BookmarkFile>(fromQString(userStateFolder()) + "/bookmarks")),
      ended_(std::make_shared<std::atomic<bool>>(false)) {
  soon_.setSingleShot(true);
  soon_.setInterval(kWrittenMs);
  connect(&soon_, &QTimer::timeout, this, &Bookmarks::write);
  connect(&frame, &frmMain::documentOpened, this, &Bookmarks::opened);
  connect(&frame, &frmMain::documentClosed, this, [this](frmDocument* document) { keep(*document); });
  connect(&frame, &frmMain::ended, this, [this] { file_->write(); });
}

Bookmarks::~Bookmarks() {
  *ended_ = true;
  if (soon_.isActive() || writing_) file_->write();
}

void Bookmarks::read() {
  if (std::exchange(isRead_, true)) return;
  for (BookmarkFile::Entry& entry : file_->read()) known_.insert_or_assign(std::move(entry.path), std::move(entry.marks));
}

void Bookmarks::opened(frmDocument* document) {
  read();
  const std::shared_ptr<TextModel> model = document->cmx->model();
  const QPointer<frmDocument> shown = document;
  connect(model.get(), &TextModel::appearanceChanged, this, [this, shown] {
    if (shown) keep(*shown);
  });
  const auto kept = known_.find(fromQString(document->CurrentFileName()));
  if (kept == known_.end() || document->views() > 1 || !model->bookmarks().empty()) return;
  const text::Snapshot text = model->snapshot();
  if (text.size().value <= kLookedThrough || standAsKept(text, kept->second))
    return model->setBookmarks(findMarks(text, kept->second), true);
  // Looking through takes a while; what the user does meanwhile moves the marks.
  const auto changes = std::make_shared<std::vector<text::Change>>();
  const auto heard = model->document().subscribe([changes](const text::Change& change) { changes->push_back(change); });
  searching_.insert(model.get());
  inBackground(
      this, [text, marks = kept->second, ended = ended_] { return findMarks(text, marks, ended.get()); },
      [this, text, weak = std::weak_ptr(model), known = model.get(), changes, heard](std::vector<LineNo> lines) {
        searching_.erase(known);
        const auto now = weak.lock();
        if (!now || std::ranges::any_of(*changes, &text::Change::reset)) return;
        for (LineNo& line : lines) {
          text::ByteOffset at = text.lineStart(line);
          for (const text::Change& change : *changes) at = change.map(at, text::Bias::right);
          line = now->snapshot().lineAt(at);
        }
        now->setBookmarks(lines, true);
      });
}

void Bookmarks::keep(const frmDocument& document) {
  if (document.CurrentFileName().isEmpty()) return;
  const std::string path = fromQString(document.CurrentFileName());
  const TextModel& model = *document.cmx->model();
  if (searching_.contains(&model)) return;   // it has not got them yet
  KeptMarks marks = keptMarks(model.snapshot(), model.bookmarks());
  const auto known = known_.find(path);
  if (known == known_.end() ? marks.empty() : known->second == marks) return;
  file_->set(path, marks);
  if (marks.empty()) known_.erase(path);
  else known_.insert_or_assign(path, std::move(marks));
  if (!soon_.isActive()) soon_.start();
}

void Bookmarks::write() {
  if (writing_) {
    again_ = true;
    return;
  }
  writing_ = true;
  inBackground(
      this, [file = file_] { return file->write(); },
      [this](const std::string& error) {
        writing_ = false;
        if (!error.empty()) SetStatusText(tr("The bookmarks are not kept: %1").arg(toQString(error)));
        if (std::exchange(again_, false)) write();
      });
}

void Bookmarks::list() {
  read();
  struct Text {
    std::string path;
    text::Snapshot text;
    std::vector<LineNo> lines;
  };
  std::vector<Text> open;
  std::map<std::string, KeptMarks> closed = known_;
  std::vector<const TextModel*> seen;   // a text may have several windows
  for (const frmDocument* document : frame_.documents()) {
    const TextModel* model = document->cmx->model().get();
    closed.erase(fromQString(document->CurrentFileName()));
    if (std::ranges::find(seen, model) != seen.end()) continue;
    seen.push_back(model);
    const QString& name = document->CurrentFileName();
    if (auto lines = model->bookmarks(); !lines.empty())
      open.push_back({fromQString(name.isEmpty() ? document->CurrentFileTitle() : name), model->snapshot(), std::move(lines)});
  }
  const auto make = [&](const FindFrame::Named& shown, text::SearchControl& control, QString* result) {
    std::string rows;
    std::int64_t count = 0, files = 0;
    const auto add = [&](const std::string& path, std::int64_t line, std::string text) {
      folder::FileFinds row;
      row.path = shown(path);
      row.rows.push_back({1, line + 1, 1, 0, std::move(text), false});
      folder::appendRows(row, &rows);
      ++count;
    };
    for (const Text& one : open) {
      ++files;
      for (const LineNo line : one.lines) {
        if (control.cancel) return rows;
        add(one.path, line.value, text::beginOfLine(one.text, line, kLongestText));
      }
    }
    for (const auto& [path, marks] : closed) {
      ++files;
      for (const KeptMark& mark : marks) add(path, mark.line, mark.text);
    }
    *result = tr("%1 in %2").arg(counted(count, tr("bookmark"), tr("bookmarks")), counted(files, tr("text"), tr("texts")));
    return rows;
  };
  FindFrame::of(frame_).showList({tr("Bookmarks"), QLatin1String(ResultList::kFirsts[2]), tr("all documents"), nullptr}, make);
}
