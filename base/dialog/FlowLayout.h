// A row of widgets that wraps to further rows when it is too long, so that each widget can be reached at any width.
#pragma once

#include <QLayout>
#include <vector>

class FlowLayout : public QLayout {
 public:
  explicit FlowLayout(QWidget* parent);
  ~FlowLayout() override;

  void addGroup(const QList<QWidget*>& widgets);   // these stay in one row

  void addItem(QLayoutItem* item) override { items_.push_back({item, false}); }
  int count() const override { return static_cast<int>(items_.size()); }
  QLayoutItem* itemAt(int index) const override;
  QLayoutItem* takeAt(int index) override;
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override { return place(QRect(0, 0, width, 0), false); }
  Qt::Orientations expandingDirections() const override { return {}; }
  QSize sizeHint() const override;      // all in one row
  QSize minimumSize() const override;   // of the widest group
  void setGeometry(const QRect& rect) override;

 private:
  struct Item {
    QLayoutItem* item;
    bool follows;   // stays in the row of the previous one
  };
  std::size_t groupEnd(std::size_t first) const;
  QSize groupSize(std::size_t first, std::size_t end) const;
  int place(const QRect& rect, bool move) const;   // returns the height

  std::vector<Item> items_;
};
