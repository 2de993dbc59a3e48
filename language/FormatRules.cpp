#include "language/FormatRules.h"

#include "base/Strings.h"

FormatRules formatRules(const clsLang& language) {
  FormatRules rules;
  const auto read = [](const QString& list, std::initializer_list<std::pair<const char*, QStringList*>> kinds) {
    for (const QString& line : splitCrLf(toCrLf(list)))
      for (const auto& [kind, signs] : kinds)
        if (const QString sign = line.section(u' ', 1); !sign.isEmpty() && line.section(u' ', 0, 0) == QLatin1String(kind))
          *signs += sign;
  };
  QStringList cases;
  read(language.Formatting,
       {{"lines", &rules.lines}, {"raw", &rules.raw}, {"here", &rules.here}, {"rest", &rules.rest}, {"case", &cases}});
  read(language.SignPlaces, {{"plain", &rules.plain}, {"line", &rules.atLine}});
  rules.caseOfAll = language.isCaseSensitive || cases.contains(QLatin1String("all"));
  rules.caseOfNames = rules.caseOfAll || cases.contains(QLatin1String("names"));
  rules.tabs = splitCrLf(toCrLf(language.Formatting)).contains(QLatin1String("tabs"));
  return rules;
}
