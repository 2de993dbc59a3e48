#include "text/journal/JournalFormat.h"

#include <algorithm>

#include "text/store/ContentHash.h"

namespace text::journal {
namespace {

void put(std::string* out, std::uint64_t number, int bytes) {
  for (int i = 0; i < bytes; ++i) *out += static_cast<char>(number >> 8 * i & 0xFF);
}

// Reads numbers and texts from a payload; `ok` becomes false when one is missing.
struct Cut {
  std::string_view rest;
  bool ok = true;

  std::uint64_t number(int bytes) {
    if (rest.size() < static_cast<std::size_t>(bytes)) return ok = false, 0;
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) value |= static_cast<std::uint64_t>(static_cast<unsigned char>(rest[std::size_t(i)])) << 8 * i;
    rest.remove_prefix(static_cast<std::size_t>(bytes));
    return value;
  }
  std::int64_t offset() {
    const auto value = static_cast<std::int64_t>(number(8));
    if (value < 0) ok = false;
    return value;
  }
  std::string_view bytes(std::uint64_t length) {
    if (!ok || rest.size() < length) return ok = false, std::string_view();
    const std::string_view taken = rest.substr(0, length);
    rest.remove_prefix(length);
    return taken;
  }
  bool done() const { return ok && rest.empty(); }
};

std::uint64_t checksum(std::uint64_t chain, std::string_view head, std::string_view payload) {
  std::string start;
  put(&start, chain, 8);
  ContentHash hash;
  hash.add(start);
  hash.add(head);
  hash.add(payload);
  return hash.value();
}

void putText(std::string* out, std::string_view text) {
  put(out, text.size(), 4);
  out->append(text);
}

}   // namespace

void Encoder::add(std::string* out, Kind kind, std::string_view payload) {
  std::string head;
  put(&head, static_cast<std::uint32_t>(kind), 4);
  put(&head, sequence_++, 8);
  put(&head, payload.size(), 4);
  chain_ = checksum(chain_, head, payload);
  out->append(head).append(payload);
  put(out, chain_, 8);
}

bool Decoder::fill(std::string* to, std::size_t length) {
  to->clear();
  while (to->size() < length) {
    const std::size_t had = to->size(), step = std::min<std::size_t>(length - had, 64 * 1024);
    to->resize(had + step);
    const std::int64_t got = read_(to->data() + had, step);
    to->resize(had + static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
    if (got <= 0) return false;
  }
  return true;
}

bool Decoder::magic() {
  std::string start;
  if (!fill(&start, kMagic.size()) || start != kMagic) return false;
  good_ = static_cast<std::int64_t>(start.size());
  return true;
}

bool Decoder::next(Record* record) {
  std::string head, sum;
  if (!fill(&head, kRecordFrame - 8)) {
    clean_ = head.empty();
    return false;
  }
  Cut cut{head};
  const auto kind = static_cast<std::uint32_t>(cut.number(4));
  const std::uint64_t sequence = cut.number(8), length = cut.number(4);
  if (sequence != sequence_ || length > kMostPayload) return false;
  if (!isKind(kind)) return false;
  if (!fill(&record->payload, length) || !fill(&sum, 8)) return false;
  const std::uint64_t chain = checksum(chain_, head, record->payload);
  if (Cut{sum}.number(8) != chain) return false;
  chain_ = chain;
  ++sequence_;
  record->kind = static_cast<Kind>(kind);
  good_ += static_cast<std::int64_t>(kRecordFrame + length);
  return true;
}

std::string encodeAbout(const JournalAbout& about) {
  std::string out;
  putText(&out, about.path);
  putText(&out, about.title);
  put(&out, static_cast<std::uint64_t>(about.format.encoding), 1);
  put(&out, about.format.bom, 1);
  put(&out, static_cast<std::uint64_t>(about.startedNs), 8);
  put(&out, about.stamp ? (about.stamp->exists ? 2 : 1) : 0, 1);
  if (about.stamp) {
    const FileStatus& s = about.stamp->status;
    for (const std::uint64_t number :
         {s.device, s.inode, std::uint64_t(s.mode), std::uint64_t(s.owner), std::uint64_t(s.group), s.links, std::uint64_t(s.size),
          std::uint64_t(s.mtimeNs), std::uint64_t(s.ctimeNs), about.stamp->contentHash})
      put(&out, number, 8);
  }
  if (about.caret >= 0) put(&out, static_cast<std::uint64_t>(about.caret), 8);
  return out;
}

bool decodeAbout(std::string_view payload, JournalAbout* about) {
  Cut cut{payload};
  about->path = cut.bytes(cut.number(4));
  about->title = cut.bytes(cut.number(4));
  const auto encoding = encodingByNumber(cut.number(1));
  const std::uint64_t bom = cut.number(1);
  about->startedNs = static_cast<std::int64_t>(cut.number(8));
  const std::uint64_t stamp = cut.number(1);
  if (!cut.ok || !encoding || bom > 1 || stamp > 2) return false;
  about->format = {*encoding, bom == 1};
  about->stamp.reset();
  about->caret = -1;
  const auto end = [&] {   // journals of earlier versions end here
    if (cut.done()) return true;
    about->caret = static_cast<std::int64_t>(cut.number(8));
    return cut.done() && about->caret >= 0;
  };
  if (stamp == 0) return end();
  FileStamp read;
  read.exists = stamp == 2;
  FileStatus& s = read.status;
  s.device = cut.number(8), s.inode = cut.number(8);
  s.mode = static_cast<std::uint32_t>(cut.number(8));
  s.owner = static_cast<std::uint32_t>(cut.number(8));
  s.group = static_cast<std::uint32_t>(cut.number(8));
  s.links = cut.number(8);
  s.size = static_cast<std::int64_t>(cut.number(8));
  s.mtimeNs = static_cast<std::int64_t>(cut.number(8));
  s.ctimeNs = static_cast<std::int64_t>(cut.number(8));
  read.contentHash = cut.number(8);
  about->stamp = read;
  return end();
}

std::string encodeNumbers(std::initializer_list<std::uint64_t> numbers) {
  std::string out;
  for (const std::uint64_t number : numbers) put(&out, number, 8);
  return out;
}

bool decodeNumbers(std::string_view payload, std::initializer_list<std::uint64_t*> numbers) {
  Cut cut{payload};
  for (std::uint64_t* number : numbers) *number = cut.number(8);
  return cut.done();
}

// A payload: last (1 byte), number of spans (4), for each span position, removed bytes, inserted bytes (8 each), then the inserted
// bytes of all spans. Each span applies to the text after the spans before it.
void encodeChange(const std::vector<Change::Span>& spans, const Snapshot& after,
                  const std::function<void(std::string payload)>& each) {
  constexpr std::size_t kSpan = 24, kRoom = kMostPayload - 5;
  std::string table, bytes;
  std::uint64_t count = 0;
  const auto write = [&](bool last) {
    std::string payload;
    put(&payload, last, 1);
    put(&payload, count, 4);
    each(payload.append(table).append(bytes));
    table.clear(), bytes.clear();
    count = 0;
  };
  for (const Change::Span& span : spans) {
    std::int64_t removed = span.removed;
    for (std::int64_t done = 0; done < span.inserted || (done == 0 && removed > 0);) {
      if (table.size() + bytes.size() + kSpan + 1 > kRoom) write(false);
      const auto room = static_cast<std::int64_t>(kRoom - table.size() - bytes.size() - kSpan);
      const std::int64_t part = std::min(span.inserted - done, room);
      const ByteOffset at = span.begin + done;
      put(&table, static_cast<std::uint64_t>(at.value), 8);
      put(&table, static_cast<std::uint64_t>(removed), 8);
      put(&table, static_cast<std::uint64_t>(part), 8);
      bytes += after.bytes({at, at + part});
      ++count;
      removed = 0;
      done += part;
    }
  }
  write(true);
}

bool applyEdits(std::string_view payload, Document* document, bool* last) {
  Cut cut{payload};
  *last = cut.number(1) == 1;
  const std::uint64_t count = cut.number(4);
  if (!cut.ok || cut.rest.size() / 24 < count) return false;
  Cut bytes{cut.rest.substr(count * 24)};
  std::vector<Edit> edits;
  edits.reserve(count);
  std::int64_t shift = 0, behind = 0;   // size difference of the spans so far; end of the last span in the current text
  const std::int64_t size = document->snapshot().size().value;
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::int64_t at = cut.offset(), removed = cut.offset(), inserted = cut.offset();
    const std::string_view text = bytes.bytes(static_cast<std::uint64_t>(inserted));
    if (!cut.ok || !bytes.ok || at < shift) return false;
    const std::int64_t begin = at - shift;
    if (begin < behind || begin > size || removed > size - begin) return false;
    behind = begin + removed;
    shift += inserted - removed;
    edits.push_back({{ByteOffset(begin), ByteOffset(behind)}, std::string(text)});
  }
  return bytes.done() && document->apply(edits, {});
}

}   // namespace text::journal
