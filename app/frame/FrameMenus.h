// Menus, tool bar and short-cuts of the frame, made from the table of commands. Knows where commands are shown and which are
// enabled; the table knows what they do.
#pragma once

#include <QHash>
#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>
#include <memory>

#include "app/frame/FrameCommand.h"

class QAction;
class QDockWidget;
class QMainWindow;
class QMenu;
class QToolBar;

class FrameMenus : public QObject {
  Q_OBJECT
 public:
  explicit FrameMenus(frmMain& frame);
  ~FrameMenus() override;

  // Null for an unknown name. index: element of a menu array.
  QAction* action(const QString& name, int index = -1) const;
  QMenu* menu(const QString& name) const;
  QToolBar* toolBar() const { return toolBar_; }
  std::unique_ptr<QMenu> makePopup(QWidget* parent) const;   // pop-up menu of the text

  // Caption "-": a separator. index -1: the item or menu itself.
  void setCaption(const QString& name, int index, const QString& caption, bool visible);
  // Enables every row according to the facts (an OR of Facts); rows of kOthers keep their state. Cheap when nothing changed.
  void refresh(unsigned facts);
  unsigned facts() const { return facts_; }
  void refreshKeys();   // after the key map of the edit control changed
  // What the command that runs now and shows or hides a dock is to do: a key goes into the dock, and hides it when it is pressed there; a
  // click hides a dock that is shown.
  bool hidesDock(const QDockWidget& dock) const;
  void hideDock(QDockWidget& dock);   // the keys go back to the text

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;   // of the menu bar and the actions

 private:
  struct Placed {
    int place;
    QAction* action;
  };
  void make(const FrameCommand& row);
  void makeArray(const FrameCommand& row);
  void trigger(const FrameCommand& row);
  void run(const std::function<void()>& command);
  void leaveBar();
  void refreshChecks(const char* menuName);
  static void addInGroups(QWidget& to, QList<Placed> rows);

  frmMain& frame_;
  QToolBar* toolBar_;
  QPointer<QWidget> beforeBar_;   // had the focus before the menu bar
  QHash<QString, QAction*> actions_;
  QHash<QString, QMenu*> menus_;
  QHash<QString, QList<Placed>> placed_;   // by menu
  QList<Placed> tools_, popup_;
  unsigned facts_ = ~0u;
  bool byKey_ = false;   // the command that runs now was asked for by a short-cut
};
