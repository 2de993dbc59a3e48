// The file format of a recovery journal: a magic number, then records. A record is type, sequence number (from 0), length of the
// payload, payload, and a checksum over all of these and over the checksum of the previous record. Numbers are little-endian. So a
// journal that was torn, cut, zeroed or altered anywhere is read up to the first damaged record and no further.
//
// Order of the records: about; then base file, or base begin, any number of base parts and base end; then edits, and about again
// whenever it changed. The last record of a change is marked as such.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/file/FileIo.h"
#include "text/store/Document.h"

namespace text {

// What a journal says about its document.
struct JournalAbout {
  std::string path;   // of the file; empty: untitled
  std::string title;
  FileFormat format;
  std::optional<FileStamp> stamp;   // of the file when it was last loaded or saved
  std::int64_t startedNs = 0;       // since the epoch; set by the writer
  std::int64_t caret = -1;          // position of the caret in bytes; -1: unknown
  bool operator==(const JournalAbout&) const = default;
};

namespace journal {

inline constexpr std::string_view kMagic = "ZKJRNL1\n";
inline constexpr std::string_view kSuffix = ".journal", kAsideSuffix = ".new";   // of names in the folder
inline constexpr std::size_t kMostPayload = 1 << 20;                             // of one record
inline constexpr std::size_t kRecordFrame = 4 + 8 + 4 + 8;                       // size of a record without its payload

// The numbers are stored: never renumber.
enum class Kind : std::uint32_t { about = 1, baseFile = 2, baseBegin = 3, basePart = 4, baseEnd = 5, edits = 6 };
constexpr bool isKind(std::uint32_t number) {
  for (const Kind kind : {Kind::about, Kind::baseFile, Kind::baseBegin, Kind::basePart, Kind::baseEnd, Kind::edits})
    if (static_cast<std::uint32_t>(kind) == number) return true;
  return false;
}

// Makes records in sequence.
class Encoder {
 public:
  void add(std::string* out, Kind kind, std::string_view payload);

 private:
  std::uint64_t sequence_ = 0, chain_ = 0;
};

struct Record {
  Kind kind{};
  std::string payload;
};

// Reads records from a stream. `read` returns at most the bytes asked for, 0 at the end, or -errno.
class Decoder {
 public:
  using Read = std::function<std::int64_t(char* to, std::size_t length)>;
  explicit Decoder(Read read) : read_(std::move(read)) {}
  bool magic();                                 // call first; false: not a journal of this version
  bool next(Record* record);                    // false: the end, or a damaged record
  bool clean() const { return clean_; }         // the stream ended directly behind a good record
  std::int64_t good() const { return good_; }   // bytes of the magic number and the good records so far

 private:
  bool fill(std::string* to, std::size_t length);
  Read read_;
  std::uint64_t sequence_ = 0, chain_ = 0;
  std::int64_t good_ = 0;
  bool clean_ = false;
};

std::string encodeAbout(const JournalAbout& about);
bool decodeAbout(std::string_view payload, JournalAbout* about);

std::string encodeNumbers(std::initializer_list<std::uint64_t> numbers);
bool decodeNumbers(std::string_view payload, std::initializer_list<std::uint64_t*> numbers);

// One change of a text as payloads of edits records, in order. `after` is the text after the change.
void encodeChange(const std::vector<Change::Span>& spans, const Snapshot& after,
                  const std::function<void(std::string payload)>& each);
// Applies one edits record to the text; *last: it is the last of its change. False: it does not fit the text, which may then be
// partly changed.
bool applyEdits(std::string_view payload, Document* document, bool* last);

}   // namespace journal
}   // namespace text
