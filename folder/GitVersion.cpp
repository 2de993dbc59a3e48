#include "folder/GitVersion.h"

#include <algorithm>
#include <cstring>

#include "folder/GitFolder.h"
#include "process/Capture.h"
#include "text/file/Decode.h"
#include "text/file/FileCalls.h"

namespace folder {
namespace {

// The first line of what git says, without its "fatal: ".
std::string ownWords(const process::Captured& run) {
  std::string words = run.errors.substr(0, run.errors.find('\n'));
  if (words.starts_with("fatal: ")) words.erase(0, 7);
  return words.empty() ? "git ended with code " + std::to_string(run.exitCode) : words;
}

}   // namespace

text::LoadedFile gitVersion(const std::string& path, const std::string& version, const text::LoadOptions& options,
                            text::SearchControl& control) {
  text::LoadedFile result;
  const auto failed = [&](std::string why) {
    result.error = std::move(why);
    return std::move(result);
  };
  const auto [in, name] = text::files::splitPath(text::savedFile(path));
  if (!gitFolderAbove(in)) return failed("The file is in no working copy of version control (git)");
  if (version.starts_with('-') || version.find_first_of(std::string_view(":\0\n", 3)) != std::string::npos)
    return failed("\"" + version + "\" cannot be the name of a version");

  process::CaptureRules rules;
  rules.cancel = &control.cancel;
  rules.set = {"LC_ALL=C", "GIT_TERMINAL_PROMPT=0", "GIT_OPTIONAL_LOCKS=0", "GIT_NO_LAZY_FETCH=1"};
  // Set where git itself started the editor; they could name another working copy.
  rules.without = {"GIT_DIR",        "GIT_WORK_TREE", "GIT_INDEX_FILE", "GIT_PREFIX", "GIT_OBJECT_DIRECTORY",
                   "GIT_COMMON_DIR", "GIT_NAMESPACE"};
  const std::vector<std::string> git{"git", "--no-pager", "-c", "core.fsmonitor=false", "-C", in};
  const auto run = [&](std::initializer_list<std::string> arguments) {
    std::vector<std::string> all = git;
    all.insert(all.end(), arguments);
    return process::capture(all, rules);
  };
  const process::Captured shown = run({"cat-file", "blob", version + ":./" + name});
  switch (shown.end) {
    case process::Captured::ended: break;
    case process::Captured::notStarted:
      return failed(shown.error == ENOENT ? "The program git is not installed, or not in the search path"
                                          : "The program git cannot be started: " + text::errorText(shown.error));
    case process::Captured::cancelled: return failed("Cancelled");
    case process::Captured::timedOut: return failed("git did not answer within 30 seconds");
    case process::Captured::tooMuch: return failed("The file is too large in this version");
  }
  if (shown.exitCode != 0) {
    const process::Captured known = version.empty() ? shown : run({"rev-parse", "--verify", "--quiet", version + "^{tree}"});
    const process::Captured tree = run({"rev-parse", "--git-dir"});
    if (tree.exitCode != 0) return failed(ownWords(tree));   // such as a folder of another owner
    if (version.empty()) {
      const process::Captured unmerged = run({"--literal-pathspecs", "ls-files", "--unmerged", "--", name});
      return failed(unmerged.output.empty() ? "Version control does not track this file"
                                            : "The file has a conflict that is not resolved: no version of it is staged");
    }
    if (known.exitCode != 0) return failed("Version control has no version \"" + version + "\"");
    return failed("The version \"" + version + "\" does not hold this file");
  }
  const auto bytes = std::make_shared_for_overwrite<char[]>(std::max<std::size_t>(shown.output.size(), 1));
  std::memcpy(bytes.get(), shown.output.data(), shown.output.size());
  result = text::decodeFile(bytes, shown.output.size(), options);
  // It may have had another encoding then.
  return result.error.empty() || !options.format ? std::move(result) : text::decodeFile(bytes, shown.output.size());
}

}   // namespace folder
