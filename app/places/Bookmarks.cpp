#include "app/places/Bookmarks.h"

#include <QPointer>
#include <algorithm>
#include <set>
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
constexpr std::int64_t kLookedThrough = 1 << 18;   // bytes that are looked through before the window shows
constexpr std::int64_t kLoaded = 64 << 20;         // bytes of a closed file that is loaded for the list
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
  connect(&frame, &frmMain::documentClosed, this, &Bookmarks::closed);
  connect(&frame, &frmMain::fileRenamed, this, &Bookmarks::renamed);
  connect(&frame, &frmMain::fileNamed, this, [this](const QString& path) {
    for (const frmDocument* document : frame_.documents())
      if (document->CurrentFileName() == path) keep(*document->cmx->model());
  });
  connect(&frame, &frmMain::ended, this, [this] { file_->write(); });
}

Bookmarks::~Bookmarks() {
  *ended_ = true;
  if (soon_.isActive() || writing_) file_->write();
}

void Bookmarks::read() {
  if (!file_->isChanged()) return;
  known_.clear();
  for (BookmarkFile::Entry& entry : file_->read()) known_.insert_or_assign(std::move(entry.path), std::move(entry.marks));
}

void Bookmarks::opened(frmDocument* document) {
  read();
  const std::shared_ptr<TextModel> model = document->cmx->model();
  const std::weak_ptr<TextModel> weak = model;
  connect(document, &frmDocument::beforeReload, this, [this, weak] {
    if (const auto reloads = weak.lock()) beforeReload(*reloads);
  });
  connect(document, &frmDocument::reloaded, this, [this, weak] {
    const auto now = weak.lock();
    const auto text = texts_.find(now.get());
    if (text != texts_.end() && text->second.isSearching) give(now, text->second.sought);
  });
  if (texts_.contains(model.get())) return;   // another window of it
  Text& text = texts_[model.get()];
  connect(model.get(), &TextModel::appearanceChanged, this, [this, known = model.get()] { keep(*known); });
  connect(model.get(), &TextModel::modifiedChanged, this, [this, known = model.get()](bool modified) {
    if (!modified) keep(*known);
  });
  if (document->CurrentFileName().isEmpty()) return;
  text.saved = model->snapshot();
  const auto kept = known_.find(fromQString(document->CurrentFileName()));
  if (kept == known_.end() || !model->bookmarks().empty()) return;
  text.marks = kept->second;
  give(model, kept->second);
}

void Bookmarks::closed(frmDocument* document) {
  const std::shared_ptr<TextModel> model = document->cmx->model();
  const QList<frmDocument*> others = frame_.documents();
  if (std::ranges::any_of(others, [&](const frmDocument* other) { return other->cmx->model() == model; })) return;
  const auto at = texts_.find(model.get());
  if (at == texts_.end()) return;
  model->disconnect(this);
  const Text text = std::move(at->second);
  texts_.erase(at);
  if (text.isSearching || document->CurrentFileName().isEmpty()) return;   // it has not got them yet
  const bool isDiscarded = model->document().modified() && !document->isLeftInJournal();
  set(fromQString(document->CurrentFileName()),
      isDiscarded ? marksOfFile(text, *model) : mergedMarks(keptMarks(model->snapshot(), model->bookmarks()), text.missing));
}

// Those that were set since go to the lines of the file that have their text; those of other lines go with the lines.
KeptMarks Bookmarks::marksOfFile(const Text& text, const TextModel& model) const {
  KeptMarks now = keptMarks(model.snapshot(), model.bookmarks());
  std::set<std::string_view> had, added;
  for (const KeptMark& mark : text.marks) had.insert(mark.text);
  std::erase_if(now, [&](const KeptMark& mark) { return had.contains(mark.text); });
  for (const KeptMark& mark : now) added.insert(mark.text);
  if (now.empty() || text.saved.size().value > kLookedThrough) return text.marks;
  KeptMarks found = keptMarks(text.saved, findMarks(text.saved, now).lines);
  std::erase_if(found, [&](const KeptMark& mark) { return !added.contains(mark.text); });
  return mergedMarks(text.marks, found);
}

void Bookmarks::renamed(const QString& from, const QString& to) {
  read();
  const std::string before = fromQString(from), after = fromQString(to);
  std::map<std::string, KeptMarks> moved;
  for (const auto& [path, marks] : known_)
    if (path == before || path.starts_with(before + '/')) moved.emplace(path, marks);
  for (const auto& [path, marks] : moved) {
    set(path, {});
    set(after + path.substr(before.size()), marks);
  }
}

void Bookmarks::beforeReload(TextModel& model) {
  const auto at = texts_.find(&model);
  if (at == texts_.end()) return;
  Text& text = at->second;
  const std::vector<LineNo> lines = model.bookmarks();
  if (lines.size() > kMostKeptMarks) return;   // they move with the lines
  text.sought = mergedMarks(mergedMarks(keptMarks(model.snapshot(), lines), text.missing), text.sought);
  text.isSearching = true;
  ++text.search;
}

void Bookmarks::give(const std::shared_ptr<TextModel>& model, KeptMarks marks) {
  Text& given = texts_.at(model.get());
  given.isSearching = true;
  const int search = ++given.search;
  model->clearBookmarks();
  const text::Snapshot text = model->snapshot();
  if (text.size().value <= kLookedThrough || standAsKept(text, marks)) return settle(*model, findMarks(text, marks));
  given.sought = marks;
  // Looking through takes a while; what the user does meanwhile moves the marks.
  const auto changes = std::make_shared<std::vector<text::Change>>();
  const auto heard = model->document().subscribe([changes](const text::Change& change) { changes->push_back(change); });
  inBackground(
      this, [text, marks = std::move(marks), ended = ended_] { return findMarks(text, marks, ended.get()); },
      [this, text, weak = std::weak_ptr(model), search, changes, heard](FoundMarks found) {
        const auto now = weak.lock();
        const auto at = texts_.find(now.get());
        if (at == texts_.end() || at->second.search != search) return;
        if (std::ranges::any_of(*changes, &text::Change::reset)) {
          at->second.isSearching = false;
          at->second.sought.clear();
          return;
        }
        for (LineNo& line : found.lines) {
          text::ByteOffset offset = text.lineStart(line);
          for (const text::Change& change : *changes) offset = change.map(offset, text::Bias::right);
          line = now->snapshot().lineAt(offset);
        }
        settle(*now, std::move(found));
      });
}

void Bookmarks::settle(TextModel& model, FoundMarks found) {
  model.setBookmarks(found.lines, true);
  Text& text = texts_.at(&model);
  text.missing = std::move(found.missing);
  text.sought.clear();
  text.isSearching = text.hadMarks = false;
  keep(model);
}

void Bookmarks::keep(TextModel& model) {
  const auto at = texts_.find(&model);
  if (at == texts_.end() || at->second.isSearching || model.path.isEmpty()) return;
  // While a text is loaded, or saved under another name, its windows still have the name before.
  const QList<frmDocument*> documents = frame_.documents();
  if (std::ranges::none_of(documents, [&](const frmDocument* document) {
        return document->cmx->model().get() == &model && document->CurrentFileName() == model.path;
      }))
    return;
  Text& text = at->second;
  KeptMarks marks = keptMarks(model.snapshot(), model.bookmarks());
  if (marks.empty() && text.hadMarks) text.missing.clear();
  text.hadMarks = !marks.empty();
  marks = mergedMarks(std::move(marks), text.missing);
  if (!model.document().modified()) {
    text.saved = model.snapshot();
    text.marks = marks;
  }
  set(fromQString(model.path), std::move(marks));
}

void Bookmarks::set(const std::string& path, KeptMarks marks) {
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
    const auto known = texts_.find(model);
    if (known != texts_.end() && known->second.isSearching) continue;   // it is listed as if it were closed
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
      if (control.cancel) return rows;
      const std::int64_t before = count;
      const text::FileStamp there = text::stampOf(path, false);
      text::LoadedFile file;
      if (there.exists && there.status.isRegular() && there.status.size <= kLoaded) file = text::loadFile(path, {}, &control);
      if (control.cancel) return rows;
      if (!file.stamp.exists || !file.error.empty()) {
        for (const KeptMark& mark : marks) add(path, mark.line, mark.text);
      } else {
        for (const LineNo line : findMarks(file.text, marks, &control.cancel).lines)
          add(path, line.value, text::beginOfLine(file.text, line, kLongestText));
      }
      if (count > before) ++files;
    }
    *result = tr("%1 in %2").arg(counted(count, tr("bookmark"), tr("bookmarks")), counted(files, tr("text"), tr("texts")));
    return rows;
  };
  FindFrame::of(frame_).showList({tr("Bookmarks"), QLatin1String(ResultList::kFirsts[2]), tr("all documents"), nullptr}, make);
}
