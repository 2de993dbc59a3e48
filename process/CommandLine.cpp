#include "process/CommandLine.h"

#include <QDir>
#include <cerrno>

#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"

namespace {

// A part of a word. A "$" inside a value is an ordinary character.
struct Stretch {
  QString text;
  bool isValue = false;
};
using Word = std::vector<Stretch>;

class Splitter {
 public:
  std::vector<Word> words;

  // value: the text that replaces a variable. A quotation that starts in it ends with it.
  void feed(QStringView text, const ValueAt& typedAt, bool isValue = false) {
    for (qsizetype i = 0; i < text.size(); ++i) {
      const QChar c = text[i];
      if (c == u'\\' && quote_ != u'\'') {
        qsizetype run = i;
        while (run < text.size() && text[run] == u'\\') ++run;
        const qsizetype count = run - i;
        const bool beforeQuote = run < text.size() && text[run] == u'"';
        add(QString(beforeQuote ? count / 2 : count, u'\\'), isValue);
        i = run - 1;
        if (!beforeQuote || count % 2 == 0) continue;
        add(u"\"", isValue);
        ++i;
      } else if (!quote_.isNull()) {
        if (c == quote_) quote_ = {};
        else add(QStringView(&c, 1), isValue);
      } else if (c == u'"' || c == u'\'') {
        quote_ = c;
        add({}, isValue);
      } else if (c == u' ' || c == u'\t' || c == u'\r' || c == u'\n') {
        inWord_ = false;
      } else {
        qsizetype length = 0;
        const QString* const typed = c == u'$' && typedAt ? typedAt(text.sliced(i), &length) : nullptr;
        if (typed) {
          feed(*typed, {}, true);
          quote_ = {};
          i += length - 1;
        } else {
          add(QStringView(&c, 1), isValue);
        }
      }
    }
  }

 private:
  void add(QStringView text, bool isValue) {
    if (!inWord_) words.emplace_back();
    inWord_ = true;
    Word& word = words.back();
    if (word.empty() || word.back().isValue != isValue) word.push_back({{}, isValue});
    word.back().text += text;
  }

  QChar quote_;
  bool inWord_ = false;
};

}   // namespace

QStringList programArguments(const QString& line, const std::function<void(QString&)>& substitute, const ValueAt& typedAt) {
  Splitter splitter;
  splitter.feed(line, typedAt);
  QStringList arguments;
  for (Word& word : splitter.words) {
    QString argument;
    for (Stretch& stretch : word) {
      if (substitute && !stretch.isValue) substitute(stretch.text);
      argument += stretch.text;
    }
    arguments << argument;
  }
  return arguments;
}

int findProgram(const std::string& name, const std::string& searchPath, std::string* file) {
  const auto runnable = [&](const std::string& path) {
    const QString program = toQString(path);
    return isRunnable(program) ? 0 : isRegularFile(program) ? EACCES : ENOENT;
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
    if (!QDir::isAbsolutePath(toQString(folder))) continue;
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
