// Every change that a replacing in files would make, beside its line, with a tick box for each file and each change.
#pragma once

#include <QAbstractItemModel>
#include <QDialog>
#include <vector>

#include "folder/ReplaceInFiles.h"

class QLabel;
class QPushButton;
class QTreeView;

class ReplaceModel : public QAbstractItemModel {
  Q_OBJECT
 public:
  ReplaceModel(std::vector<folder::FilePlan> files, QString root, QObject* parent);

  std::vector<folder::FilePlan>& files() { return files_; }
  std::int64_t ticked() const { return ticked_; }
  std::int64_t tickedFiles() const;
  void tickAll(bool on);

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 signals:
  void tickedChanged();

 private:
  std::vector<folder::FilePlan> files_;
  std::vector<std::int64_t> count_;   // ticked, by file
  QString root_;
  std::int64_t ticked_ = 0;
};

class frmReplacePreview : public QDialog {
  Q_OBJECT
 public:
  // about: what is done, for the title. note: what was left out and why; may be empty.
  frmReplacePreview(std::vector<folder::FilePlan> files, const QString& root, const QString& about, const QString& note,
                    QWidget* parent);
  std::vector<folder::FilePlan> takeFiles() { return std::move(model_->files()); }

 private:
  void showCount();
  ReplaceModel* model_;
  QTreeView* tree_;
  QLabel* count_;
  QPushButton* replace_;
};
