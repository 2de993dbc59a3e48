// The lines of a text that differ from its file (text/diff/ChangedLines.h), compared beside the interface where that takes long. Lives
// as long as the text.
//
// The file is the text that was loaded or saved last. A text without a file has no marks.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>

#include "control/edit/TextModel.h"
#include "text/diff/ChangedLines.h"

class EditorHost;

class ChangeMarks : public QObject {
  Q_OBJECT
 public:
  static ChangeMarks& of(TextModel& model);
  ~ChangeMarks() override;

  // The text of the file, which need not have anything in common with this one.
  void setFile(const text::Snapshot& file);
  const text::Snapshot& file() const { return file_; }
  bool hasFile() const { return model_.stamp && model_.stamp->exists; }
  // Around the saving of the present text, during which the user may type on.
  void saving();
  void saved(const text::Snapshot& file);

  // Compares what is small now, the rest on a thread. Call it before what is changed is shown.
  void settle();
  // Of the present text, as far as known: lines that may be equal count as changed. settle() first.
  const std::vector<text::ChangedLines::Part>& parts() const;
  // What differs, compared before it returns if need be, as long work of the host; also from a file that is gone. Nothing: cancelled.
  std::optional<std::vector<text::ChangedLines::Part>> now(EditorHost& host);

  struct Line {
    enum class Kind { same, added, changed } kind = Kind::same;
    bool removedAbove = false, removedBelow = false;   // lines of the file are missing there; below: only the last line
    const text::LineHunk* hunk = nullptr;              // valid until the text changes
  };
  // Of the lines [begin, end), of which the first is shown.
  Line at(text::LineNo begin, text::LineNo end) const;

 signals:
  void changed();   // parts(), but not by a change of the text

 private:
  struct Job;
  explicit ChangeMarks(TextModel& model);
  void textChanged(const text::Change& change);
  void start();
  void drop();

  TextModel& model_;
  text::Snapshot file_;
  text::ChangedLines lines_;
  std::optional<text::ChangedLines> sinceSaving_;
  const std::vector<text::ChangedLines::Part> none_;
  std::shared_ptr<Job> job_;
  QTimer later_;
  bool settled_ = true;
};
