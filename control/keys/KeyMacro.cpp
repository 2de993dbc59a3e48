#include "control/keys/KeyMacro.h"

#include <QCoreApplication>
#include <algorithm>
#include <optional>
#include <tuple>

#include "base/Workspace.h"
#include "bridge/QStringBytes.h"
#include "control/edit/EditorAccess.h"
#include "control/find/Finding.h"
#include "control/find/UsersSearch.h"
#include "control/keys/KeyCommands.h"
#include "control/keys/KeyMap.h"

namespace {

// A recording that plays other macros could grow without limit.
constexpr std::size_t kMostSteps = 10000;

const Command& named(const char* name) { return *anyCommandByName(QString::fromLatin1(name)); }

bool isOneOf(const Command& command, std::initializer_list<const char*> names) {
  return std::any_of(names.begin(), names.end(), [&](const char* name) { return qstrcmp(command.name, name) == 0; });
}

QString quoted(const QString& text) {
  QString result(u'"');
  for (const QChar c : text) {
    const char16_t u = c.unicode();
    if (u == '\\' || u == '"') result += QString(u'\\') + c;
    else if (u == '\t') result += QStringLiteral("\\t");
    else if (u == '\n') result += QStringLiteral("\\n");
    else if (u == '\r') result += QStringLiteral("\\r");
    else if ((!c.isPrint() && !c.isSurrogate()) || isBadByte(u)) result += QStringLiteral("\\u%1").arg(u, 4, 16, QLatin1Char('0'));
    else result += c;
  }
  return result + u'"';
}

std::optional<QString> unquoted(QStringView text) {
  if (text.size() < 2 || !text.startsWith(u'"') || !text.endsWith(u'"')) return std::nullopt;
  text = text.sliced(1, text.size() - 2);
  QString result;
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i] == u'"') return std::nullopt;
    if (text[i] != u'\\') {
      result += text[i];
      continue;
    }
    if (++i >= text.size()) return std::nullopt;
    switch (text[i].unicode()) {
      case '\\':
      case '"': result += text[i]; break;
      case 't': result += u'\t'; break;
      case 'n': result += u'\n'; break;
      case 'r': result += u'\r'; break;
      case 'u': {
        bool ok = i + 4 < text.size();
        const ushort code = ok ? text.sliced(i + 1, 4).toUShort(&ok, 16) : 0;
        if (!ok) return std::nullopt;
        result += QChar(code);
        i += 4;
        break;
      }
      default: return std::nullopt;
    }
  }
  return result;
}

// Parses a line of the text form; no value: it is invalid.
std::optional<KeyMacroStep> stepOf(const QString& line) {
  const qsizetype blank = line.indexOf(u' ');
  const QString name = blank < 0 ? line : line.left(blank), rest = blank < 0 ? QString() : line.mid(blank + 1).trimmed();
  if (name.compare(QLatin1String("TYPE"), Qt::CaseInsensitive) == 0) {
    const auto text = unquoted(rest);
    return text ? std::optional(KeyMacroStep{0, *text}) : std::nullopt;
  }
  const Command* command = anyCommandByName(name);
  if (!command || isOneOf(*command, {"MACRORECORD", "MACROPLAY"})) return std::nullopt;
  if (command->argument == CommandArgument::none || rest.isEmpty())
    return rest.isEmpty() ? std::optional(KeyMacroStep{command->id, {}}) : std::nullopt;
  if (command->argument == CommandArgument::text) {
    const auto text = unquoted(rest);
    return text ? std::optional(KeyMacroStep{command->id, *text}) : std::nullopt;
  }
  bool ok = false;
  const qlonglong number = rest.toLongLong(&ok);
  return ok ? std::optional(KeyMacroStep{command->id, number}) : std::nullopt;
}

QString lineOf(const KeyMacroStep& step) {
  const Command* command = anyCommandById(step.command);
  if (!command) return QStringLiteral("TYPE ") + quoted(step.argument.toString());
  const QString name = QString::fromLatin1(command->name);
  if (command->argument == CommandArgument::none || !step.argument.isValid()) return name;
  return name + u' ' +
         (command->argument == CommandArgument::text ? quoted(step.argument.toString())
                                                     : QString::number(step.argument.toLongLong()));
}

}   // namespace

bool KeyMacros::goodName(const QString& name) {
  return !name.trimmed().isEmpty() && name == name.trimmed() &&
         std::none_of(name.begin(), name.end(), [](QChar c) { return c == u']' || c.unicode() < 0x20 || c == u'\u2028'; });
}

QStringList KeyMacros::names() const {
  QStringList names;
  for (const KeyMacro& macro : macros_) names += macro.name;
  return names;
}

const KeyMacro* KeyMacros::find(const QString& name) const {
  const auto it = std::find_if(macros_.begin(), macros_.end(), [&](const KeyMacro& m) { return m.name == name; });
  return it == macros_.end() ? nullptr : &*it;
}

bool KeyMacros::set(KeyMacro macro) {
  if (!goodName(macro.name)) return false;
  if (KeyMacro* old = const_cast<KeyMacro*>(find(macro.name))) *old = std::move(macro);
  else macros_.push_back(std::move(macro));
  return true;
}

void KeyMacros::remove(const QString& name) {
  for (const QKeySequence& keys : keyMap().keysOf({0, name})) keyMap().bind(keys, {});
  std::erase_if(macros_, [&](const KeyMacro& m) { return m.name == name; });
  if (current_ == name) current_.clear();
}

bool KeyMacros::rename(const QString& name, const QString& to) {
  KeyMacro* macro = const_cast<KeyMacro*>(find(name));
  if (!macro || !goodName(to) || find(to)) return false;
  for (const QKeySequence& keys : keyMap().keysOf({0, name})) keyMap().bind(keys, {0, to});
  macro->name = to;
  if (current_ == name) current_ = to;
  return true;
}

void KeyMacros::toggleRecording() {
  recording_ = !recording_;
  if (recording_) {
    recorded_ = {};
    for (QString& noted : noted_) noted = QString();
    return tell(QCoreApplication::translate("KeyMacros", "Keystrokes are being recorded"));
  }
  if (recorded_.steps.empty()) return tell(QCoreApplication::translate("KeyMacros", "Nothing was recorded"));
  for (int n = 1; recorded_.name.isEmpty() || find(recorded_.name); ++n) recorded_.name = QStringLiteral("Macro %1").arg(n);
  current_ = recorded_.name;
  set(std::move(recorded_));
  if (onRecorded) onRecorded();
  tell(QCoreApplication::translate("KeyMacros", "Recorded as \"%1\"").arg(current_));
}

void KeyMacros::tell(const QString& what) const {
  if (onRecording) onRecording(what);
}

void KeyMacros::noteCommand(Editor& editor, int id, const QVariant& argument) {
  const Command* command = anyCommandById(id);
  // Commands that show a window or control the recording are not replayed.
  if (!recording_ || !command || recorded_.steps.size() >= kMostSteps ||
      isOneOf(*command, {"MACRORECORD", "MACROPLAY", "FIND", "FINDREPLACE", "COMPLETEWORD"}) ||
      (isOneOf(*command, {"PASTEHISTORY"}) && !argument.isValid()))
    return;
  const auto noteText = [this](const char* setter, QString& noted, const QString& now) {
    if (noted == now && !noted.isNull()) return;
    noted = now.isNull() ? QStringLiteral("") : now;
    recorded_.steps.push_back({named(setter).id, noted});
  };
  const bool replaces = isOneOf(*command, {"REPLACE", "REPLACEALLINBUFFER", "REPLACEALLINSELECTION"});
  const bool findsText = replaces || isOneOf(*command, {"FINDNEXT", "FINDPREV", "FINDMARKALL", "FINDSELECTALL"});
  if (findsText) noteText("SETFINDTEXT", noted_[0], usersSearch().findText);
  if (replaces) noteText("SETREPLACETEXT", noted_[1], usersSearch().replaceText);
  if (findsText || isOneOf(*command, {"FINDNEXTWORD", "FINDPREVWORD"}))
    noteText("SETFINDOPTIONS", noted_[2], findSwitches(editor, searchState()));
  for (int i = 0; const char* setter : {"SETFINDTEXT", "SETREPLACETEXT", "SETFINDOPTIONS"}) {
    if (isOneOf(*command, {setter})) noted_[i] = argument.toString();
    ++i;
  }
  recorded_.steps.push_back({id, argument});
}

void KeyMacros::noteText(const QString& text) {
  if (!recording_ || text.isEmpty() || recorded_.steps.size() >= kMostSteps) return;
  if (!recorded_.steps.empty() && recorded_.steps.back().command == 0)
    recorded_.steps.back().argument = recorded_.steps.back().argument.toString() + text;
  else recorded_.steps.push_back({0, text});
}

bool KeyMacros::play(Editor& editor, const QString& name, int count) {
  const KeyMacro* found = find(name);
  if (!found) return false;
  current_ = name;
  const std::vector<KeyMacroStep> steps = found->steps;   // a copy: the set may change during playback
  const bool undoes = std::any_of(steps.begin(), steps.end(), [](const KeyMacroStep& step) {
    const Command* command = anyCommandById(step.command);
    return command && isOneOf(*command, {"UNDO", "REDO", "UNDOCHANGES", "REDOCHANGES"});
  });
  std::optional<text::UndoGroup> group;
  if (!undoes) group.emplace(editor.document());
  const EditorAccess::Inside inside(editor);
  EditorAccess::searchFailed(editor) = false;
  for (int round = 0; round < std::min(count, kMostRepeats); ++round) {
    const auto state = [&] {
      return std::tuple(editor.document().revision(), editor.selection(), editor.host().topLine(), editor.host().leftColumn());
    };
    const auto before = state();
    for (const KeyMacroStep& step : steps) {
      // If a macro is played while another one is recorded, its steps are added to that recording.
      if (step.command != 0) noteCommand(editor, step.command, step.argument);
      else noteText(step.argument.toString());
      if (step.command != 0) executeAny(editor, step.command, step.argument);
      else editor.typeText(step.argument.toString());
      if (EditorAccess::searchFailed(editor)) return true;
    }
    if (state() == before) break;
  }
  return true;
}

QString KeyMacros::toText() const {
  QStringList lines;
  for (const KeyMacro& macro : macros_) {
    QStringList keys;
    for (const QKeySequence& sequence : keyMap().keysOf({0, macro.name})) keys += sequence.toString(QKeySequence::PortableText);
    lines += (u'[' + macro.name + QStringLiteral("] ") + keys.join(QStringLiteral("; "))).trimmed();
    for (const KeyMacroStep& step : macro.steps) lines += lineOf(step);
  }
  return lines.join(u'\n');
}

int KeyMacros::fromText(const QString& text) {
  for (const QString& name : names()) remove(name);
  int skipped = 0;
  KeyMacro* macro = nullptr;
  for (const QString& raw : text.split(u'\n')) {
    const QString line = raw.trimmed();
    if (line.isEmpty()) continue;
    if (line.startsWith(u'[')) {
      const qsizetype end = line.indexOf(u']');
      const QString name = end < 0 ? QString() : line.mid(1, end - 1);
      macro = nullptr;
      if (end < 0 || !set({name, {}})) {
        ++skipped;
        continue;
      }
      macro = const_cast<KeyMacro*>(find(name));
      for (const QString& keys : line.mid(end + 1).trimmed().split(QStringLiteral("; "), Qt::SkipEmptyParts))
        if (!keyMap().bind(QKeySequence(keys, QKeySequence::PortableText), {0, name})) ++skipped;
      continue;
    }
    const auto step = stepOf(line);
    if (macro && step) macro->steps.push_back(*step);
    else ++skipped;
  }
  return skipped;
}

KeyMacros& keyMacros() { return Workspace::current().part<KeyMacros>(); }
