#include "base/Options.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QHash>
#include <algorithm>

namespace {

QString tr(const char* text) { return QCoreApplication::translate("Options", text); }

enum class Form { commandLine, verb };

// To the library every option has a value: what follows a name without "=" is decided here.
Options parse(const QStringList& words, std::span<const OptionRow> rows, Form form) {
  const bool isVerb = form == Form::verb;
  Options options;
  QCommandLineParser parser;
  QHash<QString, const OptionRow*> known;
  for (const OptionRow& row : rows) {
    const QString name = QString::fromLatin1(row.name);
    known[name] = &row;
    parser.addOption(QCommandLineOption(isVerb ? name : name.mid(2), {}, QStringLiteral("value")));
  }
  if (known.contains(QStringLiteral("--help")) &&
      (words.contains(QStringLiteral("--help")) || words.contains(QStringLiteral("-h")))) {
    options.given.append({QStringLiteral("--help"), QStringLiteral("yes")});
    return options;
  }
  QStringList line{QString()};   // the program's name
  const OptionRow* awaits = nullptr;
  for (const QString& word : words) {
    if (awaits && known.contains(word)) break;
    const QString name = awaits ? QString() : word.section(u'=', 0, 0);
    const OptionRow* const row = known.value(isVerb ? name.toLower() : name);
    if (isVerb) line << QStringLiteral("--") + name.toLower() + word.mid(name.size());
    else line << word;
    const bool isBare = row && !word.contains(u'=');
    if (isBare && !*row->value) line.last() += QStringLiteral("=yes");
    awaits = isBare && *row->value ? row : nullptr;
    if (awaits && isVerb) break;
  }
  if (awaits) options.error = tr("%1 needs a value").arg(QString::fromLatin1(awaits->name));
  if (!options.error.isEmpty()) return options;

  parser.parse(line);
  const QStringList strange = parser.unknownOptionNames();
  if (!strange.isEmpty()) {
    const QString dashes = isVerb ? QString() : strange.first().size() == 1 ? QStringLiteral("-") : QStringLiteral("--");
    options.error = tr("unknown option %1").arg(dashes + strange.first());
    return options;
  }
  options.words = parser.positionalArguments();
  QHash<QString, int> times;
  for (const QString& bare : parser.optionNames()) {
    const QString name = isVerb ? bare : QStringLiteral("--") + bare;
    const bool isSwitch = !*known[name]->value;
    QString value = parser.values(bare).value(times[name]++);
    if (isSwitch) value = value.toLower();
    if (isSwitch && value != QLatin1String("yes") && value != QLatin1String("no"))
      options.error = tr("%1 is yes or no, not %2").arg(name, value);
    else if (!isSwitch && value.isEmpty() && !isVerb) options.error = tr("%1 needs a value").arg(name);
    else if (!isSwitch && times[name] > 1) options.error = tr("%1 is given twice").arg(name);
    if (!options.error.isEmpty()) return options;
    options.given.append({name, std::move(value)});
  }
  return options;
}

// Parted by blanks; behind "=" a value may stand in quotation marks, which go.
QStringList quotedWords(const QString& argument) {
  QStringList words;
  for (qsizetype at = 0; at < argument.size();) {
    if (argument[at] == u' ') {
      ++at;
      continue;
    }
    QString word;
    bool quoted = false;
    for (; at < argument.size() && (quoted || argument[at] != u' '); ++at) {
      const bool escaped = quoted && argument[at] == u'\\' && at + 1 < argument.size() && argument[at + 1] == u'"';
      const bool opens = argument[at] == u'"' && !quoted && word.endsWith(u'=') && word.count(u'=') == 1;
      if (escaped) word += argument[++at];
      else if (opens || (quoted && argument[at] == u'"')) quoted = opens;
      else word += argument[at];
    }
    words << word;
  }
  return words;
}

}   // namespace

bool Options::isOn(const char* name) const {
  const auto is = [&](const Given& one) { return one.name == QLatin1String(name); };
  const auto last = std::find_if(given.rbegin(), given.rend(), is);
  return last != given.rend() && last->isOn();
}

bool Options::has(const char* name) const {
  return std::any_of(given.begin(), given.end(), [&](const Given& one) { return one.name == QLatin1String(name); });
}

QString Options::value(const char* name, const QString& otherwise) const {
  for (const Given& one : given)
    if (one.name == QLatin1String(name)) return one.value;
  return otherwise;
}

Options parseCommandLine(const QStringList& arguments, std::span<const OptionRow> rows) {
  const qsizetype dashes = arguments.indexOf(QStringLiteral("--"));   // -1: all stands before it
  Options options = parse(arguments.mid(0, dashes), rows, Form::commandLine);
  if (dashes >= 0) options.behind = arguments.mid(dashes + 1);
  return options;
}

Options parseVerb(const QString& argument, std::span<const OptionRow> rows, bool quotes) {
  Options options = parse(quotes ? quotedWords(argument) : argument.split(u' ', Qt::SkipEmptyParts), rows, Form::verb);
  if (options.error.isEmpty() && !options.words.isEmpty()) options.error = tr("unknown option %1").arg(options.words.first());
  return options;
}

QString helpLine(const char* name, const char* value, const QString& help, int width) {
  const QString option = QStringLiteral("%1 %2").arg(QLatin1String(name), QLatin1String(value)).trimmed();
  return QLatin1String("  ") + option.leftJustified(width) + help + u'\n';
}
