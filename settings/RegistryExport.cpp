#include "settings/RegistryExport.h"

using namespace Qt::StringLiterals;

namespace {

// Comments to the registry editor. The last line tells a whole file of ours from one that was cut between two lines.
constexpr QStringView kExport = u"; Settings of Zelkor Editor, whole when the last line is \"; end\"";
constexpr QStringView kExportEnd = u"; end";

// Parses the text. Stops at the first thing that such a file cannot hold.
class Reader {
 public:
  explicit Reader(const QString& text) : text_(text) {}

  bool read(std::vector<RegistryText::Section>& sections) {
    if (line() != registryExport::kHeader || !ended_) return false;
    bool ours = false, end = false;
    while (at_ < text_.size()) {
      const QChar first = text_[at_];
      if (first == u'"' || first == u'@') {
        RegistryText::Item item;
        if (!value(item)) return false;
        sections.back().items.push_back(std::move(item));
        continue;
      }
      const QString whole = line();
      if (first == u'[') {
        if (!whole.endsWith(u']')) return false;
        const QString key = whole.mid(1, whole.size() - 2);
        sections.push_back({key, key.toCaseFolded(), {}, {}});
      } else if (whole == kExport && sections.size() == 1 && ended_) {
        ours = true;
      } else if (whole == kExportEnd) {
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
  // The rest of the line; ended_ says whether a line break follows it.
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

  bool value(RegistryText::Item& item) {
    item.isValue = true;
    if (text_[at_] == u'@') {
      ++at_;
    } else if (!quotedText(item.name)) {
      return false;
    }
    item.foldedName = item.name.toCaseFolded();
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
      if (!item.value.isValid()) item.raw = data;
    }
    return good;
  }

  bool typed(const QString& data, QVariant& value) const {
    if (data == "-"_L1) return true;   // a request to remove the value: there is nothing to read, the line is kept
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
  qsizetype at_ = 0;
  bool ended_ = false;
};

}   // namespace

bool registryExport::read(const QString& text, std::vector<RegistryText::Section>& sections) { return Reader(text).read(sections); }
