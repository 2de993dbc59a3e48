#include "settings/RegistryText.h"

#include <QStringDecoder>
#include <optional>

#include "settings/RegistryExport.h"

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView kOurs = u"# Settings of Zelkor Editor. A whole file ends with the line \"# end\".";
constexpr QStringView kEnd = u"# end";
constexpr QStringView kMachine = u"HKEY_LOCAL_MACHINE", kHives = u"HKEY_";

std::optional<QString> decode(const QByteArray& bytes) {
  if (bytes.startsWith("\xFF\xFE")) {   // only the registry editor writes this mark
    if (bytes.size() % 2 != 0) return std::nullopt;
    QString text(bytes.size() / 2 - 1, Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i) text[i] = QChar(ushort(uchar(bytes[2 * i + 2]) | uchar(bytes[2 * i + 3]) << 8));
    return text;
  }
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString text = decoder(bytes);
  if (decoder.hasError()) return std::nullopt;
  return text.startsWith(QChar(0xFEFF)) ? text.mid(1) : text;
}

QString folded(const QString& key) { return key.toCaseFolded(); }

QString quoted(const QString& text) {
  QString out(u'"');
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    const bool pair = c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
    if (c == u'\\' || c == u'"') {
      (out += u'\\') += c;
    } else if (c == u'\n') {
      out += u"\\n";
    } else if (c == u'\r') {
      out += u"\\r";
    } else if (c == u'\t') {
      out += u"\\t";
    } else if (pair) {
      (out += c) += text[++i];
    } else if (c.isSurrogate() || c.category() == QChar::Other_Control || c == QChar(0xFEFF) || c == QChar(0x2028) ||
               c == QChar(0x2029)) {
      out += u"\\u"_s + QString::number(c.unicode(), 16).rightJustified(4, u'0');
    } else {
      out += c;
    }
  }
  return out + u'"';
}

// Removes a quoted text from the front of `rest`. False: there is none.
bool takeQuoted(QStringView& rest, QString& out) {
  for (qsizetype at = 1; at < rest.size(); ++at) {
    QChar c = rest[at];
    if (c == u'"') {
      rest = rest.mid(at + 1);
      return true;
    }
    if (c == u'\\') {
      if (++at == rest.size()) return false;
      switch (rest[at].unicode()) {
        case 'n': c = u'\n'; break;
        case 'r': c = u'\r'; break;
        case 't': c = u'\t'; break;
        case '"':
        case '\\': c = rest[at]; break;
        case 'u': {
          const QStringView digits = rest.mid(at + 1, 4);
          bool good = false;
          c = QChar(digits.toUShort(&good, 16));
          if (!good || digits.size() < 4) return false;
          at += 4;
          break;
        }
        default: return false;
      }
    }
    out += c;
  }
  return false;
}

bool isPlainName(const QString& name) {
  const auto plain = [](QChar c) { return c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'_' || c == u'-' || c == u'.'); };
  if (name.isEmpty() || !plain(name.front()) || !plain(name.back())) return false;
  for (const QChar c : name)
    if (!plain(c) && c != u' ') return false;
  return true;
}

QString line(const QString& name, const QString& data) {
  return (name.isEmpty() ? u"@"_s : isPlainName(name) ? name : quoted(name)) + u" = "_s + data;
}

QString rendered(const QString& name, const QVariant& value) {
  return line(name, value.typeId() == QMetaType::Int ? QString::number(value.toInt()) : quoted(value.toString()));
}

QString headOf(const QString& key) {
  QStringView shown(key);
  if (shown.startsWith(kMachine) && shown.mid(kMachine.size()).startsWith(u'\\') &&
      !shown.mid(kMachine.size() + 1).startsWith(kHives, Qt::CaseInsensitive))
    shown = shown.mid(kMachine.size() + 1);
  return u'[' + shown.toString() + u']';
}

// Parses "name = data". False: the line has another form.
bool readValue(const QString& whole, RegistryText::Item& item) {
  QStringView rest = QStringView(whole).trimmed();
  if (rest.startsWith(u'@')) {
    rest = rest.mid(1);
  } else if (rest.startsWith(u'"')) {
    if (!takeQuoted(rest, item.name)) return false;
  } else {
    const qsizetype stop = rest.indexOf(u'=');
    item.name = rest.left(std::max<qsizetype>(stop, 0)).trimmed().toString();
    if (item.name.isEmpty()) return false;
    rest = rest.mid(stop);
  }
  rest = rest.trimmed();
  if (!rest.startsWith(u'=')) return false;
  rest = rest.mid(1).trimmed();
  item.isValue = true;
  item.foldedName = folded(item.name);
  bool number = false;
  if (const int n = rest.toInt(&number); number) {
    item.value = qint32(n);
  } else if (rest.startsWith(u'"')) {
    QString text;
    if (!takeQuoted(rest, text) || !rest.trimmed().isEmpty()) return false;
    item.value = text;
  }
  return true;
}

bool readOwn(const QString& text, std::vector<RegistryText::Section>& sections) {
  const QStringList lines = text.split(u'\n');
  bool end = false;
  for (qsizetype i = 0; i < lines.size(); ++i) {
    QString whole = lines[i];
    if (whole.endsWith(u'\r')) whole.chop(1);
    const QString said = whole.trimmed();
    if (i == 0) {
      if (said != kOurs || lines.size() == 1) return false;
    } else if (said == kEnd && i + 1 < lines.size()) {   // without a line break it may be the start of a longer comment
      end = true;
    } else if (said.startsWith(u'[')) {
      if (!said.endsWith(u']')) return false;
      QString key = said.mid(1, said.size() - 2);
      if (!key.startsWith(kHives, Qt::CaseInsensitive)) key.prepend(kMachine.toString() + u'\\');
      sections.push_back({key, folded(key), whole, {}});
    } else if (said.isEmpty() || said.startsWith(u'#') || said.startsWith(u';')) {
      sections.back().items.push_back({whole, false, {}, {}, {}});
    } else {
      RegistryText::Item item;
      item.raw = whole;
      if (!readValue(whole, item)) return false;
      sections.back().items.push_back(std::move(item));
    }
  }
  return end;
}

}   // namespace

bool RegistryText::parse(const QByteArray& bytes) {
  sections_.assign(1, {});
  const auto text = decode(bytes);
  std::vector<Section> sections(1);
  if (!text) return false;
  if (text->startsWith(registryExport::kHeader)) {
    if (!registryExport::read(*text, sections)) return false;
    for (Section& section : sections) {
      if (!section.key.isEmpty()) section.raw = headOf(section.key);
      for (Item& item : section.items)
        if (item.isValue) item.raw = item.value.isValid() ? rendered(item.name, item.value) : line(item.name, item.raw);
    }
  } else if (!readOwn(*text, sections)) {
    return false;
  }
  sections_ = std::move(sections);
  // The writer puts one empty line before each key. The reader drops these, so that they do not accumulate.
  for (Section& section : sections_)
    while (!section.items.empty() && !section.items.back().isValue && section.items.back().raw.trimmed().isEmpty())
      section.items.pop_back();
  return true;
}

QByteArray RegistryText::toBytes() const {
  QString text = kOurs.toString() + u'\n';
  for (const Section& section : sections_) {
    if (!section.raw.isEmpty()) text += u'\n' + section.raw + u'\n';
    for (const Item& item : section.items) text += item.raw + u'\n';
  }
  return (text + u'\n' + kEnd.toString() + u'\n').toUtf8();
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

// Of equal names the last one counts, as in the registry editor.
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
    if (!known) sections_.push_back({part, wanted, headOf(part), {}});
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
