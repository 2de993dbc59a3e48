// A small read-only text in the colours of the language as it is in the definitions editor, before it is saved or used by a
// document.
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

  // Shows a text in the colours of the language after a short delay, so that typing in a long definition stays fast. Without a text
  // it shows a sample of the language's own words. Null: shows nothing.
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
