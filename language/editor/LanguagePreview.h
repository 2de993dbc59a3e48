// A small read-only text, coloured as the language stands in the definitions editor: before it is saved, and before any
// document knows of it.
#pragma once

#include <QTimer>
#include <QWidget>
#include <memory>

class CodeMax;
class clsLang;

class LanguagePreview : public QWidget {
  Q_OBJECT
 public:
  explicit LanguagePreview(QWidget* parent = nullptr);
  ~LanguagePreview() override;

  // Shows a text in the colours of the language, a moment later, so that typing in a large one stays quick. Without a text a
  // sample made of the language's own words is shown. Null: nothing.
  void show(std::shared_ptr<clsLang> language, const QString& text = {});
  void refreshNow();

  // The sample: comments, words, a string, numbers and operators of the language.
  static QString sampleOf(const clsLang& language);

 private:
  CodeMax* cmx_;
  QTimer soon_;
  std::shared_ptr<clsLang> language_;
  QString text_;
};
