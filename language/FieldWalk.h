// After a template was put in, Tab goes from field to field "$$" in it, as long as fields are left behind the caret; then, or
// with the caret elsewhere, Tab is what it always is.
//
// A word directly behind the marker proposes what to put there ("$$clk"). What is typed or pasted over the selected marker
// takes the place of both; Tab takes the proposal, that is, the marker goes. The same name elsewhere in the template ("$$clk"
// again) becomes the same, once Tab goes on or the caret leaves the field, as a step of its own for undo.
//
// A control has at most one walk, which goes with it. A template put in inside another joins that one's walk.
#pragma once

#include <QObject>
#include <QString>
#include <QtGlobal>
#include <memory>

#include "text/store/Document.h"

class CodeMax;

class FieldWalk : public QObject {
  Q_OBJECT
 public:
  // range: the text that was put in, in bytes of the control's text.
  static void start(CodeMax& cmx, text::ByteRange range);
  // True while Tab would go to a field.
  static bool isActive(CodeMax& cmx);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  FieldWalk(CodeMax& cmx, text::ByteRange range);
  ~FieldWalk() override;
  static FieldWalk* of(const CodeMax& cmx);
  bool contains(text::ByteOffset begin, text::ByteOffset end) const;
  bool fieldLeft() const;
  bool markerSelected() const;
  qint64 proposalLength() const;   // of the word behind the selection
  bool tab();
  void beginField();   // marker and name are selected and will be typed over
  bool endField();     // gives what was typed to the fields of the same name; true: there were some
  void dropField();
  bool fill(const QString& name, const QString& with);
  void leftField();
  text::ByteOffset end() const;
  void stop();

  CodeMax& cmx_;
  text::MarkId begin_ = 0, end_ = 0;             // 0: the walk is over
  text::MarkId fieldBegin_ = 0, fieldEnd_ = 0;   // what is typed in the field now; 0: none, or it has no name
  QString fieldName_;
  std::shared_ptr<void> changes_;
};
