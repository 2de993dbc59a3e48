// The panels of the status bar, in this order: text, "REC" while keystrokes are recorded, row and column, line ends, "Template",
// encoding, language, insert/overtype/read-only. All but the first are buttons; the frame handles their clicks.
//
// Panel 1 shows its base text (the name of the document) or a message. A message stays until the user's next key or click has had
// its effect (settle), whatever the focus did meanwhile.
#pragma once

#include <QStatusBar>

class QLabel;
class QToolButton;

enum class Panel { recording, rowAndColumn, lineEnds, templates, encoding, language, overtype };

class StatusPanels : public QStatusBar {
  Q_OBJECT
 public:
  explicit StatusPanels(QWidget* parent);

  // A message; shown at once, shortened in the middle if needed. Empty: none.
  void setText(const QString& text);
  void setRest(const QString& text);
  void settle();   // an action has ended: removes a message from before the last key or click
  QString text() const { return message_.isEmpty() ? rest_ : message_; }
  void setPanel(Panel panel, const QString& text);
  QString panel(Panel panel) const;
  QToolButton* button(Panel panel) const;   // object names "panelRowAndColumn" ...
  // Shown beside the text until it is set to an empty text.
  void setWarning(const QString& text, const QString& tip);
  QString warning() const;
  void setRecording(bool on);
  void setTemplatePicture(bool on);
  bool templatePicture() const { return templatePicture_; }

 signals:
  void clicked(Panel panel);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void elide();
  void showText();
  QLabel *label_, *warning_;
  QList<QToolButton*> buttons_;
  QString rest_, message_;
  quint64 input_ = 0, messageInput_ = 0;   // time stamps of the last key or click, and of the last one before the message
  bool templatePicture_ = false;
};
