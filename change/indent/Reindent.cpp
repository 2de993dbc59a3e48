#include "change/indent/Reindent.h"

#include <algorithm>

#include "control/edit/TextModel.h"
#include "text/line/Chars.h"
#include "text/line/Words.h"

int leadingLength(const QString& line) {
  int n = 0;
  while (n < line.size() && (line[n] == u' ' || line[n] == u'\t')) ++n;
  return n;
}

QString firstWord(const QString& trimmedLine) {
  if (trimmedLine.isEmpty()) return {};
  const auto kind = text::classOf(trimmedLine[0].unicode());
  if (kind == text::CharClass::blank) return {};
  qsizetype end = 1;
  while (end < trimmedLine.size() && text::classOf(trimmedLine[end].unicode()) == kind) ++end;
  return trimmedLine.left(end);
}

std::vector<int> indentsByFirstWord(const LineSource& line, qint64 count, const BlockWords& words, int unit) {
  std::vector<int> indents;
  indents.reserve(static_cast<std::size_t>(count));
  IndentStack stack(unit);
  int indent = 0;
  for (qint64 i = 0; i < count; ++i) {
    const QString text = line(i);
    const auto entry = words.classify(firstWord(text.mid(leadingLength(text))));
    if (entry.kind == BlockClass::end) indent -= stack.pop();
    if (entry.kind == BlockClass::middle) indent -= unit;
    indent = std::max(indent, 0);
    indents.push_back(indent);
    if (entry.kind == BlockClass::start) {
      const int width = entry.doubleIndent ? 2 * unit : unit;
      stack.push(width);
      indent += width;
    } else if (entry.kind == BlockClass::middle) {
      indent += unit;
    }
  }
  return indents;
}
