#include "control/keys/KeyMap.h"

#include <QKeyEvent>
#include <QRegularExpression>
#include <algorithm>

#include "base/Workspace.h"
#include "control/keys/KeyCommands.h"

namespace {

constexpr int kShift = Qt::ShiftModifier;
constexpr int kModifiers = kShift | int(Qt::ControlModifier) | int(Qt::AltModifier) | int(Qt::MetaModifier);

int plainStroke(int stroke) {
  const int key = stroke & ~static_cast<int>(Qt::KeyboardModifierMask);
  // Shift+Tab arrives as a separate key (Backtab).
  return (key == Qt::Key_Backtab ? Qt::Key_Tab | kShift : key) | (stroke & kModifiers);
}

QString nameOf(const KeyAction& action) {
  const Command* command = anyCommandById(action.command);
  return command ? QString::fromLatin1(command->name) : action.named;
}

bool isActionName(const QString& name) {
  static const QRegularExpression form(QStringLiteral("^[A-Z]+ [^\\s=\\x00-\\x1f]+$"));
  return form.match(name).hasMatch();
}

}   // namespace

int KeyMap::strokeOf(const QKeyEvent& event) {
  switch (event.key()) {
    case 0:
    case Qt::Key_unknown:
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_Meta:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R: return 0;
    default: return plainStroke(event.key() | static_cast<int>(event.modifiers().toInt()));
  }
}

KeyMap::Strokes KeyMap::strokesOf(const QKeySequence& keys) {
  if (keys.count() < 1 || keys.count() > 2) return 0;
  Strokes strokes = 0;
  for (int i = 0; i < 2; ++i) {
    const int stroke = i < keys.count() ? plainStroke(keys[static_cast<uint>(i)].toCombined()) : 0;
    if (i < keys.count() && (stroke & ~kModifiers) < 0x20) return 0;   // a modifier alone, or not a key
    if ((stroke & ~kModifiers) == Qt::Key_unknown) return 0;
    strokes = strokes << 32 | static_cast<quint32>(stroke);
  }
  return strokes;
}

QKeySequence KeyMap::keysFrom(Strokes strokes) {
  return QKeySequence(static_cast<int>(strokes >> 32), static_cast<int>(strokes & 0xFFFFFFFF));
}

const QHash<KeyMap::Strokes, KeyAction>& KeyMap::tableDefaults() {
  static const QHash<Strokes, KeyAction> map = [] {
    QHash<Strokes, KeyAction> all;
    for (std::span<const Command> table : {commands(), keyCommands()})
      for (const Command& command : table)
        for (const QString& keys : QString::fromLatin1(command.keys).split(QStringLiteral("; "), Qt::SkipEmptyParts))
          all.insert(strokesOf(QKeySequence(keys, QKeySequence::PortableText)), {command.id, {}});
    return all;
  }();
  return map;
}

void KeyMap::setNamedActions(const QList<NamedAction>& actions) {
  const QHash<Strokes, KeyAction> before = std::exchange(defaults_, tableDefaults());
  named_ = actions;
  for (const NamedAction& action : actions)
    for (const QString& keys : action.keys.split(QStringLiteral("; "), Qt::SkipEmptyParts)) {
      const Strokes strokes = strokesOf(QKeySequence(keys, QKeySequence::PortableText));
      if (strokes == 0 || defaults_.contains(strokes)) continue;
      defaults_.insert(strokes, {0, {}, action.name});
      if (!before.contains(strokes) && !actions_.contains(strokes)) put(strokes, defaults_.value(strokes));
    }
}

QStringList KeyMap::boundNames() const {
  QStringList names;
  for (const KeyAction& action : actions_)
    if (!action.named.isEmpty() && !names.contains(action.named)) names << action.named;
  return names;
}

void KeyMap::put(Strokes strokes, const KeyAction& action) {
  const auto counts = [strokes](const KeyAction& a) {
    return (strokes & 0xFFFFFFFF) != 0 && (a.command != 0 || !a.macro.isEmpty());
  };
  const int more = int(counts(action)) - int(counts(actions_.value(strokes)));
  if (more != 0) firsts_[static_cast<int>(strokes >> 32)] += more;
  if (action.isNone()) actions_.remove(strokes);
  else actions_.insert(strokes, action);
}

KeyMap::Match KeyMap::find(int first, int second, KeyAction* action) const {
  const auto it = actions_.constFind(static_cast<Strokes>(static_cast<quint32>(first)) << 32 | static_cast<quint32>(second));
  if (it != actions_.constEnd()) {
    *action = *it;
    return Match::exact;
  }
  return second == 0 && firsts_.value(first) > 0 ? Match::partial : Match::none;
}

KeyAction KeyMap::actionOf(const QKeySequence& keys) const { return actions_.value(strokesOf(keys)); }

QList<QKeySequence> KeyMap::keysOf(const KeyAction& action) const {
  QList<QKeySequence> keys;
  for (auto it = actions_.constBegin(); it != actions_.constEnd(); ++it)
    if (*it == action) keys.append(keysFrom(it.key()));
  std::sort(keys.begin(), keys.end(), [](const QKeySequence& a, const QKeySequence& b) {
    return a.toString(QKeySequence::PortableText) < b.toString(QKeySequence::PortableText);
  });
  return keys;
}

bool KeyMap::bind(const QKeySequence& keys, const KeyAction& action) {
  const Strokes strokes = strokesOf(keys);
  if (strokes != 0) put(strokes, action);
  return strokes != 0;
}

QList<QKeySequence> KeyMap::conflicts(const QKeySequence& keys) const {
  const Strokes strokes = strokesOf(keys);
  QList<QKeySequence> found;
  if (strokes == 0) return found;
  const bool longer = (strokes & 0xFFFFFFFF) != 0;
  for (auto it = actions_.constBegin(); it != actions_.constEnd(); ++it) {
    const bool sameFirst = it.key() >> 32 == strokes >> 32;
    const bool otherLonger = (it.key() & 0xFFFFFFFF) != 0;
    if (it.key() == strokes || (sameFirst && longer != otherLonger)) found.append(keysFrom(it.key()));
  }
  std::sort(found.begin(), found.end());
  return found;
}

void KeyMap::restoreDefaults() {
  const QHash<Strokes, KeyAction> old = std::exchange(actions_, {});
  firsts_.clear();
  for (auto it = defaults().constBegin(); it != defaults().constEnd(); ++it) put(it.key(), *it);
  for (auto it = old.constBegin(); it != old.constEnd(); ++it)
    if (!it->macro.isEmpty() && !actions_.contains(it.key())) put(it.key(), *it);
}

QString KeyMap::toText() const {
  QStringList lines;
  const auto line = [&lines](Strokes strokes, const QString& name) {
    lines += keysFrom(strokes).toString(QKeySequence::PortableText) + u'=' + name;
  };
  for (auto it = actions_.constBegin(); it != actions_.constEnd(); ++it)
    if (it->macro.isEmpty() && *it != defaults().value(it.key())) line(it.key(), nameOf(*it));
  for (auto it = defaults().constBegin(); it != defaults().constEnd(); ++it)
    if (!actions_.contains(it.key())) line(it.key(), {});
  lines.sort();
  return lines.join(u'\n');
}

int KeyMap::fromText(const QString& text) {
  QHash<Strokes, KeyAction> macros;
  for (auto it = actions_.constBegin(); it != actions_.constEnd(); ++it)
    if (!it->macro.isEmpty()) macros.insert(it.key(), *it);
  actions_.clear();
  restoreDefaults();
  int skipped = 0;
  for (const QString& raw : text.split(u'\n')) {
    const QString line = raw.trimmed();
    if (line.isEmpty()) continue;
    const qsizetype equals = line.lastIndexOf(u'=');   // "=" may be a key, but not a part of a name
    const QString name = line.mid(equals + 1).trimmed();
    const Command* command = anyCommandByName(name);
    const Strokes strokes = equals <= 0 ? 0 : strokesOf(QKeySequence(line.left(equals).trimmed(), QKeySequence::PortableText));
    if (strokes == 0 || (!command && !name.isEmpty() && !isActionName(name))) ++skipped;
    else put(strokes, {command ? command->id : 0, {}, command ? QString() : name});
  }
  for (auto it = macros.constBegin(); it != macros.constEnd(); ++it) put(it.key(), *it);
  return skipped;
}

KeyMap& keyMap() { return Workspace::current().part<KeyMap>(); }
