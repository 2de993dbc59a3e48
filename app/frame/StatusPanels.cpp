#include "app/frame/StatusPanels.h"

#include <QApplication>
#include <QInputEvent>
#include <QLabel>
#include <QResizeEvent>
#include <QToolButton>

#include "app/look/Icons.h"
#include "app/look/Tips.h"

namespace {

constexpr char kSignal[] = "background: #b00020; color: white";   // in every colour scheme

struct PanelRow {
  const char* name;
  const char* tip;
  const char* widest;   // the panel has room for this text
};
// In the order of enum Panel.
constexpr PanelRow kPanels[] = {
    {"panelRecording", QT_TRANSLATE_NOOP("StatusPanels", "Keystrokes are being recorded: stop"), "REC"},
    {"panelRowAndColumn", QT_TRANSLATE_NOOP("StatusPanels", "Line and column: go to a line"), "0000000,000"},
    {"panelLineEnds", QT_TRANSLATE_NOOP("StatusPanels", "Line ends of new lines: change them"), "Unix"},
    {"panelTemplate", QT_TRANSLATE_NOOP("StatusPanels", "Expand the template at the caret"), ""},
    {"panelEncoding", QT_TRANSLATE_NOOP("StatusPanels", "Encoding of the file: change it"), "UTF-8"},
    {"panelLanguage", QT_TRANSLATE_NOOP("StatusPanels", "Language: change it"), ""},
    {"panelOvertype", QT_TRANSLATE_NOOP("StatusPanels", "Insert, overtype or read-only: change it"), "OVR"},
};

}   // namespace

StatusPanels::StatusPanels(QWidget* parent) : QStatusBar(parent), label_(new QLabel(this)), warning_(new QLabel(this)) {
  label_->setTextFormat(Qt::PlainText);
  label_->setTextInteractionFlags(Qt::NoTextInteraction);
  label_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  label_->setContentsMargins(4, 0, 4, 0);
  addWidget(label_, 1);
  warning_->setObjectName(QStringLiteral("journalWarning"));
  warning_->setTextFormat(Qt::PlainText);
  warning_->setContentsMargins(6, 0, 6, 0);
  warning_->setAutoFillBackground(true);
  warning_->setStyleSheet(QLatin1String(kSignal));
  warning_->hide();
  addPermanentWidget(warning_);
  for (int i = 0; i < int(std::size(kPanels)); ++i) {
    auto* button = new QToolButton(this);
    button->setObjectName(QString::fromLatin1(kPanels[i].name));
    button->setToolTip(tr(kPanels[i].tip));
    button->setAccessibleName(button->toolTip());
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);   // a click must not take the focus from the text
    button->setToolButtonStyle(i == int(Panel::templates) ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextOnly);
    button->setMinimumWidth(fontMetrics().horizontalAdvance(QString::fromLatin1(kPanels[i].widest)) + 16);
    connect(button, &QToolButton::clicked, this, [this, i] { emit clicked(Panel(i)); });
    addPermanentWidget(button);
    buttons_ << button;
  }
  button(Panel::recording)->setText(tr("REC"));
  button(Panel::recording)->setStyleSheet(QLatin1String(kSignal));
  button(Panel::recording)->hide();
  qApp->installEventFilter(this);
}

bool StatusPanels::eventFilter(QObject* object, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
      input_ = static_cast<QInputEvent*>(event)->timestamp();   // one event may arrive several times on its way up
      break;
    default: break;
  }
  return QStatusBar::eventFilter(object, event);
}

void StatusPanels::setText(const QString& text) {
  message_ = text;
  messageInput_ = input_;
  showText();
}

void StatusPanels::setRest(const QString& text) {
  if (text == rest_) return;
  rest_ = text;
  if (message_.isEmpty()) showText();
}

void StatusPanels::settle() {
  if (!message_.isEmpty() && messageInput_ != input_) setText({});
}

void StatusPanels::showText() {
  elide();
  if (isVisible()) label_->repaint();   // a message must be visible during a long operation
}

void StatusPanels::setRecording(bool on) { button(Panel::recording)->setVisible(on); }

void StatusPanels::setWarning(const QString& text, const QString& tip) {
  warning_->setText(text);
  warning_->setToolTip(plainTip(tip));
  warning_->setVisible(!text.isEmpty());
}
QString StatusPanels::warning() const { return warning_->text(); }

void StatusPanels::elide() {
  const QString line = plainForDisplay(text(), 1000).simplified();
  label_->setText(fontMetrics().elidedText(line, Qt::ElideMiddle, std::max(0, label_->width() - 8)));
  label_->setToolTip(label_->text() == line ? QString() : plainTip(text()));
}

void StatusPanels::setPanel(Panel panel, const QString& text) {
  QToolButton* shown = button(panel);
  const QString caption = plainForDisplay(text, 60).replace(u'&', QLatin1String("&&"));
  if (shown->text() != caption) shown->setText(caption);
}

QString StatusPanels::panel(Panel panel) const { return button(panel)->text().replace(QLatin1String("&&"), QLatin1String("&")); }
QToolButton* StatusPanels::button(Panel panel) const { return buttons_.at(int(panel)); }

void StatusPanels::setTemplatePicture(bool on) {
  if (on == templatePicture_) return;
  templatePicture_ = on;
  button(Panel::templates)->setIcon(on ? icons::byName(QStringLiteral("zelkor-expand")) : QIcon());
}

void StatusPanels::resizeEvent(QResizeEvent* event) {
  QStatusBar::resizeEvent(event);
  elide();
}
