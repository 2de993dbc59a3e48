// Which keys type text. Alt and the Meta key belong to menus and short-cuts. A letter with one of them that no menu or short-cut
// takes does nothing, in the documents and in every field.
#pragma once

#include <QKeyEvent>
#include <QObject>

// True when the key types its text. This includes AltGr, which some systems report as Ctrl and Alt.
bool typesText(const QKeyEvent& key);

// Keeps keys that do not type out of all fields. Installed once on the application.
class TypedKeys : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* object, QEvent* event) override;
};
