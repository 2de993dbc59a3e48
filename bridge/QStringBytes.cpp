#include "bridge/QStringBytes.h"

#include "text/line/Chars.h"

QString toQString(std::string_view bytes) {
  if (text::validUtf8(bytes)) {
    // fromUtf8 drops a leading U+FEFF, which is text here.
    const bool mark = bytes.substr(0, 3) == "\xEF\xBB\xBF";
    if (mark) bytes.remove_prefix(3);
    QString rest = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    return mark ? QChar(0xFEFF) + rest : rest;
  }
  QString result;
  result.reserve(static_cast<qsizetype>(bytes.size()));
  while (!bytes.empty()) {
    const text::Char c = text::decode(bytes);
    if (c.bad) result += QChar(static_cast<ushort>(kBadByte + c.code));
    else result += QChar::fromUcs4(c.code);
    bytes.remove_prefix(static_cast<std::size_t>(c.bytes));
  }
  return result;
}

std::string fromQString(QStringView text) {
  // The library converts runs without lone surrogates. A lone surrogate is a bad byte or has no bytes.
  std::string result;
  qsizetype from = 0;
  const auto flush = [&](qsizetype to) {
    const QByteArray utf8 = text.sliced(from, to - from).toUtf8();
    result.append(utf8.constData(), static_cast<std::size_t>(utf8.size()));
  };
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (!text[i].isSurrogate()) continue;
    if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      ++i;
      continue;
    }
    flush(i);
    from = i + 1;
    const char16_t unit = text[i].unicode();
    if (isBadByte(unit)) result += static_cast<char>(unit - kBadByte);
    else result += "\xEF\xBF\xBD";
  }
  flush(text.size());
  return result;
}
