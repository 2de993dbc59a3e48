// A small read-only text, made of a language's own words, coloured as the language stands in the definitions editor: before it is
// saved, and before any document knows of it.
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

  // Shows the language as it is, a moment later, so that typing in a large one stays quick. Null: nothing.
  void show(std::shared_ptr<clsLang> language);
  void refreshNow();

  // The text that is shown: comments, words, a string, numbers and operators of the language.
  static QString sampleOf(const clsLang& language);

 private:
  CodeMax* cmx_;
  QTimer soon_;
  std::shared_ptr<clsLang> language_;
};
