// The hidden service form of the main frame: carries the language manager (ucCM1) and the recently-used list (mruFile),
// keeps window profiles in the settings, builds the menus that depend on data, and owns the common file dialogs.
//
// There is one; frmRegistry::instance() makes it on first use. It never shows a window and knows the frame only through
// ProfiledFrame. A value missing in the settings leaves its target as it is.
#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <memory>

#include "document/ucMRULst.h"

class ucCM;

// What the service form asks of the frame whose profile it keeps and whose menus it builds. Menu items are named by their
// handlers ("mnuFileMRU", "mCustom"); index is the element of a menu array, -1 the item itself.
class ProfiledFrame {
 public:
  virtual ~ProfiledFrame() = default;
  virtual QWidget* profileWindow() = 0;
  virtual bool isChecked(const QString& menuName) = 0;
  virtual void setChecked(const QString& menuName, bool on) = 0;
  virtual int cmxWindowState() = 0;   // 0 normal, 1 minimised, 2 maximised: of document windows
  virtual void setCmxWindowState(int state) = 0;
  virtual void setMenu(const QString& menuName, int index, const QString& caption, bool visible) = 0;
  virtual void setMenuEnabled(const QString& menuName, bool on) = 0;
  virtual void setModifiedFacts(bool active, bool any) = 0;   // the active document is modified; any document is
};

// It is the application folder or one below it: nothing of the user's is put there.
bool isInstalled(const QString& folder);

class frmRegistry : public QObject {
  Q_OBJECT
 public:
  static frmRegistry& instance();
  frmRegistry();   // for instance() alone
  ~frmRegistry() override;

  ucCM& ucCM1();
  ucMRULst mruFile;

  // The process's current directory is where dialogs and programs start: the folder of the document that is worked on, or of the file
  // chosen last. It is never one of those that the program is installed in.
  void followFolder(const QString& folder);
  // File dialogs. An empty result: cancelled. filterIndex is the 1-based entry of the filter, updated by the choice. The
  // process's current directory follows the chosen file.
  QStringList stdOpenFile(const QString& title, const QString& filter, int& filterIndex, const QString& folder, const QString& name,
                          bool multiple = false);
  // Asks before overwriting. With giveExtension a name without one gets the first of the chosen filter entry, unless that shows all.
  QString stdSaveFile(const QString& title, const QString& filter, int& filterIndex, const QString& folder, const QString& name,
                      bool giveExtension = true);
  QString stdHelpFile(const QString& folder);

  // Window profiles, below Software\Zelkor Editor\Global.
  void SaveLogWindowProfile(const QWidget& window);
  void GetLogWindowProfile(QWidget& window);
  // How the frame shows the log; place and size are those of the window profile above.
  struct LogDock {
    Qt::DockWidgetArea area = Qt::BottomDockWidgetArea;
    bool floating = false, shown = false;
  };
  void SaveLogDock(const LogDock& dock);
  LogDock GetLogDock() const;
  void SaveMDIWindowProfile(ProfiledFrame& frame);
  void getFormWindowProfile(ProfiledFrame& frame);
  void GetProfile(ProfiledFrame& frame, const QString& mruMenu);   // keeps both, reads list and profile, fills the menu
  void forgetFrame();                                              // before the frame goes
  void SetProfile();                                               // writes list and profile of the kept frame; without one nothing

  // Recently-used list.
  void SaveMRUList();
  void GetMRUList();
  void SetupMRUList();   // the sample files, on a first run
  void MRUtoMenu();

  // Menus that depend on data; without a kept frame they do nothing.
  void SetMDIMenu(const QString& menuName, const QString& caption, bool visible, int index);
  void SetupMenusModified(bool modified);   // of the active document
  void CommandstoMenu();                    // macros of the current language
  void SetHelpMenu();

 private:
  void mruFile_Changed();
  static bool anyModified();

  std::unique_ptr<ucCM> manager_;
  ProfiledFrame* frame_ = nullptr;
  QString mruMenu_;
  bool listWasRead_ = false;
};
