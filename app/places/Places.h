// Where the caret was before it jumped: to a find, a line, a bracket, a bookmark, a message, another document. The user goes back
// through these places, and forward again.
//
// A place moves with the edits of its text. It does not keep the text: when the document closes, its path, line and column stay, and
// going there opens the file again. Places of a document without a file go with it. Both ways are bounded.
#pragma once

#include <QObject>
#include <QPointer>
#include <deque>
#include <memory>
#include <optional>

#include "text/store/Document.h"

class TextModel;
class frmDocument;
class frmMain;

class Places : public QObject {
  Q_OBJECT
 public:
  explicit Places(frmMain& frame);
  ~Places() override;

  void back() { travel(back_, forward_); }
  void forward() { travel(forward_, back_); }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;   // the mouse buttons for back and forward

 private:
  struct Place {
    std::weak_ptr<TextModel> model;    // expired or empty: the document is closed
    text::MarkId mark = 0;             // in it
    QPointer<frmDocument> window;      // that showed it
    QString path;                      // of a closed document
    std::int64_t line = 0, byte = 0;   // from 0, as last known; the byte in the line
  };
  using Trail = std::deque<Place>;   // the latest at its end

  static Place at(frmDocument& document);
  static std::optional<text::ByteOffset> offsetOf(const Place& place);   // none: the document is closed
  static bool areNear(const Place& a, const Place& b, std::int64_t lines);
  static void drop(Place& place);
  static void put(Trail& trail, Place place);
  template <class Work>
  void eachPlace(Work work);
  void opened(frmDocument* document);
  void closed(frmDocument* document);
  void moved(frmDocument* document);
  void travel(Trail& from, Trail& to);
  enum class Arrival { there, gone, failed };   // gone: the text, or the file; failed: the file could not be opened
  Arrival goTo(const Place& place);
  void enableActions();

  frmMain& frame_;
  Trail back_, forward_;
  std::optional<Place> here_;   // where the caret is
  QString failed_;              // the file that the user was led to last, if it could not be opened
  bool travels_ = false, previews_ = false;
  bool arrives_ = false;   // a document has just come to the front: the move to its line belongs to that
};
