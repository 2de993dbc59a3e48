// Holds every #include line of the floors and rooms against the order of the house, and the engine against Qt.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>

namespace fs = std::filesystem;

namespace {

// From below; a floor uses itself and what stands before it.
const std::vector<std::string> kFloors{"text", "base",     "bridge",   "settings", "process", "folder", "handoff", "control",
                                       "page", "language", "document", "script",   "change",  "print",  "app"};

// The rooms of a floor and what each uses of the others. What is not here is refused; so is a line that is no longer true.
const std::map<std::string, std::set<std::string>> kRooms{
    {"app", {"app/start"}},
    {"app/boxes", {"app/frame", "app/look"}},
    {"app/commands", {"app/boxes", "app/compare", "app/find", "app/folder", "app/frame", "app/places", "app/session", "app/start"}},
    {"app/compare", {"app/find", "app/frame", "app/look"}},
    {"app/find", {"app/folder", "app/frame"}},
    {"app/folder", {"app/frame", "app/look"}},
    {"app/frame", {"app/boxes", "app/commands", "app/folder", "app/look", "app/places", "app/start"}},
    {"app/look", {}},
    {"app/places", {"app/find", "app/frame"}},
    {"app/session", {"app/boxes", "app/folder", "app/frame"}},
    {"app/start", {"app/boxes", "app/compare", "app/find", "app/folder", "app/frame", "app/look", "app/session"}},
    {"base", {}},
    {"base/dialog", {"base"}},
    {"change", {"change/compare", "change/indent"}},
    {"change/compare", {}},
    {"change/indent", {}},
    {"control", {"control/commands", "control/edit", "control/find", "control/marks", "control/view"}},
    {"control/code", {"control/edit"}},
    {"control/commands", {"control/code", "control/edit", "control/marks"}},
    {"control/complete", {"control", "control/edit", "control/view"}},
    {"control/edit", {"control/code", "control/commands", "control/find", "control/keys"}},
    {"control/find", {"control", "control/commands", "control/edit", "control/keys", "control/view"}},
    {"control/folds", {"control/code", "control/commands", "control/edit", "control/view"}},
    {"control/keys", {"control/commands", "control/edit", "control/find", "control/folds"}},
    {"control/marks", {"control/commands", "control/edit", "control/view"}},
    {"control/options", {"control", "control/code", "control/keys", "control/view"}},
    {"control/shape", {}},
    {"control/view", {"control/code", "control/edit", "control/folds", "control/keys", "control/marks", "control/shape"}},
    {"language/editor", {"language"}},
    {"text/color", {"text/find", "text/line", "text/store"}},
    {"text/diff", {"text/color", "text/line", "text/store"}},
    {"text/display", {"text/line", "text/store"}},
    {"text/file", {"text/find", "text/line", "text/store"}},
    {"text/fold", {"text/color", "text/display", "text/store"}},
    {"text/find", {"text/line", "text/store"}},
    {"text/journal", {"text/file", "text/store"}},
    {"text/line", {"text/store"}},
    {"text/store", {}},
    {"text/words", {"text/line", "text/store"}},
};

fs::path source() {
  const char* folder = std::getenv("ZELKOR_SOURCE");
  EXPECT_NE(folder, nullptr);
  return folder ? folder : "";
}

// Calls look(line, file, room, "file:number: line") for each line of a floor's sources. Returns their number.
template <class Look>
int eachLine(const std::string& floor, Look look) {
  int lines = 0;
  if (!fs::exists(source() / floor)) return 0;
  for (const auto& entry : fs::recursive_directory_iterator(source() / floor)) {
    if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp") continue;
    const std::string room = entry.path().parent_path().lexically_relative(source()).generic_string();
    std::ifstream in(entry.path());
    std::string line;
    for (int number = 1; std::getline(in, line); ++number, ++lines)
      look(line, entry.path().filename().string(), room, entry.path().string() + ":" + std::to_string(number) + ": " + line);
  }
  return lines;
}

}   // namespace

TEST(Architecture, IncludesPointDown) {
  std::map<std::string, std::set<std::string>> allowed;
  std::set<std::string> below;
  for (const auto& floor : kFloors) {
    below.insert(floor);
    allowed[floor] = floor == "base" ? std::set<std::string>{floor} : below;   // text and base stand side by side
  }
  const std::regex include(R"re(^\s*#\s*include\s+[<"](?:([a-z]+)/|(Q)))re");
  int checked = 0;
  for (const auto& [floor, may] : allowed) {
    eachLine(floor, [&, floor = floor, &may = may](const std::string& line, const std::string&, const std::string&,
                                                   const std::string& where) {
      std::smatch m;
      if (!std::regex_search(line, m, include)) return;
      ++checked;
      const bool qtInEngine = floor == "text" && m[2].matched;
      const bool upward = m[1].matched && allowed.count(m[1]) && !may.count(m[1]);
      EXPECT_FALSE(qtInEngine || upward) << where;
    });
  }
  EXPECT_GT(checked, 0);
}

TEST(Architecture, RoomsUseTheRoomsThatTheyMay) {
  const std::regex include(R"re(^\s*#\s*include\s+"([a-z]+)((?:/[a-z]+)*)/\w+\.h")re");
  std::map<std::string, std::set<std::string>> used;
  for (const auto& floor : kFloors) {
    eachLine(floor, [&](const std::string& line, const std::string&, const std::string& room, const std::string&) {
      std::smatch m;
      if (room != floor && kRooms.count(room) == 0) ADD_FAILURE() << "a room that the table does not know: " << room;
      if (!std::regex_search(line, m, include) || m[1] != floor) return;
      const std::string other = m[1].str() + m[2].str();
      if (other != room) used[room].insert(other);
    });
  }
  for (const auto& [room, others] : kRooms) EXPECT_EQ(used[room], others) << room;
  for (const auto& [room, others] : used) EXPECT_TRUE(kRooms.count(room)) << room;
}

// A newcomer finds his way in a folder while it can be seen at a glance.
TEST(Architecture, RoomsStaySmall) {
  for (const auto& floor : kFloors) {
    std::map<std::string, std::set<std::string>> files;
    eachLine(floor, [&](const std::string&, const std::string& file, const std::string& room, const std::string&) {
      files[room].insert(file);
    });
    for (const auto& [room, names] : files) EXPECT_LE(names.size(), 27u) << room;
  }
}

// Files are opened, written, renamed and removed through FileSystem.h only: that is what the tests of saving stand on. Looking
// at files (QFileInfo) and reading the program's own resources (":/...") is all right.
TEST(Architecture, FilesGoThroughTheSeam) {
  const std::regex direct(
      R"re(\bQ(SaveFile|TemporaryFile|Settings|LockFile)\b|\bQFile\s+\w+\s*[({]|\bQFile\s*\(|\bQFile::(?!encodeName|decodeName|exists)\w)re"
      R"re(|\bstd::([io]?fstream|filesystem)\b|\bfopen\s*\(|(^|[^\w>])::(open|openat|creat|unlink|rename|truncate|ftruncate|mkdir)\s*\()re");
  int checked = 0;
  for (const auto& floor : kFloors) {
    checked += eachLine(floor, [&](const std::string& line, const std::string& file, const std::string&, const std::string& where) {
      if (file == "FileSystemPosix.cpp" || file == "FileSystemWindows.cpp") return;
      if (line.find("\":/") != std::string::npos || line.find("files::open") != std::string::npos) return;
      EXPECT_FALSE(std::regex_search(line.substr(0, line.find("//")), direct)) << where;
    });
  }
  EXPECT_GT(checked, 0);
}

// What the windows share stands in the workspace (base/Workspace.h). Variables of the process are these alone.
TEST(Architecture, NoOtherVariablesOfTheProcess) {
  std::set<std::string> known{
      "CopyData.cpp: filter",           // without state; the library asks for the object
      "Editor.cpp: random",             // of each thread, in debug builds
      "FileCalls.cpp: random",          // of each thread
      "FileSystem.cpp: current",        // the disk, exchanged by tests
      "FileSystemPosix.cpp: posix",     // the disk itself, without state
      "FileSystemWindows.cpp: files",   // the same
      "RegistryStore.cpp: file",        // the settings, written when the library ends
      "RegistryWin.cpp: instance",      // the same
      "Save.cpp: folder",               // where a text goes whose disk is full; the engine has no workspace
      "SessionEnd.cpp: pipeEnds",       // a signal handler reaches nothing else
      "Workspace.cpp: inForce",
      "Workspace.cpp: usual",
      "Workspace.h: kind",           // an address
      "mGlobals.cpp: displayOpen",   // the library's message handler reaches nothing else
      "mGlobals.cpp: webHome",
  };
  const std::string type = R"re([\w:*&]+(?:<[^;{}()]*(?:\(\))?[^;{}()]*>)?[\w:*& ]*\s[*&]*)re";
  const std::string name = R"re(([\w:]+)(?:\[\w*\])*\s*(?:;|=(?!=)|\{))re";
  const std::string constant = R"re(constexpr\b|const\b(?!.*\*\s*\w+(?:\[\w*\])*\s*(?:;|=(?!=)|\{)))re";   // not a pointer to such
  const std::regex inside(R"re(^\s*(?:inline\s+)?(?:static|thread_local)\s+(?!(?:inline\s+)?(?:)re" + constant + "))" + type +
                          name);
  const std::regex outside(R"re(^(?!(?:inline\s+)?(?:)re" + constant +
                           R"re(|(?:static|thread_local|namespace|using|class|struct|enum|union)re"
                           R"re(|template|return|extern|typedef|friend|public|private)\b))(?!.*\boperator\b))re" +
                           type + name);
  for (const auto& floor : kFloors) {
    eachLine(floor, [&](const std::string& line, const std::string& file, const std::string&, const std::string& where) {
      std::smatch m;
      const bool isOutside = !line.empty() && line[0] != ' ' && line[0] != '/' && line[0] != '#';
      if (!isOutside && line.find("static") == std::string::npos && line.find("thread_local") == std::string::npos) return;
      if (!std::regex_search(line, m, inside) && !std::regex_search(line, m, outside)) return;
      EXPECT_EQ(known.erase(file + ": " + m[1].str()), 1u) << where;
    });
  }
  for (const auto& gone : known) ADD_FAILURE() << "is no more: " << gone;
}

// A function that nobody calls, or only tests, is kept up for nothing. Counts by name: a function that a header declares has to be named
// somewhere else than where it is declared and defined.
TEST(Architecture, FunctionsHaveACaller) {
  // clang-format off
  const std::map<std::string, std::set<std::string>> needless{
      {"tests exchange or shorten it", {"setApplicationFolder", "setDeadline", "setFileSystem", "setLanguages", "setLimits", "setLockPatience",
                                        "setSizeLimit", "setStore"}},
      {"tests look at it or do what the mouse does", {"isLaidOut", "stretchesRead", "templatePicture"}},
      {"belongs to the interface of its class", {"AddLangText", "ConfigDir", "DeleteKey", "GetComment", "GetCurrentWordLength", "GetLangText",
                                                 "RegisteredLanguageCount", "SearchCaseSensitive", "Visible", "setConfigDir", "setLastReturnValue",
                                                 "setSearchCaseSensitive", "stdHelpFile"}},
      {"the way back of encodeText", {"decodeText"}}};
  // clang-format on
  const auto isWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
  std::map<std::string, std::string> declared;   // with its place
  std::set<std::string> called;
  const std::set<std::string> notTypes{"return", "else", "delete", "throw", "new", "co_return", "case", "emit", "operator"};
  for (const auto& floor : kFloors) {
    eachLine(floor, [&](const std::string& whole, const std::string& file, const std::string&, const std::string& where) {
      const std::string line = whole.substr(0, whole.find("//"));
      const bool inHeader = file.ends_with(".h"), isIndented = !line.empty() && line[0] == ' ';
      bool mayDeclare = inHeader || !isIndented;
      std::string before;   // the word in front
      for (std::size_t i = 0; i < line.size();) {
        if (!isWord(line[i])) {
          if (std::string_view("={.?").find(line[i]) != std::string_view::npos) mayDeclare = false;
          if (std::string_view(" *&>:").find(line[i]) == std::string_view::npos) before.clear();
          ++i;
          continue;
        }
        std::size_t end = i;
        while (end < line.size() && isWord(line[end])) ++end;
        const std::string word = line.substr(i, end - i);
        const bool opens = end < line.size() && line[end] == '(';
        const bool afterType = !before.empty() && !notTypes.count(before);
        const bool scoped = i >= 2 && line.compare(i - 2, 2, "::") == 0;
        if (opens && mayDeclare && afterType && !(inHeader && scoped)) {
          if (inHeader && line.find("override") == std::string::npos && line.find("virtual") == std::string::npos &&
              line.find("operator") == std::string::npos)
            declared.emplace(word, where);
          mayDeclare = false;
        } else {
          called.insert(word);
        }
        before = word;
        i = end;
      }
    });
  }
  for (const auto& [why, names] : needless)
    for (const auto& name : names) {
      EXPECT_TRUE(declared.count(name) && !called.count(name)) << name;
      called.insert(name);
    }
  for (const auto& [name, where] : declared) EXPECT_TRUE(called.count(name)) << where;
}
