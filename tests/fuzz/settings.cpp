// C2, C3, Q1: the settings file: anything is either damaged or read; what was read is kept line by line, whatever it means, and what was
// set comes back; a file of ours that was cut is damaged.
#include "document/RegistryText.h"
#include "tests/fuzz/Fuzz.h"

using fuzz::check;

namespace {

const QString kKey = QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\Zelkor Editor\\Global");

QString textOf(const QByteArray& bytes) {
  if (!bytes.startsWith("\xFF\xFE")) {
    const QString text = QString::fromUtf8(bytes);
    return text.startsWith(QChar(0xFEFF)) ? text.mid(1) : text;
  }
  QString text;
  for (qsizetype i = 2; i + 1 < bytes.size(); i += 2) text += QChar(ushort(uchar(bytes[i]) | uchar(bytes[i + 1]) << 8));
  return text;
}

// The lines that say something: neither blank nor what every file of ours has.
QStringList linesOf(const QByteArray& bytes) {
  QStringList lines;
  for (QString line : textOf(bytes).split(u'\n')) {
    if (line.endsWith(u'\r')) line.chop(1);
    if (!line.trimmed().isEmpty() && line != QLatin1String("; end") && !line.startsWith(QLatin1String("; Settings of"))) lines << line;
  }
  return lines;
}

void checkKept(const QByteArray& before, const QByteArray& after) {
  const QStringList now = linesOf(after);
  qsizetype at = 0;
  for (const QString& line : linesOf(before)) {
    at = now.indexOf(line, at);
    check(at >= 0, "what was read is kept, in its order");
    ++at;
  }
}

// A file in the right form that holds anything else than our own settings.
QByteArray strangers(fuzz::Input in) {
  QByteArray file = "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Other]\r\n";
  while (!in.empty()) {
    const int kind = in.byte() % 6, number = in.byte();
    QByteArray word;
    for (const char c : in.take(in.byte() % 12)) word += char('a' + (c & 15));
    switch (kind) {
      case 0: file += "[HKEY_CURRENT_USER\\" + word + "]\r\n"; break;
      case 1: file += "; " + word + "\r\n"; break;
      case 2: file += "\"" + word + "\"=hex(b):0" + QByteArray::number(number % 10) + ",ff\r\n"; break;
      case 3: file += "\"" + word + "\"=dword:0000000" + QByteArray::number(number % 10) + "\r\n"; break;
      case 4: file += "\"" + word + "\"=\"" + word + "\\\\\"\r\n"; break;
      default: file += "\"" + word + "\"=-\r\n"; break;
    }
  }
  return file;
}

void use(const QByteArray& bytes, std::uint8_t cutAt, bool mustBeRead) {
  RegistryText text;
  if (!text.parse(bytes)) {
    check(!mustBeRead, "the form is right");
    check(!text.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE")), "damaged is empty");
    return;
  }
  checkKept(bytes, text.toBytes());
  const QString value = QString::fromUtf8(bytes.right(40)).remove(QChar(0));
  const qint32 number = qint32(bytes.size());
  text.addKey(kKey);
  text.setValue(kKey, QStringLiteral("FUZZ"), value);
  text.setValue(kKey, QStringLiteral("NUMBER"), number);
  const QByteArray written = text.toBytes();
  RegistryText again;
  check(again.parse(written), "what was written is read");
  check(again.toBytes() == written, "writing what was read changes nothing");
  check(again.value(kKey, QStringLiteral("NUMBER")) == QVariant(number), "a value comes back");
  check(again.value(kKey, QStringLiteral("FUZZ")).toString() == value, "a text comes back");
  if (mustBeRead) checkKept(bytes, written);
  RegistryText cut;
  const qsizetype at = qsizetype(cutAt) * written.size() / 256;
  if (cut.parse(written.left(at))) check(cut.toBytes().size() >= written.size() - 4, "a cut file is damaged");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::uint8_t cutAt = size > 0 ? data[size / 2] : 0;
  use(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)), cutAt, false);
  use(strangers(fuzz::Input(data, size)), cutAt, true);
  return 0;
}
