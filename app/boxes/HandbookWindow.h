// The handbook window: the pages of docs/, with a list of their headings and a search in the page.
#pragma once

#include <QWidget>

class QLineEdit;
class QListWidget;
class QTextBrowser;

class HandbookWindow : public QWidget {
  Q_OBJECT
 public:
  explicit HandbookWindow(QWidget* parent);

  // Shows a page of the handbook's folder at a heading, named as in links ("windows-and-tabs"); empty: at its top. False: there is
  // no such page.
  bool showPage(const QString& file, const QString& heading = {});
  QString page() const { return page_; }

 private:
  void follow(const QString& link);
  void find(bool forward);

  QTextBrowser* text_;
  QListWidget* headings_;
  QLineEdit* search_;
  QString folder_, page_;
};

// The fragment of a link to a heading: lower case, blanks as "-", punctuation dropped.
QString headingLink(const QString& heading);
