// A pane for screen readers, by Qt's text interfaces.
//
// Offsets are UTF-16 units. A text of up to 2 MB is presented completely, of a larger one a range of lines around the caret, so
// that the cost does not depend on the size of the file. The range changes only when the caret leaves it.
#pragma once

#include <QAccessibleWidget>

#include "text/store/Snapshot.h"

class Pane;

class PaneAccessible : public QAccessibleWidget, public QAccessibleTextInterface, public QAccessibleEditableTextInterface {
 public:
  explicit PaneAccessible(Pane* pane);
  static void install();   // call once; makes panes known to the system
  // Notifications for screen readers: the caret moved, the text changed.
  static void announceSelection(Pane* pane);
  static void announceText(Pane* pane);

  void* interface_cast(QAccessible::InterfaceType type) override;
  QAccessible::State state() const override;
  QString text(QAccessible::Text what) const override;

  void selection(int index, int* start, int* end) const override;
  int selectionCount() const override;
  void addSelection(int start, int end) override;
  void removeSelection(int index) override;
  void setSelection(int index, int start, int end) override;
  int cursorPosition() const override;
  void setCursorPosition(int position) override;
  QString text(int start, int end) const override;
  int characterCount() const override;
  QRect characterRect(int offset) const override;
  int offsetAtPoint(const QPoint& point) const override;
  void scrollToSubstring(int start, int end) override;
  QString attributes(int offset, int* start, int* end) const override;

  void deleteText(int start, int end) override;
  void insertText(int offset, const QString& text) override;
  void replaceText(int start, int end, const QString& text) override;

 private:
  void look() const;   // updates the range
  std::vector<text::ByteRange> selections() const;
  int unitsTo(text::ByteOffset offset) const;
  text::ByteOffset offsetOf(int units) const;

  Pane* pane_;
  mutable text::Snapshot seen_;   // the text of the range
  mutable text::ByteRange range_;
  mutable QString stretch_;
};
