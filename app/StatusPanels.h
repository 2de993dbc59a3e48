// The panels of the status bar, in this order: text, row and column, line ends, "Template", encoding, language,
// insert/overtype/read-only. All but the first are buttons: what a click does is the frame's affair.
#pragma once

#include <QStatusBar>

class QLabel;
class QToolButton;

enum class Panel { rowAndColumn, lineEnds, templates, encoding, language, overtype };

class StatusPanels : public QStatusBar {
  Q_OBJECT
 public:
  explicit StatusPanels(QWidget* parent);

  void setText(const QString& text);            // panel 1; shown at once, shortened in the middle where it does not fit
  QString text() const { return text_; }
  void setPanel(Panel panel, const QString& text);
  QString panel(Panel panel) const;
  QToolButton* button(Panel panel) const;       // object names "panelRowAndColumn" ...
  // Stays beside the text, whatever that shows, until it is set to nothing.
  void setWarning(const QString& text, const QString& tip);
  QString warning() const;
  void setTemplatePicture(bool on);
  bool templatePicture() const { return templatePicture_; }

 signals:
  void clicked(Panel panel);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void elide();
  QLabel *label_, *warning_;
  QList<QToolButton*> buttons_;
  QString text_;
  bool templatePicture_ = false;
};
