#include "script/Variables.h"

#include <QClipboard>
#include <QDate>
#include <QGuiApplication>
#include <QLocale>
#include <algorithm>

#ifndef Q_OS_WIN
#include <pwd.h>
#include <unistd.h>
#endif

#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "document/frmDocument.h"
#include "script/Statements.h"

using namespace Qt::StringLiterals;

namespace variables {

namespace {

// Ends the name of an answer where a digit behind it would become a part of its number: a character that does not occur in texts.
constexpr QChar kNameEnd(0xFDD0);

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

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

}   // namespace

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
    if (variable.value == statements::Value::output) substituteAnswers(text, answers);
    else text.replace(name, valueOf(variable.value, document, answers), Qt::CaseInsensitive);
  }
}

const QString* answerAt(QStringView text, const Answers& answers, qsizetype* length) {
  const QLatin1String name("$Output");
  if (!text.startsWith(name, Qt::CaseInsensitive)) return nullptr;
  qsizetype end = name.size();
  if (end == text.size() || !isDigit(text[end])) return nullptr;
  int slot = text[end++].unicode() - u'0';
  if (slot > 0 && end < text.size() && isDigit(text[end])) slot = slot * 10 + text[end++].unicode() - u'0';
  if (end < text.size() && text[end] == kNameEnd) ++end;
  *length = end;
  return answers.at(slot);
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
    if (end < 0) break;
    const QString prompt = text.mid(at + opener.size(), end - at - opener.size());
    const QString answer = InputBox(prompt, QCoreApplication::translate("mCMXParser", "Input Data")).value_or(QString());
    QString slot = u"$Output"_s + QString::number(answers.add(answer));
    if (end + 1 < text.size() && isDigit(text[end + 1])) slot += kNameEnd;
    text.replace(at, end + 1 - at, slot);
    at += slot.size();
  }
  // The value of a variable behind a name may begin with a digit.
  for (qsizetype at = 0; (at = text.indexOf(u'$', at)) >= 0;) {
    qsizetype length = 1;
    const bool isAnswer = answerAt(QStringView(text).sliced(at), answers, &length);
    at += isAnswer ? length : 1;
    if (isAnswer && at < text.size() && text[at] == u'$') text.insert(at, kNameEnd);
  }
}

}   // namespace variables
