// After a template was put in, Tab goes from field to field "$$" in it, as long as fields are left behind the caret; then, or
// with the caret elsewhere, Tab is what it always is.
//
// A word directly behind the marker proposes what to put there ("$$clk"). What is typed or pasted over the selected marker
// takes the place of both; Tab takes the proposal, that is, the marker goes.
//
// A control has at most one walk, which goes with it. A template put in inside another joins that one's walk.
#pragma once

#include <QObject>
#include <QtGlobal>
#include <memory>

#include "text/Document.h"

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
  qint64 proposalLength() const;       // of the word behind the selection
  bool tab();
  text::ByteOffset end() const;
  void stop();

  CodeMax& cmx_;
  text::MarkId begin_ = 0, end_ = 0;   // 0: the walk is over
  std::shared_ptr<void> changes_;
};
