// What version control ignores: .gitignore of each folder, .git/info/exclude and the user's own file, with the whole language of
// their rules. Decided: a file that is tracked is never ignored, whatever the rules say, as version control itself has it; a folder
// without version control follows the .gitignore files in it all the same, and a folder that the user names is not ignored itself.
//
// Values are cheap to copy and may be read by several threads. Paths are absolute bytes without a slash at their end.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace folder {

enum class Verdict { none, ignored, wanted };   // wanted: a rule with "!"

// The rules of one file. The last one that fits a name decides.
class RuleList {
 public:
  RuleList() = default;
  RuleList(std::string_view bytes, bool foldCase);
  bool empty() const { return count_ == 0; }
  // path: below the folder that the rules belong to.
  Verdict of(std::string_view path, bool isFolder) const;

 private:
  struct Rule {
    std::string pattern;
    int number = 0;   // place in the file
    bool onlyFolders = false, wholePath = false;
  };
  struct Last {   // rule that names the same: the last for all, the last for folders only; -1 none
    int any = -1, folders = -1;
  };
  using Index = std::map<std::string, Last, std::less<>>;
  void add(std::string_view line);
  bool fits(const Rule& rule, std::string_view path, std::string_view name) const;

  std::vector<Rule> rules_;    // that have to be tried one by one
  Index names_, suffixes_;     // plain names; and "*.o" by what is behind the point
  std::vector<bool> wanted_;   // of each rule by number
  int count_ = 0;
  bool foldCase_ = false;
};

class IgnoreRules {
 public:
  IgnoreRules() = default;   // nothing is ignored
  // Those that hold in a folder: of itself, and up to the top of its work tree.
  static IgnoreRules in(const std::string& folder);
  // Those that hold in a folder inside. hasRules, hasGit: what is in it (".gitignore", ".git"); so no look is needed.
  IgnoreRules inside(const std::string& folder, bool hasRules, bool hasGit) const;

  bool ignores(const std::string& path, bool isFolder) const;   // a tracked file is not
  bool tracked(const std::string& path) const;
  bool tracksBelow(const std::string& folder) const;   // so an ignored folder is looked into for them

 private:
  struct Repository;
  struct Level {
    std::shared_ptr<const Level> above;
    std::string folder;
    RuleList rules;
  };
  void enter(const std::string& folder, bool hasGit);
  void addRules(const std::string& folder);
  std::shared_ptr<const Level> level_;
  std::shared_ptr<Repository> repository_;
};

}   // namespace folder
