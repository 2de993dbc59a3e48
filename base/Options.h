// The one parser of options: of the command line ("--name", "--name VALUE", "--name=VALUE") and of the verbs of the command language
// ("name", "name=value").
//
// Options may stand in any order and between other words. A switch is on, or as "=yes" or "=no" says; of two that contradict each
// other the later one holds. An option with a value is given once. Behind "--" a command line has words only.
#pragma once

#include <QString>
#include <QStringList>
#include <span>
#include <vector>

struct OptionRow {
  const char* name;         // with its "--" on a command line; lower case
  const char* value = "";   // what the value is, for the help; empty: a switch
};

struct Options {
  struct Given {
    QString name, value;                                         // value: of a switch "yes" or "no"
    bool isOn() const { return value != QLatin1String("no"); }   // of a switch
  };
  QList<Given> given;   // in order
  QStringList words;    // that are no options, before "--"
  QStringList behind;   // behind "--"
  QString error;        // not empty: nothing else counts

  QStringList files() const { return words + behind; }
  bool isOn(const char* name) const;                                      // a switch; false: not given
  bool has(const char* name) const;                                       // in whatever way
  QString value(const char* name, const QString& otherwise = {}) const;   // otherwise: not given
};

// arguments without the program's name. "-h" is "--help", and where that stands nothing else counts. A value is never empty, and
// behind its option (not behind "=") never the name of an option.
Options parseCommandLine(const QStringList& arguments, std::span<const OptionRow> rows);
// The words of a verb's argument, parted by blanks: options only, their names in any case. A value may be empty.
// quotes: a value in "..." may hold blanks, and \" stands for a quotation mark in it.
Options parseVerb(const QString& argument, std::span<const OptionRow> rows, bool quotes = false);

// A row with what help says of it.
struct OptionHelp {
  const char *name, *value, *help;
};
// Its line in that text, in which the explanations stand in column `width`. help: translated.
QString helpLine(const char* name, const char* value, const QString& help, int width = 24);

// The names and values of a table's rows.
template <typename Rows>
std::vector<OptionRow> optionRows(const Rows& rows) {
  std::vector<OptionRow> all;
  for (const auto& row : rows) {
    if constexpr (requires { row.value; }) all.push_back({row.name, row.value});
    else all.push_back({row.name});
  }
  return all;
}
