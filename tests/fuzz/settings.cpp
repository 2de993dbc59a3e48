// C2, C3: the settings file: anything is either damaged or read, and what was read is written and read again without loss; a file
// of ours that was cut is damaged.
#include "document/RegistryText.h"
#include "tests/fuzz/Fuzz.h"

using fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
  RegistryText text;
  if (!text.parse(bytes)) {
    check(!text.hasKey(QStringLiteral("HKEY_LOCAL_MACHINE")), "damaged is empty");
    return 0;
  }
  const QString key = QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\Zelkor Editor\\Global");
  const QString value = QString::fromUtf8(bytes.right(40)).remove(QChar(0));
  text.addKey(key);
  text.setValue(key, QStringLiteral("FUZZ"), value);
  text.setValue(key, QStringLiteral("NUMBER"), qint32(size));
  const QByteArray written = text.toBytes();
  RegistryText again;
  check(again.parse(written), "what was written is read");
  check(again.toBytes() == written, "writing what was read changes nothing");
  check(again.value(key, QStringLiteral("NUMBER")) == QVariant(qint32(size)), "a value comes back");
  check(again.value(key, QStringLiteral("FUZZ")).toString() == value, "a text comes back");
  RegistryText cut;
  const qsizetype at = size > 0 ? qsizetype(data[size / 2]) * written.size() / 256 : 0;
  if (cut.parse(written.left(at))) check(cut.toBytes().size() >= written.size() - 4, "a cut file is damaged");
  return 0;
}
