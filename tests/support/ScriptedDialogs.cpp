#include "tests/support/ScriptedDialogs.h"

#include <gtest/gtest.h>

namespace {

bool offers(Buttons buttons, Answer answer) {
  switch (buttons) {
    case Buttons::ok: return answer == Answer::ok;
    case Buttons::okCancel: return answer == Answer::ok || answer == Answer::cancel;
    case Buttons::yesNo: return answer == Answer::yes || answer == Answer::no;
    case Buttons::yesNoCancel: return answer != Answer::ok;
  }
  return false;
}

std::string described(const ScriptedDialogs::Box& box) {
  static const char* const kinds[] = {"message box", "input box", "open dialog", "save dialog"};
  return std::string(kinds[static_cast<int>(box.kind)]) + " \"" + box.text.toStdString() + "\" titled \"" +
         (box.text.isEmpty() ? box.request.title : box.title).toStdString() + '"';
}

}   // namespace

ScriptedDialogs::ScriptedDialogs() : previous_(setDialogs(this)) {}

ScriptedDialogs::~ScriptedDialogs() {
  setDialogs(previous_);
  EXPECT_TRUE(steps_.empty()) << steps_.size() << " scripted answers were not asked for";
}

ScriptedDialogs& ScriptedDialogs::answer(Answer answer, std::function<void()> whileUp) {
  steps_.push_back({Kind::message, answer, std::nullopt, {}, 0, std::move(whileUp)});
  return *this;
}
ScriptedDialogs& ScriptedDialogs::answerInput(std::optional<QString> text, std::function<void()> whileUp) {
  steps_.push_back({Kind::input, Answer::cancel, std::move(text), {}, 0, std::move(whileUp)});
  return *this;
}
ScriptedDialogs& ScriptedDialogs::answerOpen(QStringList paths, int filterIndex) {
  steps_.push_back({Kind::open, Answer::cancel, std::nullopt, std::move(paths), filterIndex, {}});
  return *this;
}
ScriptedDialogs& ScriptedDialogs::answerSave(QString path, int filterIndex) {
  steps_.push_back({Kind::save, Answer::cancel, std::nullopt, QStringList(std::move(path)), filterIndex, {}});
  return *this;
}

const ScriptedDialogs::Box& ScriptedDialogs::last() const {
  static const Box none;
  EXPECT_FALSE(boxes.empty()) << "no box was shown";
  return boxes.empty() ? none : boxes.back();
}

QStringList ScriptedDialogs::texts() const {
  QStringList all;
  for (const Box& box : boxes) all += box.text;
  return all;
}

std::optional<ScriptedDialogs::Step> ScriptedDialogs::take(Box box) {
  boxes.push_back(std::move(box));
  const Box& shown = boxes.back();
  if (steps_.empty() || steps_.front().kind != shown.kind) {
    ADD_FAILURE() << "unexpected " << described(shown);
    return std::nullopt;
  }
  Step step = std::move(steps_.front());
  steps_.pop_front();
  if (shown.kind == Kind::message && !offers(shown.buttons, step.answer)) {
    ADD_FAILURE() << "the scripted answer is no button of the " << described(shown);
    return std::nullopt;
  }
  const ModalGuard guard;
  if (step.whileUp) step.whileUp();
  return step;
}

Answer ScriptedDialogs::messageBox(const QString& text, const QString& title, Icon icon, Buttons buttons) {
  if (any_ && steps_.empty()) {
    boxes.push_back({Kind::message, text, title, icon, buttons, {}, {}});
    return offers(buttons, *any_) ? *any_ : declined(buttons);
  }
  if (const auto step = take({Kind::message, text, title, icon, buttons, {}, {}})) return step->answer;
  return declined(buttons);
}

std::optional<QString> ScriptedDialogs::inputBox(const QString& prompt, const QString& title, const QString& initial) {
  const auto step = take({Kind::input, prompt, title, Icon::none, Buttons::okCancel, initial, {}});
  return step ? step->input : std::nullopt;
}

QStringList ScriptedDialogs::openFile(FileDialogRequest& request) {
  const auto step = take({Kind::open, {}, request.title, Icon::none, Buttons::okCancel, {}, request});
  if (!step) return {};
  if (step->filterIndex) request.filterIndex = step->filterIndex;
  return step->paths;
}

QString ScriptedDialogs::saveFile(FileDialogRequest& request) {
  const auto step = take({Kind::save, {}, request.title, Icon::none, Buttons::okCancel, {}, request});
  if (!step) return {};
  if (step->filterIndex) request.filterIndex = step->filterIndex;
  return step->paths.value(0);
}

bool ScriptedDialogs::openUrl(const QString& url) {
  urls += url;
  return !urlsFail;
}
