// The recently-used files, latest first. Each name once; equal names are those the file system takes for equal. The list
// knows nothing of menus or settings: who shows or keeps it listens to Changed.
#pragma once

#include <QObject>
#include <QStringList>

class ucMRULst : public QObject {
  Q_OBJECT
 public:
  static constexpr int kLimit = 10;
  using QObject::QObject;

  int Count() const { return int(items_.size()); }
  QString Item(int index) const { return items_.value(index); }   // from 0, latest first; empty out of range
  const QStringList& items() const { return items_; }
  void AddItem(const QString& name);   // to the top; an equal one goes; the last beyond the limit drops out
  void UseItem(int index);             // to the top
  void Remove(int index);
  void setItems(const QStringList& names);   // as they stand, latest first

 signals:
  void Changed();

 private:
  QStringList items_;
};
