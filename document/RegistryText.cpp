#include "document/RegistryText.h"

#include <QStringDecoder>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView kHeader = u"Windows Registry Editor Version 5.00";
// Comments to the registry editor. The last line tells a whole file from one that was cut between two lines.
constexpr QStringView kOurs = u"; Settings of Zelkor Editor, whole when the last line is \"; end\"";
constexpr QStringView kEnd = u"; end";
constexpr int kHexWidth = 76;

std::optional<QString> decode(const QByteArray& bytes) {
  if (bytes.startsWith("\xFF\xFE")) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    QString text(bytes.size() / 2 - 1, Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i)
      text[i] = QChar(ushort(uchar(bytes[2 * i + 2]) | uchar(bytes[2 * i + 3]) << 8));
    return text;
  }
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString text = decoder(bytes);
  if (decoder.hasError()) return std::nullopt;
  return text.startsWith(QChar(0xFEFF)) ? text.mid(1) : text;
}

QString quoted(const QString& text) {
  QString out = text;
  out.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s);
  return u'"' + out + u'"';
}

bool needsHex(const QString& text) {
  for (const QChar c : text)
    if (c.unicode() < 0x20 || c.unicode() == 0x7F) return true;
  return false;
}

// Texts with line breaks or other control characters go as the bytes of their UTF-16 form: a quoted text holds one line.
QString hexText(const QString& prefix, const QString& text) {
  QString out, line = prefix;
  const auto put = [&](ushort byte, bool last) {
    line += QString::number(byte, 16).rightJustified(2, u'0');
    if (last) return;
    line += u',';
    if (line.size() >= kHexWidth) {
      out += line + u"\\\r\n"_s;
      line = u"  "_s;
    }
  };
  for (const QChar c : text) {
    put(c.unicode() & 0xFF, false);
    put(c.unicode() >> 8, false);
  }
  put(0, false);
  put(0, true);
  return out + line;
}

QString rendered(const QString& name, const QVariant& value) {
  const QString head = (name.isEmpty() ? u"@"_s : quoted(name)) + u'=';
  if (value.typeId() == QMetaType::Int)
    return head + u"dword:"_s + QString::number(quint32(value.toInt()), 16).rightJustified(8, u'0');
  const QString text = value.toString();
  return needsHex(text) ? hexText(head + u"hex(1):"_s, text) : head + quoted(text);
}

QString folded(const QString& key) { return key.toCaseFolded(); }

}  // namespace

// Takes the text apart; `ok` falls to false at the first thing that has no place in such a file.
class RegistryText::Reader {
 public:
  explicit Reader(const QString& text) : text_(text) {}

  bool read(std::vector<Section>& sections) {
    if (line() != kHeader || !ended_) return false;
    bool ours = false, end = false;
    while (at_ < text_.size()) {
      start_ = at_;
      const QChar first = text_[at_];
      if (first == u'"' || first == u'@') {
        Item item;
        if (!value(item)) return false;
        sections.back().items.push_back(std::move(item));
        continue;
      }
      const QString whole = line();
      if (first == u'[') {
        if (!whole.endsWith(u']')) return false;
        const QString key = whole.mid(1, whole.size() - 2);
        sections.push_back({key, folded(key), whole, {}});
      } else if (whole == kOurs && sections.size() == 1 && ended_) {
        ours = true;
      } else if (whole == kEnd) {
        end = true;
      } else if (first == u';' || whole.trimmed().isEmpty()) {
        sections.back().items.push_back({whole, false, {}, {}, {}});
      } else {
        return false;
      }
    }
    return end || (!ours && sections.size() > 1);   // a file of the registry editor has at least one key
  }

 private:
  // The rest of the line; ended_ says whether a line break stood behind it.
  QString line() {
    const qsizetype begin = at_;
    qsizetype stop = text_.indexOf(u'\n', begin);
    ended_ = stop >= 0;
    if (!ended_) stop = text_.size();
    at_ = ended_ ? stop + 1 : stop;
    if (ended_ && stop > begin && text_[stop - 1] == u'\r') --stop;
    return text_.mid(begin, stop - begin);
  }

  bool quotedText(QString& out) {
    for (++at_; at_ < text_.size(); ++at_) {
      const QChar c = text_[at_];
      if (c == u'"') {
        ++at_;
        return true;
      }
      if (c == u'\\' && ++at_ == text_.size()) return false;
      out += text_[at_];
    }
    return false;
  }

  bool value(Item& item) {
    item.isValue = true;
    if (text_[at_] == u'@') {
      ++at_;
    } else if (!quotedText(item.name)) {
      return false;
    }
    item.foldedName = folded(item.name);
    if (at_ == text_.size() || text_[at_] != u'=') return false;
    ++at_;
    bool good = false;
    if (at_ < text_.size() && text_[at_] == u'"') {
      QString text;
      good = quotedText(text) && line().trimmed().isEmpty();
      item.value = text;
    } else {
      QString data = line().trimmed();
      while (data.endsWith(u'\\') && ended_) {
        data.chop(1);
        data += line().trimmed();
      }
      good = typed(data, item.value);
    }
    qsizetype stop = at_;
    if (ended_) stop -= stop >= 2 && text_[stop - 2] == u'\r' ? 2 : 1;
    item.raw = text_.mid(start_, stop - start_);
    return good;
  }

  bool typed(const QString& data, QVariant& value) const {
    if (data == "-"_L1) return true;   // an order to remove the value: nothing to read, kept
    const qsizetype colon = data.indexOf(u':');
    const QString type = data.left(colon).toLower(), digits = data.mid(colon + 1);
    bool good = colon > 0;
    if (type == "dword"_L1) {
      const quint32 number = digits.toUInt(&good, 16);
      value = qint32(number);
      return good && digits.size() <= 8 && (ended_ || digits.size() == 8);
    }
    if (!good || !(type == "hex"_L1 || (type.startsWith("hex("_L1) && type.endsWith(u')')))) return false;
    QByteArray bytes;
    if (!digits.isEmpty()) {
      for (const QString& part : digits.split(u',')) {
        const uint byte = part.trimmed().toUInt(&good, 16);
        if (!good || byte > 0xFF || (!ended_ && part.trimmed().size() != 2)) return false;
        bytes.append(char(byte));
      }
    }
    if (type == "hex(1)"_L1) {
      QString text;
      for (qsizetype i = 0; i + 1 < bytes.size(); i += 2) text += QChar(ushort(uchar(bytes[i]) | uchar(bytes[i + 1]) << 8));
      if (!ended_ && !text.endsWith(QChar(0))) return false;
      if (text.endsWith(QChar(0))) text.chop(1);
      value = text;
    } else if (type == "hex(4)"_L1 && bytes.size() == 4) {
      value = qint32(quint32(uchar(bytes[0])) | quint32(uchar(bytes[1])) << 8 | quint32(uchar(bytes[2])) << 16 |
                     quint32(uchar(bytes[3])) << 24);
    }
    return true;
  }

  const QString& text_;
  qsizetype at_ = 0, start_ = 0;
  bool ended_ = false;
};

bool RegistryText::parse(const QByteArray& bytes) {
  sections_.assign(1, {});
  const auto text = decode(bytes);
  std::vector<Section> sections(1);
  if (!text || !Reader(*text).read(sections)) return false;
  sections_ = std::move(sections);
  // Every key begins behind one empty line of its own making; the ones read are dropped so that they do not add up.
  for (Section& section : sections_)
    while (!section.items.empty() && !section.items.back().isValue && section.items.back().raw.trimmed().isEmpty())
      section.items.pop_back();
  return true;
}

QByteArray RegistryText::toBytes() const {
  const QString eol = u"\r\n"_s;
  QString text = kHeader.toString() + eol + kOurs.toString() + eol;
  for (const Section& section : sections_) {
    if (!section.raw.isEmpty()) text += eol + section.raw + eol;
    for (const Item& item : section.items) text += item.raw + eol;
  }
  text += eol + kEnd.toString() + eol;
  QByteArray bytes("\xFF\xFE", 2);
  bytes.reserve(2 * text.size() + 2);
  for (const QChar c : text) bytes.append(char(c.unicode() & 0xFF)).append(char(c.unicode() >> 8));
  return bytes;
}

bool RegistryText::hasKey(const QString& key) const {
  const QString wanted = folded(key);
  for (const Section& section : sections_)
    if (!section.key.isEmpty() && section.foldedKey == wanted) return true;
  return hasSubkeys(key);
}

bool RegistryText::hasSubkeys(const QString& key) const {
  const QString wanted = folded(key) + u'\\';
  for (const Section& section : sections_)
    if (section.foldedKey.startsWith(wanted)) return true;
  return false;
}

// The last one counts, as it does for the registry editor.
const RegistryText::Item* RegistryText::find(const QString& key, const QString& name) const {
  const QString wantedKey = folded(key), wantedName = folded(name);
  for (auto section = sections_.rbegin(); section != sections_.rend(); ++section) {
    if (section->key.isEmpty() || section->foldedKey != wantedKey) continue;
    for (auto item = section->items.rbegin(); item != section->items.rend(); ++item)
      if (item->isValue && item->foldedName == wantedName) return &*item;
  }
  return nullptr;
}

bool RegistryText::hasValue(const QString& key, const QString& name) const { return find(key, name) != nullptr; }

QVariant RegistryText::value(const QString& key, const QString& name) const {
  const Item* item = find(key, name);
  return item ? item->value : QVariant();
}

void RegistryText::addKey(const QString& key) {
  for (qsizetype stop = key.indexOf(u'\\'); stop >= 0;) {
    stop = key.indexOf(u'\\', stop + 1);
    const QString part = stop < 0 ? key : key.left(stop);
    const QString wanted = folded(part);
    bool known = false;
    for (const Section& section : sections_) known = known || section.foldedKey == wanted;
    if (!known) sections_.push_back({part, wanted, u'[' + part + u']', {}});
  }
}

void RegistryText::setValue(const QString& key, const QString& name, const QVariant& value) {
  if (auto* item = const_cast<Item*>(find(key, name))) {
    if (item->value == value && item->value.typeId() == value.typeId()) return;
    item->value = value;
    item->raw = rendered(item->name, value);
    return;
  }
  addKey(key);
  const QString wanted = folded(key);
  for (auto section = sections_.rbegin(); section != sections_.rend(); ++section) {
    if (section->key.isEmpty() || section->foldedKey != wanted) continue;
    section->items.push_back({rendered(name, value), true, folded(name), name, value});
    return;
  }
}

void RegistryText::removeKey(const QString& key) {
  const QString wanted = folded(key);
  std::erase_if(sections_, [&](const Section& section) { return !section.key.isEmpty() && section.foldedKey == wanted; });
}
