#include "app/start/FindArguments.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>

#include "base/Options.h"
#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"
#include "folder/FindInFiles.h"
#include "folder/Walk.h"

namespace {

constexpr int kFound = 0, kNotFound = 1, kTrouble = 2;

constexpr OptionHelp kValues[] = {
    {"--find", "TEXT", QT_TRANSLATE_NOOP("FindArguments", "what to find")},
    {"--mask", "GLOB", QT_TRANSLATE_NOOP("FindArguments", "only files of these names: '*.sv,*.svh'; !*_tb.sv leaves out")},
    {"--limit", "N", QT_TRANSLATE_NOOP("FindArguments", "end after so many hits")},
    {"--threads", "N", QT_TRANSLATE_NOOP("FindArguments", "search with so many threads")},
};
constexpr OptionHelp kSwitches[] = {
    {"--regex", "", QT_TRANSLATE_NOOP("FindArguments", "TEXT is a regular expression; it may go over line ends")},
    {"--word", "", QT_TRANSLATE_NOOP("FindArguments", "whole words only")},
    {"--case", "", QT_TRANSLATE_NOOP("FindArguments", "letter case counts")},
    {"--ignored", "", QT_TRANSLATE_NOOP("FindArguments", "also files that version control ignores")},
    {"--hidden", "", QT_TRANSLATE_NOOP("FindArguments", "also names that begin with a point")},
    {"--binary", "", QT_TRANSLATE_NOOP("FindArguments", "also binary files")},
};

QString tr(const char* text) { return QCoreApplication::translate("FindArguments", text); }

int fail(const std::string& why) {
  std::fprintf(stderr, "zelkor: %s\n", why.c_str());
  return kTrouble;
}

bool number(const Options& given, const char* name, std::int64_t* value, QString* error) {
  if (!given.has(name)) return true;
  bool good = false;
  *value = given.value(name).toLongLong(&good);
  if (!good || *value <= 0) *error = tr("%1 needs a number above 0").arg(QLatin1String(name));
  return error->isEmpty();
}

QString help() {
  QString text = tr("Usage: zelkor --find TEXT [OPTION...] [PATH...]") + QLatin1String("\n\n");
  for (const OptionHelp& option : kValues) text += helpLine(option.name, option.value, tr(option.help), 16);
  for (const OptionHelp& option : kSwitches) text += helpLine(option.name, option.value, tr(option.help), 16);
  text += u'\n' +
          tr("Searches the files named, and those in the folders named; without any, the current folder. Prints\n"
             "path:line:column: text, sorted by path; the column counts characters, from 1. Each further line of a\n"
             "hit over line ends is printed as path:line: text. Files are read in the encoding that opening them\n"
             "would find; what is printed is UTF-8.\n\n"
             "Exit status: 0 found, 1 not found, 2 wrong use, or a file or folder could not be searched.") +
          u'\n';
  return text;
}

// Where to look: a folder's name ends in a slash here, so that all is in the order of whole paths.
struct Place {
  std::string path;
  bool isFolder = false;
  std::string key() const { return isFolder && !path.ends_with('/') ? path + '/' : path; }
};

bool print(const folder::FileFinds& file) {
  std::string rows;
  folder::appendRows(file, &rows);
  return std::fwrite(rows.data(), 1, rows.size(), stdout) == rows.size();
}

}   // namespace

int runFind(const QStringList& arguments) {
  std::vector<OptionRow> options = optionRows(kValues);
  options.push_back({"--help"});
  for (const OptionRow& row : optionRows(kSwitches)) options.push_back(row);
  const Options given = parseCommandLine(arguments, options);
  if (given.isOn("--help")) return std::fputs(qPrintable(help()), stdout) < 0 ? kTrouble : kFound;
  QString error = given.error;
  folder::FindRules rules;
  std::int64_t threads = 0;
  if (error.isEmpty() && number(given, "--limit", &rules.mostHits, &error)) number(given, "--threads", &threads, &error);
  if (!error.isEmpty()) return fail(fromQString(error));
  rules.threads = static_cast<unsigned>(std::min<std::int64_t>(threads, 256));
  rules.read.binary = given.isOn("--binary");
  folder::WalkOptions walk;
  walk.ignored = given.isOn("--ignored");
  walk.hidden = given.isOn("--hidden");
  walk.masks = folder::Masks(fromQString(given.value("--mask")));
  const folder::FindText what(
      fromQString(given.value("--find")),
      {.matchCase = given.isOn("--case"), .wholeWord = given.isOn("--word"), .regex = given.isOn("--regex")});

  bool trouble = false;
  std::vector<Place> places;
  for (const QString& name : given.files()) {
    Place place{fromQString(name)};
    text::FileStatus status;
    if (const int r = text::fileSystem().statAt(text::FileSystem::kCwd, place.path, true, &status); r < 0) {
      fail(place.path + ": " + text::errorText(r));
      trouble = true;
      continue;
    }
    place.isFolder = status.isDirectory();
    while (place.isFolder && place.path.size() > 1 && place.path.ends_with('/')) place.path.pop_back();
    places.push_back(place);
  }
  const bool here = given.files().isEmpty();   // its names are printed without "./"
  if (here) places.push_back({".", true});
  std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.key() < b.key(); });

  text::SearchControl control;
  const auto source = [&](const std::function<bool(folder::FindItem)>& give) {
    for (const Place& place : places) {
      if (control.cancel) return;
      if (!place.isFolder) {
        if (!give({place.path, {}})) return;
        continue;
      }
      // The rules of version control may stand above a folder that is named against the current one.
      const std::string real = fromQString(foldersRealPath(toQString(place.path)));
      const std::string root = real.empty() ? place.path : real;
      const auto named = [&](const std::string& path) {
        const std::string below(folder::belowRoot(root, path));
        return here ? below : below.empty() ? place.path : (place.path.ends_with('/') ? place.path : place.path + '/') + below;
      };
      const auto report = folder::walk(
          root, walk,
          [&](const std::string& path) {
            return give({named(path), {}});
          },
          &control.cancel);
      for (const auto& one : report.troubles) fail(named(one.path) + ": " + one.reason);
      if (!report.error.empty()) fail(place.path + ": " + report.error);
      trouble = trouble || report.unreadable > 0 || !report.error.empty();
    }
  };
  bool printed = true;
  const auto take = [&](const folder::FileFinds& file) {
    if (file.rows.empty() || !printed) return;
    printed = print(file);
    if (!printed) control.cancel = true;
  };
  const folder::FindSummary summary = folder::findInFiles(what, rules, source, take, control);
  if (!summary.error.empty()) return fail(summary.error);
  if (std::fflush(stdout) != 0 || !printed) return fail("standard output cannot be written");
  for (const auto& [path, why] : summary.skippedNames) fail(folder::shownPath(path) + ": " + why);
  const auto told =
      static_cast<std::int64_t>(summary.skippedNames.size()) + summary.skipped[static_cast<std::size_t>(folder::Skipped::binary)];
  if (summary.skippedInAll() > told) fail(folder::skippedText(summary));
  if (summary.cut) fail("ended at the limit of " + std::to_string(rules.mostHits) + " hits");
  trouble = trouble || summary.skippedInAll() > summary.skipped[static_cast<std::size_t>(folder::Skipped::binary)];
  return trouble ? kTrouble : summary.hits > 0 ? kFound : kNotFound;
}
