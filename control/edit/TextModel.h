// One text with everything that does not belong to a view: document, file format, language, line flags. Shared by the panes of a
// control and by several controls (a second window of one document).
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <span>

#include "bridge/QStringBytes.h"
#include "text/color/Highlight.h"
#include "text/file/FileIo.h"
#include "text/line/NewLines.h"
#include "text/store/Document.h"

namespace text {
class LineMap;
class LineMaps;
}   // namespace text

class TextModel : public QObject {
  Q_OBJECT
 public:
  TextModel();
  ~TextModel() override;

  text::Document& document() { return document_; }
  const text::Snapshot& snapshot() const { return document_.snapshot(); }

  // The ColorSlot of plain text in a line; not set: ColorSlot::Text. Emit appearanceChanged() when its answers change.
  std::function<int(text::LineNo)> plainSlot;

  text::FileFormat format;                // of its file
  std::optional<text::FileStamp> stamp;   // of its file at the last load or save
  QString path;                           // of that file; empty for a new text

  // The line end of new lines. Loading sets it from the first line. Until a value is set explicitly, a new line gets the break of
  // the line that it splits (or of its neighbour above), so that mixed files stay mixed.
  bool enableCrlf() const;
  void setEnableCrlf(bool on);
  text::NewLines newLines() const;
  std::string newLineFor(text::LineNo line) const { return std::string(newLines().at(snapshot(), line)); }
  // Converts all line breaks of the text and sets enableCrlf(), as one undo step, on request of the user. `before` is the selection
  // that undo restores.
  void convertLineEnds(bool crlf, const text::SelectionState& before = {});

  bool setLanguage(const QString& name);   // "" = none. False when refused (unknown, openers and closers differ): then none
  const QString& language() const { return language_; }
  const text::Highlighter* highlighter();
  text::LineState stateAt(text::LineNo line, std::int64_t budget = 0, bool* exact = nullptr);

  // See text::LongColors::tokens. Without a language: true, and no tokens.
  bool tokensInLongLine(text::LineNo line, text::LineState state, std::int64_t from, std::int64_t to, std::int64_t budget,
                        std::vector<text::Token>* tokens);

  // Where bytes, characters and cells of a line stand. For the present text, until it changes.
  text::LineMap line(text::LineNo line, int tabSize);
  text::LineMaps& lines();

  // Bookmarks: lines, moving with the text.
  bool hasBookmark(text::LineNo line) const;
  bool hasBookmark(text::LineNo first, text::LineNo end) const;   // in the lines [first, end)
  void setBookmark(text::LineNo line, bool on);
  void setBookmarks(std::span<const text::LineNo> lines, bool on);   // ascending; for many lines at once
  void clearBookmarks();
  std::vector<text::LineNo> bookmarks() const;   // ascending

  // The save point: false marks the text as saved, true as unsaved, also after undo. Notifies of a difference.
  void setModified(bool on);

  void replaceAll(text::Snapshot snapshot, text::FileFormat newFormat);   // after loading: clears undo and bookmarks

 signals:
  void changed(const text::Change& change);   // after each change of the text
  void modifiedChanged(bool modified);
  void appearanceChanged();   // bookmarks, language: repaint, the text is unchanged
  void lineEndsChanged();     // enableCrlf() has changed

 private:
  void announceModified();
  void announceLineEnds();

  text::Document document_;
  QString language_;
  struct Impl;
  std::unique_ptr<Impl> impl_;
};
