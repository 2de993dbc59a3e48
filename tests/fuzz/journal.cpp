// J3, Q1: whatever bytes stand where a journal should be, reading them ends well; whatever was done to a text comes back.
#include "text/journal/Journal.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/files/CrashFileSystem.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "text/journal/JournalRead.h"

using namespace text;
using fuzz::check;

namespace {

RecoveredText readBytes(std::string bytes) {
  testing_files::CrashFileSystem disk(testing_files::DiskState{{"/j/x.journal", std::move(bytes)}});
  const testing_files::UseFileSystem use(disk);
  const auto left = LeftText::claim("/j", "x.journal");
  if (!left) return {};
  RecoveredText back = left->recover();
  check(back.read <= back.size, "no more is good than there is");
  check(back.error.empty() || back.text.size().value == 0, "an error comes without a text");
  check(!back.whole || back.error.empty(), "whole and failed");
  back.text.checkInvariants();
  return back;
}

// Records with right checksums whose contents are anything.
void contents(fuzz::Input in) {
  journal::Encoder encoder;
  std::string bytes(journal::kMagic);
  const std::string about = journal::encodeAbout({"", "t", {}, {}, 0});
  encoder.add(&bytes, journal::Kind::about, about);
  encoder.add(&bytes, journal::Kind::baseBegin, journal::encodeNumbers({std::uint64_t(in.byte() % 3)}));
  const std::string base(in.take(in.byte()));
  encoder.add(&bytes, journal::Kind::basePart, base);
  encoder.add(&bytes, journal::Kind::baseEnd, journal::encodeNumbers({base.size()}));
  while (!in.empty()) {
    const auto kind = static_cast<journal::Kind>(in.byte() % 8);
    encoder.add(&bytes, kind, in.take(in.byte()));
  }
  readBytes(bytes);
}

void edits(fuzz::Input in) {
  testing_files::CrashFileSystem disk(testing_files::DiskState{{"/d/.keep", ""}});
  const testing_files::UseFileSystem use(disk);
  std::string last;
  {
    std::int64_t now = 0;
    JournalWriter writer("/d/j", [&now] { return now; });
    writer.setLimits({64 << 20, in.byte()});
    Document document;
    Journal journal(writer, document);
    document.reset(Snapshot(std::string(in.take(in.byte())), in.byte() % 2 ? LineMode::cr : LineMode::lf));
    while (!in.empty()) {
      const int what = in.byte() % 8;
      const std::int64_t size = document.snapshot().size().value;
      if (what == 0) document.undo();
      else if (what == 1) document.redo();
      else if (what == 2) now += in.byte() * 20, writer.work();
      else if (what == 3) journal.saved({});
      else if (what == 4) journal.begin();
      else {
        const std::int64_t begin = in.byte() % (size + 1), end = begin + in.byte() % (size - begin + 1);
        document.apply(Edit{{ByteOffset(begin), ByteOffset(end)}, std::string(in.take(in.byte() % 20))}, {});
      }
    }
    journal.begin();
    last = document.snapshot().bytes();
  }
  const auto left = leftJournals("/d/j");
  check(left.size() == 1, "one text has one journal");
  const RecoveredText back = left[0].recover();
  check(back.error.empty() && back.whole, "it is whole");
  check(back.text.bytes() == last, "the text comes back");
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  switch (in.byte() % 3) {
    case 0: readBytes(std::string(in.rest())); break;
    case 1: contents(in); break;
    default: edits(in);
  }
  return 0;
}
