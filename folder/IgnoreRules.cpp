#include "folder/IgnoreRules.h"

#include <algorithm>
#include <mutex>

#include "folder/GitFolder.h"
#include "folder/Glob.h"
#include "text/file/FileIo.h"

namespace folder {
namespace {

constexpr std::size_t kRulesLimit = 64 << 20;

std::string folded(std::string_view s) {
  std::string out(s);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return out;
}

// Blanks at the end of a line do not count, unless a backslash stands before them.
std::string_view withoutEndBlanks(std::string_view line) {
  std::size_t end = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\\') {
      if (++i >= line.size()) return line;
      end = i + 1;
    } else if (line[i] != ' ') {
      end = i + 1;
    }
  }
  return line.substr(0, end);
}

RuleList rulesIn(const std::string& file, bool foldCase) {
  text::FileStatus status;
  if (text::fileSystem().statAt(text::FileSystem::kCwd, file, true, &status) < 0 || !status.isRegular()) return {};
  std::string error;
  const std::string bytes = text::readBytes(file, &error, kRulesLimit);
  return error.empty() ? RuleList(bytes, foldCase) : RuleList();
}

std::string_view below(const std::string& folder, std::string_view path) {
  return path.substr(std::min(path.size(), folder == "/" ? 1 : folder.size() + 1));
}

}   // namespace

RuleList::RuleList(std::string_view bytes, bool foldCase) : foldCase_(foldCase) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
    if (line.starts_with('#')) continue;
    if (line.ends_with('\r')) line.remove_suffix(1);
    add(withoutEndBlanks(line.substr(0, line.find('\0'))));
  }
}

void RuleList::add(std::string_view line) {
  const bool wanted = line.starts_with('!');
  if (wanted) line.remove_prefix(1);
  Rule rule;
  rule.onlyFolders = line.ends_with('/');
  if (rule.onlyFolders) line.remove_suffix(1);
  if (line.empty()) return;
  rule.number = count_++;
  wanted_.push_back(wanted);
  rule.wholePath = line.find('/') != std::string_view::npos;
  if (line.starts_with('/')) line.remove_prefix(1);
  rule.pattern = line;
  const std::size_t literal = literalLength(line);
  const std::string_view suffix = line.starts_with("*.") ? line.substr(2) : std::string_view();
  const bool bySuffix = !suffix.empty() && suffix.find('.') == std::string_view::npos && literalLength(suffix) == suffix.size();
  if (rule.wholePath || (literal < line.size() && !bySuffix)) {
    rules_.push_back(std::move(rule));
    return;
  }
  Last& last =
      (bySuffix ? suffixes_ : names_)[foldCase_ ? folded(bySuffix ? suffix : line) : std::string(bySuffix ? suffix : line)];
  (rule.onlyFolders ? last.folders : last.any) = rule.number;
}

bool RuleList::fits(const Rule& rule, std::string_view path, std::string_view name) const {
  return globMatches(rule.pattern, rule.wholePath ? path : name, foldCase_);
}

Verdict RuleList::of(std::string_view path, bool isFolder) const {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  int best = -1;
  const auto look = [&](const Index& index, std::string_view key) {
    if (index.empty()) return;
    const auto at = foldCase_ ? index.find(folded(key)) : index.find(key);
    if (at != index.end()) best = std::max({best, at->second.any, isFolder ? at->second.folders : -1});
  };
  look(names_, name);
  if (const auto dot = name.rfind('.'); dot != std::string_view::npos) look(suffixes_, name.substr(dot + 1));
  for (auto rule = rules_.rbegin(); rule != rules_.rend() && rule->number > best; ++rule) {
    if ((rule->onlyFolders && !isFolder) || !fits(*rule, path, name)) continue;
    best = rule->number;
    break;
  }
  return best < 0 ? Verdict::none : wanted_[static_cast<std::size_t>(best)] ? Verdict::wanted : Verdict::ignored;
}

struct IgnoreRules::Repository {
  GitFolder git;
  GitSettings settings;
  RuleList excluded, users;
  std::once_flag once;
  TrackedFiles files;   // read when the first rule fits

  explicit Repository(GitFolder folder) : git(std::move(folder)), settings(gitSettings(git)) {
    excluded = rulesIn(git.shared + "/info/exclude", settings.foldCase);
    if (!settings.excludesFile.empty()) users = rulesIn(settings.excludesFile, settings.foldCase);
  }
  const TrackedFiles& tracked() {
    std::call_once(once, [this] { files = TrackedFiles::read(git, settings.hashBytes); });
    return files;
  }
};

void IgnoreRules::enter(const std::string& folder, bool hasGit) {
  if (!hasGit) return;
  if (auto git = gitFolderIn(folder)) {
    repository_ = std::make_shared<Repository>(std::move(*git));
    level_ = nullptr;   // the rules of an outer repository end here
  }
}

void IgnoreRules::addRules(const std::string& folder) {
  RuleList rules = rulesIn((folder == "/" ? std::string() : folder) + "/.gitignore", repository_ && repository_->settings.foldCase);
  if (!rules.empty()) level_ = std::make_shared<const Level>(Level{level_, folder, std::move(rules)});
}

IgnoreRules IgnoreRules::in(const std::string& folder) {
  IgnoreRules rules;
  std::string at = folder;
  if (auto git = gitFolderAbove(folder)) {
    at = git->top;
    rules.repository_ = std::make_shared<Repository>(std::move(*git));
  }
  for (;;) {   // from the top of the work tree down
    rules.addRules(at);
    if (at.size() >= folder.size()) return rules;
    const std::size_t slash = folder.find('/', at == "/" ? 1 : at.size() + 1);
    at = folder.substr(0, slash);
  }
}

IgnoreRules IgnoreRules::inside(const std::string& folder, bool hasRules, bool hasGit) const {
  IgnoreRules rules = *this;
  rules.enter(folder, hasGit);
  if (hasRules) rules.addRules(folder);
  return rules;
}

bool IgnoreRules::tracked(const std::string& path) const {
  return repository_ && repository_->tracked().has(below(repository_->git.top, path));
}

bool IgnoreRules::tracksBelow(const std::string& folder) const {
  return repository_ && repository_->tracked().hasBelow(below(repository_->git.top, folder));
}

bool IgnoreRules::ignores(const std::string& path, bool isFolder) const {
  Verdict verdict = Verdict::none;
  for (const Level* level = level_.get(); level && verdict == Verdict::none; level = level->above.get())
    verdict = level->rules.of(below(level->folder, path), isFolder);
  if (repository_) {
    const std::string_view inTop = below(repository_->git.top, path);
    if (verdict == Verdict::none) verdict = repository_->excluded.of(inTop, isFolder);
    if (verdict == Verdict::none) verdict = repository_->users.of(inTop, isFolder);
  }
  return verdict == Verdict::ignored && !tracked(path);   // a folder that is tracked is a repository of its own
}

}   // namespace folder
