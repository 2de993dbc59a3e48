// Makes a document a list of places: "path:line:column: text". Double click, Return and F8 go to the place; what stands in the lines
// may be edited and written back to the files. The text is ordinary text, and a list that was saved is one again when it is opened.
//
// Its head, up to the first empty line, says what was searched for, in which folder (names are taken against that) and what came of
// it. The places of a file move with the edits of its text from the first jump into it on.
#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>

#include "script/FindTask.h"

class TextModel;
class frmDocument;

class ResultList : public QObject {
  Q_OBJECT
 public:
  // The list of that document; null: it is none.
  static ResultList* of(const frmDocument* document);
  ~ResultList() override;
  // Makes a document that begins with the head of a list into one; null: it does not.
  static ResultList* adopt(frmDocument* document);
  static ResultList* make(frmDocument* document, const FindTask& task);   // a new, empty one

  // A list that is whole already. first: one of kFirsts; rows: as folder::appendRows writes them; what: as above, may be null.
  struct Whole {
    QString first, about, result;
    std::string root, rows;
    std::shared_ptr<const folder::FindText> what;
  };
  static ResultList* make(frmDocument* document, Whole whole);
  static constexpr const char* kFirsts[] = {
      "Find in files: ", "Lines with: ", "Bookmarks: ", "Compared with the second folder: "};   // what a list begins with
  static constexpr int kPairs = 3;   // of them: its rows name files of two folders, and jumping compares them

  static QString head(const FindTask& task, const QString& result);

  // While the rows of a search come: no undo, no journal, not modified.
  void append(const std::string& rows);
  void end(const QString& result);   // what came of it, into the head; the list is then as it was found

  // To the next or previous hit from the caret's line on. False: there is none.
  bool step(int direction);
  bool jump();   // to the place of the caret's line; false: it is none

  struct Row {
    std::string path;                    // whole
    std::int64_t line = 0, column = 0;   // from 1; column 0: a further line of a hit
    std::string text;
  };
  std::optional<Row> rowAt(const text::Snapshot& text, text::LineNo line) const;
  // The two below read a present text of the list, on any thread while the list stays.
  std::vector<std::string> paths(const text::Snapshot& text) const;   // of all rows, each once, in order
  // The lines that differ from what was found, by file. *error: not empty where they cannot be written back.
  struct Edited {
    std::string path;
    std::vector<std::pair<std::int64_t, std::pair<std::string, std::string>>> lines;   // number, then, now
  };
  std::vector<Edited> edited(const text::Snapshot& now, QString* error) const;
  const std::string& root() const { return root_; }
  frmDocument* document() const { return document_; }

 signals:
  void pairAsked(const QString& left, const QString& right);   // jumping came to a file of two folders that is in both
  void used(ResultList* list);                                 // F8 goes through this list from now on
  void cancelAsked();                                          // by Esc while rows come

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  explicit ResultList(frmDocument* document);
  std::vector<text::ByteRange> hitsFrom(const text::Snapshot& text, text::ByteOffset from, text::ByteOffset lineEnd) const;
  void listen();
  void markHead();
  std::optional<text::ByteOffset> markAt(text::MarkId mark) const;
  // there: the range in the window, where that is not the range of `edit`.
  void fill(const std::function<text::Edit(const text::Snapshot&)>& edit, std::optional<text::ByteRange> there = {});
  bool show(text::LineNo line, int direction);
  std::string inSecond(const std::string& path) const;
  bool stepInLine(int direction);
  std::optional<text::ByteOffset> placeIn(frmDocument& target, const Row& row);

  frmDocument* const document_;
  std::weak_ptr<TextModel> model_;
  std::string root_;
  std::string second_;                             // the other folder of a list of pairs; empty: it is none
  std::shared_ptr<const folder::FindText> what_;   // null: the list came from a file
  std::optional<text::Snapshot> found_;            // as the search made it
  text::Snapshot filled_;                          // while rows come: the newest state without a change by the user
  std::unique_ptr<text::Document> unchanged_;   // while rows come: the list without the user's changes, from the first of them on
  std::int64_t headLines_ = 0;                  // as it was found or read
  text::MarkId resultAt_ = 0, headEnd_ = 0;
  struct Marks {
    std::weak_ptr<TextModel> model;
    QHash<QPair<qint64, qint64>, text::MarkId> at;   // line and column as listed
  };
  QHash<QByteArray, Marks> marks_;   // by path
  struct Shown {
    QPointer<frmDocument> target;
    text::LineNo row;
    text::ByteRange match;
  };
  std::optional<Shown> shown_;   // by the last jump
};
