#include "base/dialog/FileFilter.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include "base/Strings.h"

namespace {

// Qt's dialog reads the text between the last parentheses as patterns separated by blanks. It allows these characters only; any
// other one becomes a wildcard for one character.
QString dialogPatterns(const QString& pattern) {
  static const QRegularExpression other(QStringLiteral("[^a-zA-Z0-9_.,*?+#\\-@{}/!<>$%&=^~:]"));
  QStringList patterns;
  for (QString one : pattern.split(u';', Qt::SkipEmptyParts)) {
    one = one.trimmed();
    if (one.isEmpty() || one == QLatin1String("*.")) continue;
    patterns += one == QLatin1String("*.*") ? QStringLiteral("*") : one.replace(other, QStringLiteral("?"));
  }
  return patterns.isEmpty() ? QStringLiteral("*") : patterns.join(u' ');
}

}   // namespace

QStringList dialogFilters(const QString& filter) {
  QStringList pieces = filter.split(u'|');
  if (pieces.last().isEmpty()) pieces.removeLast();
  if (pieces.size() % 2 == 1) pieces += pieces.last();
  QStringList entries;
  for (qsizetype i = 0; i + 1 < pieces.size(); i += 2) {
    const QString& pattern = pieces[i + 1];
    QString name = pieces[i];
    const QString repeated = u'(' + pattern + u')';   // the description repeats the pattern; the entry adds it itself
    if (name.endsWith(repeated)) name.chop(repeated.size());
    name = plainForDisplay(name.trimmed(), 80);
    if (name.isEmpty() || name == pattern)
      name = pattern == QLatin1String("*.*") ? QCoreApplication::translate("Dialogs", "All files")
                                             : QCoreApplication::translate("Dialogs", "Files");
    const QString tail = QStringLiteral(" (") + dialogPatterns(pattern) + u')';
    QString entry = name + tail;
    for (int n = 2; entries.contains(entry); ++n) entry = name + QStringLiteral(" - %1").arg(n) + tail;
    entries += entry;
  }
  return entries;
}
