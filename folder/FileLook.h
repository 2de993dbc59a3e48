// One file for a search over many: read whole, never mapped, and decoded as opening it would. What cannot be searched says why.
// Only regular files are read, however a name leads to something else; nothing here waits for a pipe or touches a device.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "text/file/FileIo.h"
#include "text/find/Needles.h"

namespace folder {

enum class Skipped : unsigned char { none, binary, tooLarge, noRights, vanished, notRegular, linkLoop, gaveUp, unreadable };
inline constexpr int kSkippedKinds = 9;
const char* reason(Skipped skipped);   // "binary", "no rights" ...: what a count of such files is followed by

// Which file it is, whatever its name: device and number.
using FileNumber = std::pair<std::uint64_t, std::uint64_t>;

struct ReadRules {
  std::int64_t largest = 0;                         // bytes; 0: an eighth of this computer's memory
  bool binary = false;                              // binary files too
  std::map<FileNumber, text::Snapshot> openTexts;   // stand for these files; must not change while files are read
};

// Reads one file after the other into the same memory; one for each thread.
class FileLook {
 public:
  explicit FileLook(const ReadRules& rules);

  struct Text {
    Skipped skipped = Skipped::none;
    std::string why;                      // skipped: the system's own words where it has some
    std::optional<text::Snapshot> text;   // none though not skipped: no match can stand in it
    std::int64_t bytes = 0;               // that were read
  };
  // The text of the file, unless its bytes hold none of the needles.
  Text read(const std::string& path, const text::Needles& needles);

 private:
  int fill(int fd, std::int64_t expected, std::size_t* length);
  const ReadRules& rules_;
  std::int64_t largest_;
  std::shared_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;
};

}   // namespace folder
