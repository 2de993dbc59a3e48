#include "document/Recovery.h"

#include <QPointer>
#include <algorithm>

#include "base/Program.h"
#include "base/Workspace.h"
#include "bridge/FileNames.h"

namespace {
struct RecoveryInForce {
  RecoverySession* session = nullptr;
};
RecoverySession*& session() { return Workspace::current().part<RecoveryInForce>().session; }
}   // namespace

RecoverySession* RecoverySession::current() { return session(); }
QString RecoverySession::usualFolder() { return userStateFolder() + QStringLiteral("/recovery"); }

RecoverySession::RecoverySession(const QString& folder) : writer_(fromQString(folder)), context_(new QObject) { session() = this; }

RecoverySession::~RecoverySession() {
  context_.reset();
  session() = nullptr;
}

QString RecoverySession::folder() const { return toQString(writer_.folder()); }
bool RecoverySession::flush() { return writer_.flush(); }

void RecoverySession::holdAll(int patienceMs) {
  for (Recovery* one : std::as_const(all_))
    if (one->model_->document().modified()) one->begin();
  writer_.flush(patienceMs);
}

void RecoverySession::onFailure(std::function<void(const QString&)> told) {
  told_ = std::move(told);
  if (told_ && !failure_.isEmpty()) told_(failure_);
}

void RecoverySession::lookForFailures() {
  QString now;
  for (const Recovery* one : std::as_const(all_))
    if (now.isEmpty()) now = toQString(one->journal_.failure());
  if (now == failure_) return;
  failure_ = now;
  if (told_) told_(now);
}

std::unique_ptr<Recovery> Recovery::of(std::shared_ptr<TextModel> model) {
  return session() ? std::unique_ptr<Recovery>(new Recovery(std::move(model))) : nullptr;
}

Recovery::Recovery(std::shared_ptr<TextModel> model)
    : model_(std::move(model)),
      // Called on the writer's thread: hands over to this one.
      journal_(session()->writer_, model_->document(), [context = session()->context_.get()] {
        QMetaObject::invokeMethod(
            context,
            [] {
              if (session()) session()->lookForFailures();
            },
            Qt::QueuedConnection);
      }) {
  session()->all_ << this;
  // A text may become modified without a change of its own: its file is lost, or it goes to another encoding. Queued, so that a
  // change that did it is in the journal first.
  connect(
      model_.get(), &TextModel::modifiedChanged, this,
      [this](bool modified) {
        if (!modified || !model_->document().modified()) return;
        journal_.setAbout(about());
        journal_.begin();
      },
      Qt::QueuedConnection);
}

Recovery::~Recovery() {
  if (!session()) return;
  session()->all_.removeOne(this);
  session()->lookForFailures();
}

text::JournalAbout Recovery::about() const {
  return {fromQString(path_), fromQString(title_), model_->format, model_->stamp, 0, caret ? caret() : -1};
}

void Recovery::setFile(const QString& path, const QString& title) {
  path_ = path;
  title_ = title;
  journal_.setAbout(about());
}

void Recovery::saved() {
  if (model_->document().modified()) return;
  journal_.saved(about());
}

void Recovery::discard() { journal_.discard(); }

void Recovery::begin() {
  journal_.setAbout(about());
  journal_.standAlone();
}

bool Recovery::holdNow() {
  begin();
  session()->flush();
  return holds();
}

bool Recovery::holds() const { return journal_.durable(); }
QString Recovery::fileName() const { return toQString(journal_.fileName()); }
