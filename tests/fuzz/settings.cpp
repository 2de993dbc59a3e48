// C2, C3, Q1: the settings file: anything is either damaged or read; what was read is kept line by line, whatever it means, and what was
// set comes back; a file of ours that was cut is damaged.
#include "settings/RegistryText.h"
#include "tests/fuzz/Fuzz.h"

using fuzz::check;

namespace {

const QString kKey = QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\Zelkor Editor\\Global");

// The lines that say something: neither blank nor what every file of ours has.
QStringList linesOf(const QByteArray& bytes) {
  QStringList lines;
  const QString text = QString::fromUtf8(bytes);
  for (QString line : (text.startsWith(QChar(0xFEFF)) ? text.mid(1) : text).split(u'\n')) {
    if (line.endsWith(u'\r')) line.chop(1);
    if (!line.trimmed().isEmpty() && line.trimmed() != QLatin1String("# end")) lines << line;
  }
  return lines;
}

void checkKept(const QByteArray& before, const QByteArray& after) {
  const QStringList now = linesOf(after);
  qsizetype at = 0;
  for (const QString& line : linesOf(before).mid(1)) {
    at = now.indexOf(line, at);
    check(at >= 0, "what was read is kept, in its order");
    ++at;
  }
}

// A file in the right form that holds anything else than our own settings.
QByteArray strangers(fuzz::Input in) {
  QByteArray file = "# Settings of Zelkor Editor. A whole file ends with the line \"# end\".\r\n\r\n[Software\\Other]\r\n";
  while (!in.empty()) {
    const int kind = in.byte() % 6, number = in.byte();
    QByteArray word;
    for (const char c : in.take(in.byte() % 12)) word += char('a' + (c & 15));
    switch (kind) {
      case 0: file += "[HKEY_CURRENT_USER\\" + word + "]\r\n"; break;
      case 1: file += "# x" + word + "\r\n"; break;
      case 2: file += "\"" + word + "\"=hex(b):0" + QByteArray::number(number % 10) + ",ff\r\n"; break;
      case 3: file += "x" + word + " = " + QByteArray::number(number) + "\r\n"; break;
      case 4: file += "\"" + word + "\"=\"" + word + "\\\\\\u00" + QByteArray::number(number % 90 + 10) + "\"\r\n"; break;
      default: file += "\"" + word + "\"=-\r\n"; break;
    }
  }
  return file + "# end\r\n";
}

void use(const QByteArray& bytes, std::uint8_t cutAt, bool mustBeRead) {
  RegistryText text;
  if (!text.parse(bytes)) {
    check(!mustBeRead, "the form is right");
    check(!text.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE")), "damaged is empty");
    return;
  }
  if (bytes.startsWith('#')) checkKept(bytes, text.toBytes());   // others are taken over into our form
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

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::uint8_t cutAt = size > 0 ? data[size / 2] : 0;
  use(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)), cutAt, false);
  use(strangers(fuzz::Input(data, size)), cutAt, true);
  return 0;
}
