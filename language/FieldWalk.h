// After the insertion of a template, Tab goes from field to field ("$$"), as long as there are fields behind the caret. After that,
// or with the caret elsewhere, Tab has its usual meaning.
//
// A word directly behind the marker is a proposal ("$$clk"). Text typed or pasted over the selected marker replaces both; Tab
// accepts the proposal and removes the marker. Other fields with the same name ("$$clk" again) get the same text when Tab goes on
// or the caret leaves the field. That is an undo step of its own.
//
// A control has at most one walk, which is destroyed with the control. A template inserted inside another one joins its walk.
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
  // range: the inserted text, in bytes of the control's text.
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
  qint64 proposalLength() const;   // length of the word behind the selection
  bool tab();
  void beginField();   // marker and name are selected and will be overtyped
  bool endField();     // copies the typed text to the fields of the same name; true: there were some
  void dropField();
  bool fill(const QString& name, const QString& with);
  void leftField();
  text::ByteOffset end() const;
  void stop();

  CodeMax& cmx_;
  text::MarkId begin_ = 0, end_ = 0;             // 0: the walk is over
  text::MarkId fieldBegin_ = 0, fieldEnd_ = 0;   // the text typed in the field; 0: none, or the field has no name
  QString fieldName_;
  std::shared_ptr<void> changes_;
};
