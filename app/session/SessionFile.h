// What a session keeps, and its file: text that a person can read, in the state folder. It never holds the text of a document; an unsaved
// text stands in its recovery journal, which the session names.
//
// Two generations of the file are kept, and each is renamed only after it is on the disk. Whatever a file holds, reading it ends
// normally and costs at most the arrangement.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/file/FileCalls.h"

using KeptPlace = std::array<std::int64_t, 4>;   // x, y, width, height

struct KeptDocument {
  std::string path;    // whole; empty: no file
  std::string title;   // of a document without a file
  bool modified = false;
  std::string journal;                   // of a modified one: the name of its journal in the recovery folder; empty: not known
  std::int64_t text = 0;                 // windows with the same number, not 0, show one text
  std::optional<std::string> language;   // chosen by the user; empty: none
  std::optional<std::string> encoding;   // the same
  bool bom = false;                      // of that encoding
  bool readOnly = false;
  std::array<std::int64_t, 4> selection{};   // line and column of the anchor, then of the caret, from 0
  bool columns = false;                      // it is a column selection
  std::int64_t top = 0;                      // the first line shown
  std::vector<std::int64_t> folds;           // the number of lines, then of each fold its first line and the number of hidden ones
  std::int64_t zoom = 100;                   // percent
  bool wrapSwitched = false;                 // lines are wrapped although the options do not say so, or the other way round
  std::array<std::int64_t, 2> bars{};        // of the splitters, in thousandths of height and width; 0: none
  std::int64_t state = 0;                    // of the window, see windowstate
  std::int64_t level = 0;                    // its place in the pile of windows; 0: the lowest
  KeptPlace place{};                         // when it is neither maximised nor minimised
  std::vector<std::int64_t> bookmarks;       // lines, of a document without a file; those of files are kept by themselves
  bool operator==(const KeptDocument&) const = default;
};

struct KeptDock {
  std::string name;
  bool shown = false, floats = false;
  std::int64_t area = 0;   // Qt::DockWidgetArea
  KeptPlace place{};
  bool operator==(const KeptDock&) const = default;
};

struct SessionState {
  std::vector<KeptDocument> documents;   // in the order of the tabs
  std::int64_t active = -1;              // its index; -1: none
  std::string continues;                 // of the last session: the named one that was open
  std::string folder, list;              // the work folder; of a file list: its working folder and its name
  bool relativeToList = false;
  std::string find, replace;   // fields and switches of the search
  bool matchCase = false, wholeWord = false, regex = false, preserveCase = false;
  std::vector<KeptDock> docks;
  bool operator==(const SessionState&) const = default;
};

class SessionFile {
 public:
  static constexpr std::size_t kMostDocuments = 2'000, kMostBytes = 16 << 20;
  enum class Parsed { good, damaged, later };   // later: written by a later version of the program

  explicit SessionFile(std::string path) : path_(std::move(path)) {}

  const std::string& path() const { return path_; }
  bool exists() const;
  // False: another copy of the program has it. It stays owned until this object goes. Without a lock file, as on a disk that is full,
  // it counts as owned.
  bool own();
  void release() { lock_.close(); }   // now, though others may still hold this object

  struct Read {
    SessionState state;
    std::string trouble;      // for the user; empty: none
    bool mayWrite = true;     // false: the file must stay as it is
    bool isThere = false;     // a state was read, which is the one before if there is trouble as well
    bool isPartial = false;   // more documents than kMostDocuments were named
  };
  Read read();   // a file that does not exist is an empty session
  // Does nothing if the file holds this state, or if a state with a higher number was written. On any thread. Empty: done; else why not.
  std::string write(const SessionState& state, std::uint64_t number);
  int remove();   // 0 or -errno

  // Of a named session, in the folder of sessions.
  static std::string fileNameOf(std::string_view name);
  static std::optional<std::string> nameOf(std::string_view fileName);   // of either generation; nullopt: not the file of a session

  static std::string format(const SessionState& state);
  static Parsed parse(std::string_view bytes, SessionState* state, bool* isPartial);

 private:
  const std::string path_;
  text::files::Descriptor lock_;
  std::mutex writing_;
  std::string written_;
  std::uint64_t number_ = 0;   // of what was written last
  bool isDamaged_ = false;     // the file on the disk: it is not to become the older generation
};
