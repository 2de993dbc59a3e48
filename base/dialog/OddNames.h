// Files that Qt's file dialog cannot show because their names are not UTF-8: a list below the dialog, if the folder has such files.
#pragma once

#include <QWidget>

class QFileDialog;
class QListWidget;
struct FileLook;

// Whether a name holds such bytes (lone surrogates), and the part of a path before the first such part.
bool isOddName(const QString& name);
QString plainPart(const QString& path);

class OddNames : public QWidget {
  Q_OBJECT
 public:
  OddNames(QFileDialog& dialog, const FileLook& disk, const QString& folder);
  const QString& chosen() const { return chosen_; }   // the full name; empty: the dialog's own choice is used

 private:
  void show(const QString& folder);
  void open(const QString& name);

  QFileDialog& dialog_;
  const FileLook& disk_;
  QListWidget* const list_;
  QString folder_, chosen_;
};
