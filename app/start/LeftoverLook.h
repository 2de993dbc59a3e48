// Looks for what killed saves left beside a file, shortly after the file was opened or saved under a new name. Copies are offered
// in the window of recovered texts; unfinished files are removed. Several files are examined together.
#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

class frmMain;

class LeftoverLook : public QObject {
  Q_OBJECT
 public:
  explicit LeftoverLook(frmMain& frame);   // examines files that are opened from now on
  void begin();                            // also at what is open
  void lookAt(const QString& path);

 private:
  void look();
  frmMain& frame_;
  QStringList paths_;
  QTimer soon_;
};
