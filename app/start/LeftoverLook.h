// Looks for what killed saves left beside a file, soon after it was opened or saved under a new name: whole copies are offered in the
// window of recovered texts, unfinished files are taken away. Files that come together are looked after together.
#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

class frmMain;

class LeftoverLook : public QObject {
  Q_OBJECT
 public:
  explicit LeftoverLook(frmMain& frame);   // looks at what is opened from now on
  void begin();                            // also at what is open
  void lookAt(const QString& path);

 private:
  void look();
  frmMain& frame_;
  QStringList paths_;
  QTimer soon_;
};
