// The recently-used files, latest first. Each name occurs once; names are compared as the file system does. The list knows nothing
// of menus and settings: these listen to Changed.
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
  void AddItem(const QString& name);   // puts it at the top and removes an equal one; drops the last one above the limit
  void UseItem(int index);             // to the top
  void Remove(int index);
  void setItems(const QStringList& names);   // in this order, latest first

 signals:
  void Changed();

 private:
  QStringList items_;
};
