// Cases as lines of a file: a word, the text before, the text after, and what else counts, as NAME or NAME=value. Texts stand between
// quotation marks, with caret and selection (tests/support/Caret.h); \n \r \t \" \\ and \xHH stand for those bytes.
#pragma once

#include <gtest/gtest.h>

#include <QString>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

struct Case {
  std::string command, before, after;
  std::map<std::string, std::string> more;
  bool has(const char* name) const { return more.count(name) > 0; }
  QString text(const char* name) const { return has(name) ? QString::fromStdString(more.at(name)) : QString(); }
  int number(const char* name, int otherwise) const { return has(name) ? text(name).toInt() : otherwise; }
};

// Takes a word, or what stands between quotation marks, off a line.
inline std::string take(std::string_view& line) {
  std::string out;
  const bool quoted = line.starts_with('"');
  std::size_t i = quoted;
  for (; i < line.size() && (quoted ? line[i] != '"' : line[i] != ' ' && line[i] != '='); ++i) {
    const std::size_t escape = quoted && line[i] == '\\' ? std::string_view("nrtx").find(line[++i]) : std::string_view::npos;
    if (escape == 3) out += static_cast<char>(std::stoi(std::string(line.substr(i + 1, 2)), nullptr, 16)), i += 2;
    else out += escape < 3 ? "\n\r\t"[escape] : line[i];
  }
  line.remove_prefix(std::min(line.size(), i + quoted));
  return out;
}

// Those of a file, whose lines name nothing else than what is known.
inline std::vector<Case> casesOf(const std::string& name, const std::set<std::string>& known) {
  std::ifstream file(std::string(std::getenv("ZELKOR_SOURCE")) + "/tests/control/" + name);
  std::vector<Case> all;
  for (std::string row; std::getline(file, row);) {
    if (row.starts_with('#')) continue;
    std::string_view line = row;
    const auto next = [&line] {
      line.remove_prefix(std::min(line.find_first_not_of(" ="), line.size()));
      return take(line);
    };
    Case& c = all.emplace_back(Case{next(), next(), next(), {}});
    while (!line.empty()) {
      const std::string what = next();
      EXPECT_TRUE(known.contains(what)) << row;
      c.more[what] = line.starts_with('=') ? next() : std::string();
    }
  }
  EXPECT_FALSE(all.empty()) << name;
  return all;
}
