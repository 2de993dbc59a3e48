// Which keys type. Alt and the key of the system belong to menus and short-cuts: a letter held with one of them that none of these
// takes does nothing, in the texts and in every field.
#pragma once

#include <QKeyEvent>
#include <QObject>

// True when the key puts its text in. AltGr does so too, which some systems report as Ctrl and Alt.
bool typesText(const QKeyEvent& key);

// Keeps what does not type out of the fields. Installed once on the application.
class TypedKeys : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* object, QEvent* event) override;
};
