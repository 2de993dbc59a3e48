// The tree of a folder's files, or of a fixed set of files. A folder is read on a thread when the user opens it. A refresh changes only
// the entries that differ, so open folders and the selection stay.
#pragma once

#include <QAbstractItemModel>
#include <QSet>
#include <memory>
#include <string>
#include <vector>

class FilesModel : public QAbstractItemModel {
  Q_OBJECT
 public:
  explicit FilesModel(QObject* parent);
  ~FilesModel() override;

  // all: also what is ignored, hidden or binary, in grey.
  void showFolder(const QString& root, bool all);
  // Paths below root, or absolute ones: nothing else is shown, and nothing is read.
  void showFiles(const QString& root, const std::vector<std::string>& paths);
  void refresh();                             // reads all folders again that were read before
  void refresh(const QStringList& folders);   // the same for those of these folders that were read before

  QString path(const QModelIndex& index) const;     // full; of the invalid index the root
  QModelIndex indexOf(const QString& path) const;   // invalid where it is not in the tree (yet)
  bool isFolder(const QModelIndex& index) const;
  bool isFixed() const { return fixed_; }
  // Documents: those that are open are bold, those that are modified have "*" behind them.
  void setOpen(const QSet<QString>& open, const QSet<QString>& modified);

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& = {}) const override { return 1; }
  bool hasChildren(const QModelIndex& parent = {}) const override;
  bool canFetchMore(const QModelIndex& parent) const override;
  void fetchMore(const QModelIndex& parent) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 signals:
  void renameAsked(const QString& path, const QString& name);
  void folderRead(const QModelIndex& index);   // its entries are there

 private:
  struct Node;
  struct Look;
  Node* nodeOf(const QModelIndex& index) const;
  QModelIndex indexOf(const Node* node) const;
  Node* find(const QString& path) const;
  std::string bytes(const Node* node) const;
  void read(const std::vector<Node*>& nodes);   // one after the other on one thread
  void take(Node* node, Look look);
  void reset(const QString& root);
  static void listRead(Node* node, std::vector<Node*>* nodes);   // those below it that were looked into, and itself

  std::unique_ptr<Node> root_;
  std::string rootPath_;
  bool all_ = false, fixed_ = false;
  int generation_ = 0;   // of what is shown
  QSet<QString> open_, modified_;
};
