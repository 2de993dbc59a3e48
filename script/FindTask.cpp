#include "script/FindTask.h"

#include <QCoreApplication>
#include <algorithm>
#include <set>

#include "base/Counted.h"
#include "bridge/QStringBytes.h"
#include "document/frmDocument.h"

namespace {
QString word(const char* text) { return QCoreApplication::translate("FindTask", text); }
}   // namespace

QString countedHits(std::int64_t number) { return counted(number, word("hit"), word("hits")); }
QString countedFiles(std::int64_t number) { return counted(number, word("file"), word("files")); }
QString countedChanges(std::int64_t number) { return counted(number, word("change"), word("changes")); }

std::int64_t notNamed(const folder::FindSummary& found, const folder::WalkReport& walked) {
  const std::int64_t all = found.skippedInAll() - found.skipped[std::size_t(folder::Skipped::binary)] + walked.unreadable;
  return all - std::int64_t(found.skippedNames.size() + walked.troubles.size());
}

void FindTask::setMasks(const std::string& text) {
  masks = text;
  walk.masks = folder::Masks(text);
}

void FindTask::addOpen(const QList<frmDocument*>& documents) {
  std::vector<const TextModel*> known;   // a text may have several windows
  for (const frmDocument* document : documents) {
    const TextModel* model = document->cmx->model().get();
    if (std::find(known.begin(), known.end(), model) != known.end()) continue;
    known.push_back(model);
    const bool hasFile = document->DocumentHasName();
    open.push_back({fromQString(hasFile ? document->CurrentFileName() : document->CurrentFileTitle()), hasFile, model->snapshot()});
  }
}

folder::FindRules FindTask::rules() const {
  folder::FindRules rules;
  rules.mostHits = mostHits;
  rules.longestLine = 2000;
  rules.mostLines = 50;
  rules.read.binary = binary;
  // Found by device and number, as a link may lead to one of them. The disk may hang: this is no work for the interface thread.
  for (const Open& one : open) {
    text::FileStatus status;
    if (one.hasFile && text::fileSystem().statAt(text::FileSystem::kCwd, one.path, true, &status) == 0)
      rules.read.openTexts.insert_or_assign({status.device, status.inode}, one.text);
  }
  return rules;
}

void FindTask::each(const std::function<bool(folder::FindItem)>& give, const text::SearchControl& control,
                    folder::WalkReport* report) const {
  switch (where) {
    case Where::openDocuments: {
      std::vector<folder::FindItem> sorted;
      for (const Open& one : open) sorted.push_back({one.path, one.text});
      for (const std::string& file : files) sorted.push_back({file, {}});
      std::erase_if(sorted, [this](const folder::FindItem& one) { return !walk.masks.fit(shown(one.path)); });
      std::ranges::stable_sort(sorted, {}, &folder::FindItem::path);
      for (folder::FindItem& one : sorted)
        if (!give(std::move(one))) return;
      return;
    }
    case Where::files:
      for (const auto& file : files)
        if (walk.masks.fit(shown(file)) && !give({file, {}})) return;
      return;
    case Where::folder:
      *report = folder::walk(
          root, walk,
          [&](const std::string& path) {
            return give({path, {}});
          },
          &control.cancel);
      return;
  }
}

std::string FindTask::shown(const std::string& path) const {
  const std::string below = root.ends_with('/') ? root : root + '/';
  return !root.empty() && path.starts_with(below) ? path.substr(below.size()) : path;
}

folder::ReplacePlanned FindTask::plan(const folder::Replacing& by, text::SearchControl& control, folder::WalkReport* report) const {
  std::map<folder::FileNumber, const Open*> known;
  text::FileStatus status;
  const auto look = [&status](const std::string& path) {
    return text::fileSystem().statAt(text::FileSystem::kCwd, path, true, &status) == 0;
  };
  for (const Open& one : open)
    if (one.hasFile && look(one.path)) known[{status.device, status.inode}] = &one;
  std::set<std::string> given;   // an open text comes once, whatever names lead to it
  return folder::planReplacing(
      *what, by, rules(),
      [&](const auto& give) {
        each(
            [&](folder::FindItem item) {
              if (!item.text && !known.empty() && look(item.path))
                if (const auto one = known.find({status.device, status.inode}); one != known.end())
                  item = {one->second->path, one->second->text};
              return (item.text && !given.insert(item.path).second) || give(std::move(item));
            },
            control, report);
      },
      control);
}
