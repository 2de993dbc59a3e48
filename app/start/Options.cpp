#include "app/start/Options.h"

#include <QCoreApplication>
#include <algorithm>

namespace {
QString tr(const char* text) { return QCoreApplication::translate("Options", text); }
}   // namespace

bool Options::has(const char* name) const {
  return std::any_of(given.begin(), given.end(), [&](const Given& one) { return one.name == QLatin1String(name); });
}

QString Options::value(const char* name) const {
  const auto found = std::find_if(given.begin(), given.end(), [&](const Given& one) { return one.name == QLatin1String(name); });
  return found == given.end() ? QString() : found->value;
}

Options takeApart(const QStringList& arguments, const QStringList& switches, const QStringList& withValue) {
  Options options;
  bool onlyFiles = false;
  for (qsizetype i = 0; i < arguments.size() && options.error.isEmpty(); ++i) {
    const QString& argument = arguments[i];
    const QString whole = argument == QLatin1String("-h") ? QStringLiteral("--help") : argument;
    const qsizetype equals = argument.indexOf(u'=');
    const QString name = argument.left(equals);   // all where there is none
    if (onlyFiles || !argument.startsWith(u'-')) {
      options.files << argument;
    } else if (argument == QLatin1String("--")) {
      onlyFiles = true;
    } else if (switches.contains(whole)) {
      options.given.append({whole, {}});
    } else if (!withValue.contains(name)) {
      options.error = tr("unknown option %1").arg(argument);
    } else {
      const QString value = equals >= 0 ? argument.mid(equals + 1) : arguments.value(++i);
      if (value.isEmpty()) options.error = tr("%1 needs a value").arg(name);
      else if (options.has(name.toLatin1().constData())) options.error = tr("%1 is given twice").arg(name);
      options.given.append({name, value});
    }
  }
  return options;
}
