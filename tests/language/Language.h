// Help for the tests of languages: random models, and what those tests all include.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "language/DefinitionText.h"
#include "language/clsLang.h"
#include "tests/language/Dump.h"
#include "tests/support/Text.h"

// Models as the definitions editor can make them without a warning.
class ModelMaker {
 public:
  explicit ModelMaker(unsigned seed) : random_(seed) {}

  std::shared_ptr<colLangs> languages() {
    auto all = std::make_shared<colLangs>();
    for (int n = upTo(4) + 1; n > 0; --n) {
      const auto l = all->Add(name());
      l->isCaseSensitive = upTo(1);
      for (const LanguageProperty& property : languageProperties()) {
        QString& value = (*l).*(property.value);
        if (property.form != LanguageProperty::line) value = list();
        else do
            value = name();
          while (definition::kindOf(value) != definition::LineKind::body);
      }
      for (int i = upTo(3); i > 0; --i) l->cWordList()->Add(name(), list())->Desc = name();
      for (int i = upTo(3); i > 0; --i) {
        const auto m = l->cMacros()->Add();
        m->Name = name();
        m->CommandString = list();
        m->Desc = name();
      }
      for (int i = upTo(3); i > 0; --i) {
        const auto t = l->cTemplate()->Add(name());
        t->UserString = body(true);
        t->Desc = name();
      }
    }
    return all;
  }

 private:
  int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }
  // Any text on one line, with all that the form gives a meaning to.
  QString name() {
    static const QStringList parts{q("a"),        q("Z9"),
                                   q(" "),        q(";"),
                                   q("["),        q("]"),
                                   q("{"),        q("}]"),
                                   q("#"),        q("^]"),
                                   q("$Desc:"),   q("SetLanguage:"),
                                   q("\xC3\xA4"), q("\xF0\x9F\x98\x80"),
                                   q("\t"),       q("|"),
                                   q("//"),       q("$$")};
    QString text;
    for (int n = upTo(5); n > 0; --n) text += parts[upTo(static_cast<int>(parts.size()) - 1)];
    return text;
  }
  QString body(bool withEmptyLines) {
    QString text;
    for (int n = upTo(6); n > 0; --n) {
      const QString line = name();
      if (definition::kindOf(line) != definition::LineKind::body || (line.isEmpty() && !withEmptyLines)) continue;
      if (!text.isEmpty() || n % 2) text += q("\r\n");
      text += line;
    }
    return text;
  }
  QString list() {
    QString text = body(false);
    while (text.startsWith(q("\r\n"))) text.remove(0, 2);
    return text.isEmpty() ? text : text + q("\r\n");
  }
  std::mt19937 random_;
};
