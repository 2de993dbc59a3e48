#include "base/Strings.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

namespace {

qsizetype lastSeparator(const QString& path) {
  const qsizetype slash = path.lastIndexOf(u'/'), backslash = path.lastIndexOf(u'\\');
#ifdef Q_OS_WIN
  return std::max(slash, backslash);
#else
  return slash >= 0 ? slash : backslash;
#endif
}

// These are letters by category but have no glyph.
bool isFiller(char32_t c) { return c == 0x115F || c == 0x1160 || c == 0x3164 || c == 0xFFA0 || c == 0x2800; }

bool isInvisible(char32_t c) {
  switch (QChar::category(c)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph: return true;
    default: return isFiller(c);
  }
}

QString escaped(char32_t c) {
  switch (c) {
    case '\n': return QStringLiteral("\\n");
    case '\r': return QStringLiteral("\\r");
    case '\t': return QStringLiteral("\\t");
    default: break;
  }
  if (isBadByte(c)) return QStringLiteral("\\x%1").arg(c - kBadByte, 2, 16, QLatin1Char('0'));
  return QStringLiteral("<U+%1>").arg(QString::number(c, 16).toUpper().rightJustified(4, QLatin1Char('0')));
}

}   // namespace

void ReplaceAll(QString& text, const QString& find, const QString& replacement) {
  if (find.isEmpty() || !text.contains(find)) return;
  if (replacement.contains(find)) {   // resuming at the replacement would never end
    text.replace(find, replacement);
    return;
  }
  // The rest of the text is a stack with its first character on top. A replacement is pushed onto it and searched again. Each match
  // removes at least one character from below the replacement, so the loop ends in linear time.
  const auto reversed = [](QString s) {
    std::reverse(s.begin(), s.end());
    return s;
  };
  const QString top = reversed(find), instead = reversed(replacement);
  QString rest = reversed(text);
  text.clear();
  while (!rest.isEmpty()) {
    if (rest.endsWith(top)) {
      rest.chop(top.size());
      rest += instead;
    } else {
      text += rest.back();
      rest.chop(1);
    }
  }
}

QString GetFileTitle(const QString& path) { return path.mid(lastSeparator(path) + 1); }

QString GetFileDir(const QString& path) {
  const qsizetype at = lastSeparator(path);
  return at < 0 ? QString() : path.left(at);
}

QString GetFileExt(const QString& path) {
  const QString title = GetFileTitle(path);
  const qsizetype dot = title.lastIndexOf(u'.');
  return dot < 0 ? QString() : title.mid(dot + 1);
}

QString joinPath(const QString& folder, const QString& part) {
  QString path = folder;
  for (const QString& piece : part.split(u'/', Qt::SkipEmptyParts)) {
    const QDir dir(path);
    QString name = piece;
    if (!path.isEmpty() && !QFileInfo::exists(dir.filePath(name))) {
      const auto filter = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
      for (const QString& entry : dir.entryList(filter, QDir::Name))
        if (entry.compare(piece, Qt::CaseInsensitive) == 0) {
          name = entry;
          break;
        }
    }
    if (!path.isEmpty() && !path.endsWith(QDir::separator()) && !path.endsWith(u'/')) path += QDir::separator();
    path += name;
  }
  return path;
}

QString toCrLf(QString text) {
  text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  text.replace(u'\r', u'\n');
  text.replace(QLatin1String("\n"), QLatin1String("\r\n"));
  return text;
}

QStringList splitCrLf(const QString& text) {
  QStringList lines = text.split(QLatin1String("\r\n"));
  if (lines.last().isEmpty()) lines.removeLast();
  return lines;
}

QString plainForDisplay(const QString& text, int maxLength) {
  QString shown;
  for (qsizetype i = 0; i < text.size(); ++i) {
    char32_t c = text[i].unicode();
    if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      c = QChar::surrogateToUcs4(text[i], text[i + 1]);
      ++i;
    }
    const QString piece = isInvisible(c) ? escaped(c) : QString::fromUcs4(&c, 1);
    if (shown.size() + piece.size() > maxLength) {
      while (!shown.isEmpty() && (shown.size() >= maxLength || shown.back().isHighSurrogate())) shown.chop(1);
      return shown + QChar(0x2026);
    }
    shown += piece;
  }
  return shown;
}

QString nameForDisplay(const QString& name, int maxLength) {
  const QString shown = plainForDisplay(name, maxLength);
  const bool hidden = !shown.isEmpty() && (shown.front().isSpace() || shown.back().isSpace());
  return hidden ? u'"' + shown + u'"' : shown;
}
