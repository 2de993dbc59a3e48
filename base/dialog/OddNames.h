// The files that the tool kit cannot show in its file dialog, as their names are not UTF-8: a list below it, where the folder has any.
#pragma once

#include <QWidget>

class QFileDialog;
class QListWidget;
struct FileLook;

// Whether a name holds such bytes (lone surrogates), and what stands in a path before the first part that does.
bool isOddName(const QString& name);
QString plainPart(const QString& path);

class OddNames : public QWidget {
  Q_OBJECT
 public:
  OddNames(QFileDialog& dialog, const FileLook& disk, const QString& folder);
  const QString& chosen() const { return chosen_; }   // the full name; empty: the dialog's own choice counts

 private:
  void show(const QString& folder);
  void open(const QString& name);

  QFileDialog& dialog_;
  const FileLook& disk_;
  QListWidget* const list_;
  QString folder_, chosen_;
};
