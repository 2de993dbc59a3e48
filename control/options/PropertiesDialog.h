// The options of a control: display, editing, colours, font, keys and language. OK applies them to the control and emits
// PropsChange once; Cancel changes nothing. The keys are those of the whole program.
#pragma once

#include <QDialog>

#include "control/options/ControlOptions.h"

class KeysPage;

class PropertiesDialog : public QDialog {
  Q_OBJECT
 public:
  PropertiesDialog(CodeMax& control, QWidget* parent);
  void apply();   // what OK does, without PropsChange

 private:
  CodeMax& control_;
  ControlOptions options_;
  KeysPage* keys_;
};
