#include "control/edit/TextMime.h"

#include <QUrl>

#include "control/edit/TextModel.h"

namespace {

// "block" or "plain", a line feed, the bytes.
QString ownFormat() { return QStringLiteral("application/x-zelkor-text"); }

// The pieces of several carets: for each the number of its bytes, a line feed, and the bytes.
QString piecesFormat() { return QStringLiteral("application/x-zelkor-carets"); }

// For other programs: an invalid byte has no character and becomes U+FFFD.
QString forOthers(const QString& text) {
  for (const QChar c : text)
    if (c.isSurrogate()) return QString::fromUtf8(QByteArray::fromStdString(fromQString(text)));
  return text;
}

QByteArray ownBytes(const QString& text, bool block) {
  return QByteArray(block ? "block\n" : "plain\n") + QByteArray::fromStdString(fromQString(text));
}

class LazyText : public QMimeData {
 public:
  LazyText(const text::Snapshot& snapshot, text::ByteRange range) : snapshot_(snapshot), range_(range) {}
  QStringList formats() const override { return {QStringLiteral("text/plain"), ownFormat()}; }
  bool hasFormat(const QString& format) const override { return formats().contains(format); }

 protected:
  QVariant retrieveData(const QString& format, QMetaType) const override {
    const std::string bytes = snapshot_.bytes(range_);
    if (format == ownFormat()) return QByteArray("plain\n") + QByteArray::fromStdString(bytes);
    if (format == QStringLiteral("text/plain")) return forOthers(toQString(bytes));
    return {};
  }

 private:
  text::Snapshot snapshot_;
  text::ByteRange range_;
};

// A long text is kept as a snapshot and converted on request.
class LongText : public QMimeData {
 public:
  LongText(const QString& text, bool block) : text_(text), block_(block) {}
  QStringList formats() const override { return {QStringLiteral("text/plain"), ownFormat()}; }
  bool hasFormat(const QString& format) const override { return formats().contains(format); }

 protected:
  QVariant retrieveData(const QString& format, QMetaType) const override {
    if (format == ownFormat()) return ownBytes(text_, block_);
    if (format == QStringLiteral("text/plain")) return forOthers(text_);
    return {};
  }

 private:
  QString text_;
  bool block_;
};

constexpr qsizetype kLong = 1 << 20;   // characters

}   // namespace

std::unique_ptr<QMimeData> TextMime::make(const QString& text, bool block) {
  if (text.size() > kLong) return std::make_unique<LongText>(text, block);
  auto data = std::make_unique<QMimeData>();
  data->setText(forOthers(text));
  data->setData(ownFormat(), ownBytes(text, block));
  return data;
}

std::unique_ptr<QMimeData> TextMime::makeLazy(const text::Snapshot& snapshot, text::ByteRange range) {
  return std::make_unique<LazyText>(snapshot, range);
}

std::unique_ptr<QMimeData> TextMime::make(const QString& text, const QStringList& pieces) {
  auto data = std::make_unique<QMimeData>();
  data->setText(forOthers(text));
  data->setData(ownFormat(), ownBytes(text, false));
  QByteArray all;
  for (const QString& piece : pieces) {
    const std::string bytes = fromQString(piece);
    all += QByteArray::number(static_cast<qlonglong>(bytes.size())) + '\n';
    all.append(bytes.data(), static_cast<qsizetype>(bytes.size()));
  }
  data->setData(piecesFormat(), all);
  return data;
}

QStringList TextMime::pieces(const QMimeData* data) {
  const QByteArray all = data ? data->data(piecesFormat()) : QByteArray();
  QStringList pieces;
  for (qsizetype at = 0; at < all.size();) {
    const qsizetype head = all.indexOf('\n', at);
    bool good = head > at;
    const qlonglong size = good ? all.mid(at, head - at).toLongLong(&good) : 0;
    if (!good || size < 0 || size > all.size() - head - 1) return {};   // made by another program
    pieces += toQString(std::string_view(all.constData() + head + 1, static_cast<std::size_t>(size)));
    at = head + 1 + size;
  }
  return pieces;
}

bool TextMime::hasText(const QMimeData* data) { return data && (data->hasFormat(ownFormat()) || data->hasText()); }

QString TextMime::read(const QMimeData* data, bool* block) {
  if (block) *block = false;
  if (!data) return {};
  const QByteArray own = data->data(ownFormat());
  const qsizetype head = own.indexOf('\n');
  if (head < 0) return data->text();
  if (block) *block = own.startsWith("block\n");
  return toQString(std::string_view(own.constData() + head + 1, static_cast<std::size_t>(own.size() - head - 1)));
}
