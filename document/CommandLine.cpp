#include "document/CommandLine.h"

#include <QFileInfo>
#include <cerrno>

#include "control/TextModel.h"

QStringList splitCommandLine(const QString& line) {
  QStringList words;
  QString word;
  QChar quote;
  bool inWord = false;
  for (qsizetype i = 0; i < line.size(); ++i) {
    const QChar c = line[i];
    if (c == u'\\' && quote != u'\'') {
      qsizetype run = i;
      while (run < line.size() && line[run] == u'\\') ++run;
      const qsizetype count = run - i;
      const bool beforeQuote = run < line.size() && line[run] == u'"';
      word += QString(beforeQuote ? count / 2 : count, u'\\');
      i = run - 1;
      if (beforeQuote && count % 2) {
        word += u'"';
        ++i;
      }
      inWord = true;
    } else if (!quote.isNull()) {
      if (c == quote)
        quote = {};
      else
        word += c;
    } else if (c == u'"' || c == u'\'') {
      quote = c;
      inWord = true;
    } else if (c == u' ' || c == u'\t' || c == u'\r' || c == u'\n') {
      if (inWord) words << word;
      word.clear();
      inWord = false;
    } else {
      word += c;
      inWord = true;
    }
  }
  if (inWord) words << word;
  return words;
}

std::vector<std::string> programArguments(const QString& line, const std::function<void(QString&)>& substitute) {
  std::vector<std::string> arguments;
  for (QString& word : splitCommandLine(line)) {
    if (substitute) substitute(word);
    arguments.push_back(fromQString(word));
  }
  return arguments;
}

int findProgram(const std::string& name, const std::string& searchPath, std::string* file) {
  const auto runnable = [&](const std::string& path) {
    const QFileInfo info(QString::fromLocal8Bit(path.data(), qsizetype(path.size())));
    if (!info.isFile()) return ENOENT;
    return info.isExecutable() ? 0 : EACCES;
  };
  if (name.empty()) return ENOENT;
#ifdef _WIN32
  const char separator = ';';
  const bool isPath = name.find_first_of("/\\") != std::string::npos;
#else
  const char separator = ':';
  const bool isPath = name.find('/') != std::string::npos;
#endif
  if (isPath) {
    *file = name;
    return runnable(name);
  }
  int error = ENOENT;
  for (std::size_t begin = 0; begin <= searchPath.size();) {
    const std::size_t end = std::min(searchPath.find(separator, begin), searchPath.size());
    const std::string folder = searchPath.substr(begin, end - begin);
    begin = end + 1;
    if (!QFileInfo(QString::fromLocal8Bit(folder.data(), qsizetype(folder.size()))).isAbsolute()) continue;
    const std::string path = folder + '/' + name;
    const int found = runnable(path);
    if (found == 0) {
      *file = path;
      return 0;
    }
    if (found == EACCES) error = EACCES;
  }
  return error;
}
