// The whole program, its own start and end included, with somebody at the keys: types at random into the documents of its command
// line and into an untitled one, and says in a TypistLog what was done. The environment says how:
//   TYPIST_LOG      file of the log
//   TYPIST_KEYS     so many keys, then it rests; without it, it types for ever
//   TYPIST_PAUSE    at most so many milliseconds between two keys or bursts of keys
//   TYPIST_SAVES    every so many keys a document with a name is saved
//   TYPIST_DIALOG   name of a menu entry that is chosen at the end of the typing
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QTimer>
#include <random>

#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "app/start/mGlobals.h"
#include "document/frmDocument.h"
#include "tests/support/TypistLog.h"

namespace {

int number(const char* name, int otherwise) {
  bool set = false;
  const int value = qEnvironmentVariableIntValue(name, &set);
  return set ? value : otherwise;
}

class Typist : public QObject {
 public:
  Typist() : QObject(qApp), log_(TypistLog::at(qgetenv("TYPIST_LOG").constData())) {
    if (!log_) qFatal("no log");
    later();
  }

 private:
  void later() { QTimer::singleShot(pause_ > 0 ? int(random_() % unsigned(pause_)) : 0, this, &Typist::type); }

  void type() {
    if (!begin()) return later();
    for (unsigned burst = random_() % 4 ? 1 : random_() % 60; burst > 0 && left_ != 0; --burst, --left_) key();
    if (left_ != 0) return later();
    if (QAction* action = frame_->menus().action(qEnvironmentVariable("TYPIST_DIALOG"))) action->trigger();
  }

  // False: the frame is not there yet.
  bool begin() {
    if (frame_) return true;
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->isVisible() && !frame_) frame_ = qobject_cast<frmMain*>(window);
    if (!frame_) return false;
    frame_->LoadNewDoc();
    documents_ = frame_->documents();
    for (frmDocument* document : documents_) press(document, Qt::Key_End, {}, Qt::ControlModifier);
    return true;
  }

  void key() {
    const std::uint32_t n = log_->applied;
    if (n + 1 == TypistLog::kMost) return;
    TypistLog::Key& key = log_->keys[n];
    if (n % 7 == 0) at_ = int(random_() % unsigned(documents_.size()));
    frmDocument* document = documents_[at_];
    if (frame_->activeDocument() != document) frame_->activate(document);
    key.document = std::uint8_t(at_);
    const unsigned what = random_() % 30;
    key.what = what == 0 ? '\n' : what == 1 ? '\b' : char('a' + random_() % 26);
    if (saves_ > 0 && n % unsigned(saves_) == unsigned(saves_) - 1 && document->DocumentHasName()) key.what = 'S';
    switch (key.what) {
      case 'S': frame_->mnuFileSave_Click(); break;
      case '\n': press(document, Qt::Key_Return, QStringLiteral("\r")); break;
      case '\b': press(document, Qt::Key_Backspace, QStringLiteral("\b")); break;
      default: press(document, Qt::Key_A + (key.what - 'a'), QString(QLatin1Char(key.what)));
    }
    key.ms = TypistLog::now();
    log_->applied = n + 1;
  }

  static void press(frmDocument* document, int key, const QString& text, Qt::KeyboardModifiers with = {}) {
    for (QWidget* pane : document->cmx->findChildren<QWidget*>()) {
      if (!pane->inherits("Pane")) continue;
      QKeyEvent event(QEvent::KeyPress, key, with, text);
      QApplication::sendEvent(pane, &event);
      return;
    }
  }

  TypistLog* const log_;
  std::mt19937 random_{std::random_device{}()};
  frmMain* frame_ = nullptr;
  QList<frmDocument*> documents_;
  int at_ = 0, left_ = number("TYPIST_KEYS", -1);
  const int pause_ = number("TYPIST_PAUSE", 0), saves_ = number("TYPIST_SAVES", 0);
};

void sitDown() { new Typist; }
Q_COREAPP_STARTUP_FUNCTION(sitDown)

}   // namespace

int main(int argc, char** argv) { return Main(argc, argv); }
