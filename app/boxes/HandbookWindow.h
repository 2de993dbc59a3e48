// The handbook beside the texts: the pages of docs/, with a list of their headings and a search in the page.
#pragma once

#include <QWidget>

class QLineEdit;
class QListWidget;
class QTextBrowser;

class HandbookWindow : public QWidget {
  Q_OBJECT
 public:
  explicit HandbookWindow(QWidget* parent);

  // A page of the handbook's folder, and a heading in it as links name it ("windows-and-tabs"); empty: its top. False: there
  // is no such page.
  bool showPage(const QString& file, const QString& heading = {});
  QString page() const { return page_; }
  QString headingInSight() const;   // the last heading above the upper edge or at it

 private:
  void follow(const QString& link);
  void find(bool forward);

  QTextBrowser* text_;
  QListWidget* headings_;
  QLineEdit* search_;
  QString folder_, page_;
};

// The part of a link that names a heading: small letters, blanks as "-", other marks dropped.
QString headingLink(const QString& heading);
