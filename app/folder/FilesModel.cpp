#include "app/folder/FilesModel.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "app/look/Icons.h"
#include "app/look/Tips.h"
#include "base/Background.h"
#include "base/Strings.h"
#include "bridge/QStringBytes.h"
#include "folder/Walk.h"
#include "text/file/FileSystem.h"

namespace {
constexpr std::size_t kMostEntries = 20000;   // of one folder that are shown
}

// What the look into one folder found, sorted for showing.
struct FilesModel::Look {
  struct Entry {
    std::string name;
    QString shown;
    bool isFolder = false, grey = false, ignored = false;
    bool before(const Entry& other) const {
      if (isFolder != other.isFolder) return isFolder;
      const int c = shown.compare(other.shown, Qt::CaseInsensitive);
      return c != 0 ? c < 0 : name < other.name;
    }
  };
  std::vector<Entry> entries;
  std::size_t more = 0;   // that are not shown
  std::string error;

  static Look at(const std::string& folder, bool all, bool inIgnored) {
    Look look;
    std::vector<folder::Listed> found;
    bool hasRules = false, hasGit = false;
    if (const int r = folder::listFolder(folder, &found, &hasRules, &hasGit); r < 0) {
      look.error = text::errorText(r);
      return look;
    }
    const auto rules = folder::IgnoreRules::in(folder);
    for (folder::Listed& one : found) {
      const std::string path = folder::joined(folder, one.name);
      Entry entry;
      entry.isFolder = one.isFolder;
      entry.ignored = inIgnored || rules.ignores(path, one.isFolder && !one.isLink);
      if (entry.ignored && (one.isFolder ? rules.tracksBelow(path) : rules.tracked(path))) entry.grey = false;
      else entry.grey = entry.ignored || folder::isHiddenName(one.name) || folder::isVersionControl(one.name);
      if (!entry.grey && !one.isFolder) entry.grey = !one.isFile || folder::isBinaryFile(path);
      if (entry.grey && !all) continue;
      entry.shown = nameForDisplay(toQString(one.name));
      entry.name = std::move(one.name);
      look.entries.push_back(std::move(entry));
    }
    std::sort(look.entries.begin(), look.entries.end(), [](const Entry& a, const Entry& b) { return a.before(b); });
    if (look.entries.size() > kMostEntries) {
      look.more = look.entries.size() - kMostEntries;
      look.entries.resize(kMostEntries);
    }
    return look;
  }
};

struct FilesModel::Node {
  enum State { unread, reading, done };
  Look::Entry entry;
  Node* above = nullptr;
  std::vector<std::unique_ptr<Node>> children;
  State state = unread;
  bool again = false;   // asked for while it is read
  std::string error;
  int row() const {
    const auto& all = above->children;
    return int(std::find_if(all.begin(), all.end(), [this](const auto& one) { return one.get() == this; }) - all.begin());
  }
};

FilesModel::FilesModel(QObject* parent) : QAbstractItemModel(parent), root_(std::make_unique<Node>()) {}
FilesModel::~FilesModel() = default;

void FilesModel::reset(const QString& root) {
  ++generation_;
  root_ = std::make_unique<Node>();
  root_->entry.isFolder = true;
  rootPath_ = fromQString(root);
}

void FilesModel::showFolder(const QString& root, bool all) {
  beginResetModel();
  reset(root);
  all_ = all;
  fixed_ = false;
  endResetModel();
  if (!rootPath_.empty()) read({root_.get()});
}

void FilesModel::showFiles(const QString& root, const std::vector<std::string>& paths) {
  beginResetModel();
  reset(root);
  fixed_ = true;
  root_->state = Node::done;
  std::map<std::string, Node*, std::less<>> folders{{std::string(), root_.get()}};
  const auto add = [](Node* above, std::string_view name, bool isFolder) {
    auto node = std::make_unique<Node>();
    node->entry.name = name;
    node->entry.shown = nameForDisplay(toQString(name));
    node->entry.isFolder = isFolder;
    node->above = above;
    node->state = Node::done;
    above->children.push_back(std::move(node));
    return above->children.back().get();
  };
  for (const std::string& path : paths) {
    Node* above = root_.get();
    std::size_t at = 0;   // an absolute path: its first part is "/" and what follows
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; at = slash + 1, slash = path.find('/', at)) {
      Node*& node = folders[path.substr(0, slash)];
      if (!node) node = add(above, std::string_view(path).substr(at, slash - at), true);
      above = node;
    }
    add(above, std::string_view(path).substr(at), false);
  }
  const auto sort = [](auto& self, Node* node) -> void {
    std::sort(node->children.begin(), node->children.end(), [](const auto& a, const auto& b) { return a->entry.before(b->entry); });
    for (const auto& child : node->children) self(self, child.get());
  };
  sort(sort, root_.get());
  endResetModel();
}

void FilesModel::listRead(Node* node, std::vector<Node*>* nodes) {
  if (node->state == Node::unread) return;
  nodes->push_back(node);
  for (const auto& child : node->children) listRead(child.get(), nodes);
}

void FilesModel::refresh() {
  if (fixed_ || rootPath_.empty()) return;
  std::vector<Node*> nodes;
  listRead(root_.get(), &nodes);
  read(nodes);
}

void FilesModel::refresh(const QStringList& folders) {
  std::vector<Node*> nodes;
  for (const QString& folder : folders)
    if (Node* node = fixed_ ? nullptr : find(folder); node && node->state != Node::unread) nodes.push_back(node);
  read(nodes);
}

void FilesModel::read(const std::vector<Node*>& nodes) {
  struct Asked {
    std::string folder;
    bool inIgnored = false;
    Look look{};
  };
  std::vector<Asked> asked;
  for (Node* node : nodes) {
    if (node->state == Node::reading) {
      node->again = true;
      continue;
    }
    node->state = Node::reading;
    asked.push_back({bytes(node)});
    for (const Node* at = node; at; at = at->above) asked.back().inIgnored = asked.back().inIgnored || at->entry.ignored;
  }
  if (asked.empty()) return;
  const auto look = [asked = std::move(asked), all = all_]() mutable {
    for (Asked& one : asked) one.look = Look::at(one.folder, all, one.inIgnored);
    return std::move(asked);
  };
  inBackground(this, look, [this, generation = generation_](std::vector<Asked> found) {
    for (Asked& one : found) {
      if (generation != generation_) return;      // something else is shown by now
      Node* node = find(toQString(one.folder));   // it may have gone meanwhile
      if (node && node->state == Node::reading) take(node, std::move(one.look));
    }
  });
}

void FilesModel::take(Node* node, Look look) {
  const QModelIndex at = indexOf(node);
  const bool hadError = !node->error.empty();
  node->state = Node::done;
  node->error = look.error;
  std::set<std::pair<std::string_view, bool>> now, before;
  for (const Look::Entry& entry : look.entries) now.emplace(entry.name, entry.isFolder);
  for (int row = int(node->children.size()) - 1; row >= 0; --row) {
    const auto gone = [&](int r) {
      const Look::Entry& entry = node->children[std::size_t(r)]->entry;
      return !now.count({entry.name, entry.isFolder});
    };
    if (!gone(row)) continue;
    const int last = row;
    while (row > 0 && gone(row - 1)) --row;
    beginRemoveRows(at, row, last);
    node->children.erase(node->children.begin() + row, node->children.begin() + last + 1);
    endRemoveRows();
  }
  for (const auto& child : node->children) before.emplace(child->entry.name, child->entry.isFolder);
  // Both are in one order, so what is new goes in where it stands.
  for (std::size_t i = 0; i < look.entries.size();) {
    Look::Entry& entry = look.entries[i];
    if (before.count({entry.name, entry.isFolder})) {
      node->children[i]->entry.grey = entry.grey;
      node->children[i]->entry.ignored = entry.ignored;
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < look.entries.size() && !before.count({look.entries[end].name, look.entries[end].isFolder})) ++end;
    beginInsertRows(at, int(i), int(end) - 1);
    std::vector<std::unique_ptr<Node>> fresh;
    for (; i < end; ++i) {
      auto child = std::make_unique<Node>();
      child->entry = look.entries[i];
      child->above = node;
      fresh.push_back(std::move(child));
    }
    node->children.insert(node->children.begin() + std::ptrdiff_t(end - fresh.size()), std::make_move_iterator(fresh.begin()),
                          std::make_move_iterator(fresh.end()));
    endInsertRows();
  }
  if (look.more > 0) node->error = fromQString(tr("%1 more entries are not shown; the filter finds them").arg(look.more));
  if (hadError || !node->error.empty() || !node->children.empty()) emit dataChanged(at, at);
  emit folderRead(at);
  if (std::exchange(node->again, false)) read({node});
}

FilesModel::Node* FilesModel::nodeOf(const QModelIndex& index) const {
  return index.isValid() ? static_cast<Node*>(index.internalPointer()) : root_.get();
}

QModelIndex FilesModel::indexOf(const Node* node) const {
  return node == root_.get() ? QModelIndex() : createIndex(node->row(), 0, const_cast<Node*>(node));
}

std::string FilesModel::bytes(const Node* node) const {
  if (!node->above) return rootPath_;
  const std::string above = bytes(node->above), &name = node->entry.name;
  if (!node->above->above && (name.starts_with('/') || (name.size() > 1 && name[1] == ':'))) return name;
  return folder::joined(above, name);
}

FilesModel::Node* FilesModel::find(const QString& path) const {
  const std::string whole = fromQString(path);
  Node* node = root_.get();
  while (node) {
    const std::string here = bytes(node);
    if (here == whole) return node;
    Node* next = nullptr;
    for (const auto& child : node->children) {
      const std::string inside = bytes(child.get());
      if (inside == whole || (whole.starts_with(inside) && whole[inside.size()] == '/')) next = child.get();
    }
    node = next;
  }
  return nullptr;
}

QString FilesModel::path(const QModelIndex& index) const { return toQString(bytes(nodeOf(index))); }

QModelIndex FilesModel::indexOf(const QString& path) const {
  const Node* node = find(path);
  return node ? indexOf(node) : QModelIndex();
}

bool FilesModel::isFolder(const QModelIndex& index) const { return nodeOf(index)->entry.isFolder; }

void FilesModel::setOpen(const QSet<QString>& open, const QSet<QString>& modified) {
  open_ = open;
  modified_ = modified;
}

QModelIndex FilesModel::index(int row, int column, const QModelIndex& parent) const {
  const Node* node = nodeOf(parent);
  if (column != 0 || row < 0 || std::size_t(row) >= node->children.size()) return {};
  return createIndex(row, 0, node->children[std::size_t(row)].get());
}

QModelIndex FilesModel::parent(const QModelIndex& child) const {
  const Node* node = nodeOf(child);
  return child.isValid() && node->above ? indexOf(node->above) : QModelIndex();
}

int FilesModel::rowCount(const QModelIndex& parent) const { return int(nodeOf(parent)->children.size()); }

bool FilesModel::hasChildren(const QModelIndex& parent) const {
  const Node* node = nodeOf(parent);
  return !node->children.empty() || (node->entry.isFolder && node->state != Node::done);
}

bool FilesModel::canFetchMore(const QModelIndex& parent) const {
  const Node* node = nodeOf(parent);
  return parent.isValid() && node->entry.isFolder && node->state == Node::unread;
}

void FilesModel::fetchMore(const QModelIndex& parent) { read({nodeOf(parent)}); }

Qt::ItemFlags FilesModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  const Qt::ItemFlags usual = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
  return isFolder(index) ? usual : usual | Qt::ItemNeverHasChildren;
}

QVariant FilesModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Node* node = nodeOf(index);
  switch (role) {
    case Qt::DisplayRole:
      return node->entry.isFolder || !modified_.contains(path(index)) ? node->entry.shown : node->entry.shown + u'*';
    case Qt::EditRole: return toQString(node->entry.name);
    case Qt::DecorationRole:
      return icons::byName(node->entry.isFolder ? QStringLiteral("folder") : QStringLiteral("text-x-generic"));
    case Qt::ForegroundRole:
      if (node->entry.grey || !node->error.empty()) return QApplication::palette().brush(QPalette::Disabled, QPalette::Text);
      return {};
    case Qt::FontRole: {
      if (node->entry.isFolder || !open_.contains(path(index))) return {};
      QFont font = QApplication::font("QTreeView");
      font.setBold(true);
      return font;
    }
    case Qt::ToolTipRole: {
      const QString whole = path(index);
      return plainTip(node->error.empty() ? whole : whole + QLatin1String(": ") + toQString(node->error));
    }
    default: return {};
  }
}

bool FilesModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || !index.isValid()) return false;
  const QString name = value.toString();
  if (!name.isEmpty() && name != toQString(nodeOf(index)->entry.name)) emit renameAsked(path(index), name);
  return false;   // the disk shows what became of it
}
