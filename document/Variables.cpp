#include "document/Variables.h"

#include <QClipboard>
#include <QDate>
#include <QGuiApplication>
#include <QLocale>
#include <algorithm>

#ifndef Q_OS_WIN
#include <pwd.h>
#include <unistd.h>
#endif

#include "base/Dialogs.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "document/Statements.h"
#include "document/frmDocument.h"

using namespace Qt::StringLiterals;

namespace variables {

namespace {

QString userName() {
#ifndef Q_OS_WIN
  if (const passwd* entry = ::getpwuid(::getuid())) return QString::fromLocal8Bit(entry->pw_name);
#endif
  return qEnvironmentVariable("USERNAME", qEnvironmentVariable("USER"));
}

QString valueOf(statements::Value value, frmDocument* document, const Answers& answers) {
  using statements::Value;
  switch (value) {
    case Value::name: return document ? document->CurrentFileName() : QString();
    case Value::date: return QLocale().toString(QDate::currentDate(), QLocale::ShortFormat);
    case Value::word: return document ? document->GetCurrentWord() : QString();
    case Value::title: return document ? document->CurrentFileTitle() : QString();
    case Value::stem: return document ? document->CurrentFileTitle().section(u'.', 0, 0) : QString();
    case Value::user: return userName();
    case Value::clip: return QGuiApplication::clipboard() ? QGuiApplication::clipboard()->text() : QString();
    case Value::zelkor: return applicationFolder();
    case Value::path: return document ? GetFileDir(document->CurrentFileName()) : QString();
    case Value::result: return QString::number(answers.result);
    case Value::output: break;
  }
  return {};
}

}  // namespace

void Answers::clear() { *this = {}; }

int Answers::add(const QString& answer) {
  const int slot = next_;
  values_[std::size_t(slot)] = answer;
  next_ = (next_ + 1) % kSlots;
  wrapped_ = wrapped_ || next_ == 0;
  return slot;
}

const QString* Answers::at(qsizetype slot) const {
  return slot >= 0 && slot < (wrapped_ ? kSlots : next_) ? &values_[std::size_t(slot)] : nullptr;
}

void substitute(QString& text, frmDocument* document, const Answers& answers) {
  if (!text.contains(u'$')) return;
  for (const statements::Variable& variable : statements::variables()) {
    const QString name = QString::fromLatin1(variable.name);
    if (!text.contains(name, Qt::CaseInsensitive)) continue;
    if (variable.value == statements::Value::output)
      substituteAnswers(text, answers);
    else
      text.replace(name, valueOf(variable.value, document, answers), Qt::CaseInsensitive);
  }
}

const QString* answerAt(QStringView text, const Answers& answers, qsizetype* length) {
  const QLatin1String name("$Output");
  if (!text.startsWith(name, Qt::CaseInsensitive)) return nullptr;
  qsizetype end = name.size();
  while (end < text.size() && text[end] >= u'0' && text[end] <= u'9') ++end;
  bool good = false;
  const int slot = text.sliced(name.size(), end - name.size()).toInt(&good);
  *length = end;
  return good ? answers.at(slot) : nullptr;
}

void substituteAnswers(QString& text, const Answers& answers) {
  for (qsizetype at = 0; (at = text.indexOf(u'$', at)) >= 0;) {
    qsizetype length = 1;
    const QString* const answer = answerAt(QStringView(text).sliced(at), answers, &length);
    if (answer) text.replace(at, length, *answer);
    at += answer ? answer->size() : 1;
  }
}

bool holdsForeignValue(const QString& text) {
  const auto all = statements::variables();
  return std::ranges::any_of(all, [&](const statements::Variable& variable) {
    return variable.isForeign && text.contains(QLatin1String(variable.name), Qt::CaseInsensitive);
  });
}

void expandPrompts(QString& text, Answers& answers) {
  const QString opener = u"$Input("_s;
  for (qsizetype at = 0; (at = text.indexOf(opener, at, Qt::CaseInsensitive)) >= 0;) {
    const qsizetype end = text.indexOf(u')', at);
    if (end < 0) return;
    const QString prompt = text.mid(at + opener.size(), end - at - opener.size());
    const QString answer = InputBox(prompt, QCoreApplication::translate("mCMXParser", "Input Data")).value_or(QString());
    const QString slot = u"$Output"_s + QString::number(answers.add(answer));
    text.replace(at, end + 1 - at, slot);
    at += slot.size();
  }
}

}  // namespace variables
