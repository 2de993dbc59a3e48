// Takes a command line apart into options and files by the names of its options. Options may stand in any order and between files;
// behind "--" there are only files. A value stands behind its option or behind "=".
#pragma once

#include <QString>
#include <QStringList>

struct Options {
  struct Given {
    QString name, value;   // value: empty of a switch, never of another one
  };
  QList<Given> given;   // in order; one with a value stands here once
  QStringList files;
  QString error;   // not empty: nothing else counts

  bool has(const char* name) const;
  QString value(const char* name) const;   // empty: not given
};

// arguments without the program's name. "-h" is "--help".
Options takeApart(const QStringList& arguments, const QStringList& switches, const QStringList& withValue);

// The names of a table's rows.
template <typename Rows>
QStringList namesOf(const Rows& rows) {
  QStringList names;
  for (const auto& row : rows) names << QString::fromLatin1(row.name);
  return names;
}
