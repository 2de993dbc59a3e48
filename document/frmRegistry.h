// Services of the main frame without a window: owns the language manager (ucCM1) and the recently-used list (mruFile), stores
// window profiles in the settings, builds the menus that depend on data, and shows the common file dialogs.
//
// There is one instance; frmRegistry::instance() creates it on first use. It knows the frame only through ProfiledFrame. A missing
// setting leaves its target unchanged.
#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <memory>

#include "document/ucMRULst.h"

class ucCM;

// What the services need from the frame whose profile they store and whose menus they build. Menu items are named after their
// handlers ("mnuFileMRU", "mCustom"); index is the element of a menu array, -1 the item itself.
class ProfiledFrame {
 public:
  virtual ~ProfiledFrame() = default;
  virtual QWidget* profileWindow() = 0;
  virtual bool isChecked(const QString& menuName) = 0;
  virtual void setChecked(const QString& menuName, bool on) = 0;
  virtual int cmxWindowState() = 0;   // see windowstate; of document windows
  virtual void setCmxWindowState(int state) = 0;
  virtual void setMenu(const QString& menuName, int index, const QString& caption, bool visible) = 0;
  virtual void setMenuEnabled(const QString& menuName, bool on) = 0;
  virtual void setModifiedFacts(bool active, bool any) = 0;   // whether the active document and whether any document is modified
};

// The application folder or a folder below it: no files of the user are stored there.
bool isInstalled(const QString& folder);

class frmRegistry : public QObject {
  Q_OBJECT
 public:
  static frmRegistry& instance();
  frmRegistry();   // for instance() alone
  ~frmRegistry() override;

  ucCM& ucCM1();
  ucMRULst mruFile;

  // Dialogs and programs start in the process's current directory: the folder of the active document, or of the file chosen last.
  // It is never a folder of the installed program.
  void followFolder(const QString& folder);
  // File dialogs. An empty result: cancelled. filterIndex is the 1-based entry of the filter and is updated by the choice. The
  // current directory follows the chosen file.
  QStringList stdOpenFile(const QString& title, const QString& filter, int& filterIndex, const QString& folder, const QString& name,
                          bool multiple = false);
  // Asks before overwriting. giveExtension: a name without extension gets the first one of the chosen filter entry, unless that
  // entry shows all files.
  QString stdSaveFile(const QString& title, const QString& filter, int& filterIndex, const QString& folder, const QString& name,
                      bool giveExtension = true);
  QString stdHelpFile(const QString& folder);

  // Window profiles, below Software\Zelkor Editor\Global.
  void SaveLogWindowProfile(const QWidget& window);
  void GetLogWindowProfile(QWidget& window);
  // How the frame shows the log; position and size are in the window profile above.
  struct LogDock {
    Qt::DockWidgetArea area = Qt::BottomDockWidgetArea;
    bool floating = false, shown = false;
  };
  void SaveLogDock(const LogDock& dock);
  LogDock GetLogDock() const;
  void SaveMDIWindowProfile(ProfiledFrame& frame);
  void getFormWindowProfile(ProfiledFrame& frame);
  void GetProfile(ProfiledFrame& frame, const QString& mruMenu);   // keeps both arguments, reads list and profile, fills the menu
  void forgetFrame();                                              // before the frame goes
  // writes list and profile of the kept frame; does nothing without one
  void SetProfile();

  // Recently-used list.
  void SaveMRUList();
  void GetMRUList();
  void SetupMRUList();   // adds the sample files on a first run
  void MRUtoMenu();

  // Menus that depend on data. They do nothing without a kept frame.
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
