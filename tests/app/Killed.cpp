// Sudden ends of the real program while somebody types: kill -9 (J1), and the signals that ask it to end (J7).
#include <algorithm>
#include <random>

#include "base/Strings.h"
#include "tests/app/ProcessFixture.h"
#include "tests/support/TypistLog.h"
#include "tests/support/files/MachinePace.h"
#include "text/journal/Journal.h"
#include "text/journal/JournalRead.h"

namespace {

// One document as the log tells of it.
struct Typed {
  std::string base;
  std::vector<TypistLog::Key> keys;

  static void apply(std::string* text, char what) {
    if (what == '\b' && !text->empty()) text->pop_back();
    if (what != '\b' && what != 'S') *text += what;
  }
  // The most keys after which the text is this one, or -1.
  int keysBehind(const std::string& got) const {
    std::string text = base;
    int best = text == got ? 0 : -1;
    for (std::size_t i = 0; i < keys.size(); ++i) {
      apply(&text, keys[i].what);
      if (text.size() == got.size() && text == got) best = int(i) + 1;
    }
    return best;
  }
};

class Killed : public ProcessRun {
 protected:
  const char* programName() const override { return "typist"; }
  ~Killed() override {
    if (log_) ::munmap(log_, sizeof(TypistLog));
  }

  // A typist at two files and an untitled document.
  QProcess& startTyping(int keys) {
    write(q("one.dat"), "first\n");
    write(q("two.dat"), "");
    if (log_) ::munmap(log_, sizeof(TypistLog));
    QFile::remove(dir_.filePath(q("log")));
    log_ = TypistLog::at(dir_.filePath(q("log")).toUtf8().constData());
    EXPECT_NE(log_, nullptr);
    environment_.insert(q("TYPIST_LOG"), dir_.filePath(q("log")));
    environment_.insert(q("TYPIST_KEYS"), QString::number(keys));
    return startFirst({q("one.dat"), q("two.dat")});
  }
  bool untilTyped(std::uint32_t keys) const {
    for (QElapsedTimer timer = started(); log_->applied < keys; QThread::msleep(2))
      if (timer.elapsed() > kPatience) return false;
    return true;
  }
  // What was typed into each document; `more`: the key that may have been under way too.
  std::vector<Typed> typed(bool more) const {
    std::vector<Typed> all{{"first\n", {}}, {"", {}}, {"", {}}};
    const std::uint32_t count = log_->applied;
    for (std::uint32_t i = 0; i < count + more; ++i)
      if (log_->keys[i].what != 0) all[log_->keys[i].document].keys.push_back(log_->keys[i]);
    return all;
  }
  QString journals() const { return environment_.value(q("XDG_STATE_HOME")) + q("/zelkor/recovery"); }
  int countJournals() const { return int(QDir(journals()).entryList({q("*.journal")}, QDir::Files).size()); }
  // What the journals bring back for each document; its own file where there is none.
  std::vector<std::vector<std::string>> recovered() const {
    std::vector<std::vector<std::string>> texts(3);
    for (int i = 0; i < 2; ++i) texts[std::size_t(i)].push_back(fileText(i == 0 ? "one.dat" : "two.dat"));
    texts[2].push_back("");
    for (const text::LeftText& left : text::leftJournals(fromQString(journals()))) {
      const text::RecoveredText back = left.recover();
      EXPECT_EQ(back.error, "");
      EXPECT_TRUE(back.baseWhole);
      const std::string& path = back.about.path;
      std::string bytes = back.text.bytes({text::ByteOffset(0), back.text.size()});
      std::erase(bytes, '\r');
      texts[path.ends_with("one.dat") ? 0u : path.ends_with("two.dat") ? 1u : 2u].push_back(std::move(bytes));
    }
    return texts;
  }
  std::string fileText(const char* name) const {
    QFile file(dir_.filePath(q(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().replace("\r", "").toStdString();   // line ends of a new document are the system's
  }
  void expectAllIsThere() const {
    const std::vector<Typed> documents = typed(false);
    const auto texts = recovered();
    for (std::size_t i = 0; i < documents.size(); ++i) {
      std::string text = documents[i].base;
      for (const TypistLog::Key& key : documents[i].keys) Typed::apply(&text, key.what);
      EXPECT_EQ(texts[i].back(), text) << "document " << i;
    }
  }

  TypistLog* log_ = nullptr;
};

TEST_F(Killed, J1_AMomentOfTypingIsLostAtMost) {
  const char* const asked = std::getenv("ZELKOR_KILLS");
  const int rounds = asked ? std::atoi(asked) : 3;
  std::mt19937 random(std::random_device{}());
  const testing_files::MachinePace pace;
  int kills = 0, late = 0, mostEdits = 0;
  std::int64_t mostMs = 0, keys = 0;
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    QDir(environment_.value(q("XDG_STATE_HOME"))).removeRecursively();
    environment_.insert(q("TYPIST_PAUSE"), QString::number(round % 3 == 0 ? 0 : round % 3 == 1 ? 8 : 60));
    environment_.insert(q("TYPIST_SAVES"), QString::number(round % 2 ? 97 : 0));
    QProcess& process = startTyping(-1);
    ASSERT_TRUE(untilTyped(1));
    QThread::msleep((round % 5 == 4 ? text::kJournalSyncMs : 0) + random() % 900);   // while it syncs, too
    const std::int64_t killed = TypistLog::now();
    ::kill(pid_t(process.processId()), SIGKILL);
    ASSERT_TRUE(process.waitForFinished(kPatience));
    ++kills;
    keys += log_->applied;
    const std::vector<Typed> documents = typed(true);
    const auto texts = recovered();
    for (std::size_t i = 0; i < documents.size(); ++i) {
      const int count = int(typed(false)[i].keys.size());
      int back = -1;
      for (const std::string& text : texts[i]) {
        const int behind = documents[i].keysBehind(text);
        EXPECT_GE(behind, 0) << "document " << i << ": not a text that it ever was:\n" << text.substr(0, 2000);
        back = std::max(back, behind);
      }
      if (back < 0 || back >= count) continue;
      const int edits = count - back;
      const std::int64_t since = documents[i].keys[std::size_t(back)].ms, ms = killed - since,
                         still = pace.stoodStill(since, killed);
      EXPECT_TRUE(edits <= 50 || ms - still <= 250)
          << "document " << i << ": " << edits << " keys of " << ms << " ms lost, the machine stood still " << still;
      mostMs = std::max(mostMs, ms);
      mostEdits = std::max(mostEdits, edits);
      if (ms > 100) ++late;
    }
  }
  std::printf("%d kills, %lld keys; lost at most %lld ms and %d keys, more than 100 ms %d times\n", kills,
              static_cast<long long>(keys), static_cast<long long>(mostMs), mostEdits, late);
}

TEST_F(Killed, SignalsEndItWithoutAQuestionAndTheNextStartOffersTheTexts) {
  struct Case {
    int signal;
    const char* dialog;   // that is up meanwhile
  };
  for (const Case& c : {Case{SIGTERM, ""}, Case{SIGINT, "mnuFileClose"}, Case{SIGHUP, "mHelpAbout"}}) {
    SCOPED_TRACE(std::string(::strsignal(c.signal)) + " " + c.dialog);
    QDir(environment_.value(q("XDG_STATE_HOME"))).removeRecursively();
    environment_.insert(q("TYPIST_DIALOG"), q(c.dialog));
    QProcess& process = startTyping(200);
    ASSERT_TRUE(untilTyped(200));
    if (*c.dialog) QThread::msleep(300);
    ::kill(pid_t(process.processId()), c.signal);
    ASSERT_TRUE(process.waitForFinished(kPatience));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(countJournals(), 3);
    EXPECT_TRUE(socketPath().isEmpty());
    EXPECT_EQ(fileText("one.dat"), "first\n") << "nothing is saved unasked";
    expectAllIsThere();
  }
  environment_.remove(q("TYPIST_KEYS"));
  program_.replace(q("typist"), q("zelkor"));
  QProcess& next = startFirst();
  for (QElapsedTimer timer = started(); timer.elapsed() < kPatience; QThread::msleep(5))
    if (text::leftJournals(fromQString(journals())).empty()) break;   // it offers them
  EXPECT_TRUE(text::leftJournals(fromQString(journals())).empty());
  next.terminate();
  ASSERT_TRUE(next.waitForFinished(kPatience));
  EXPECT_EQ(text::leftJournals(fromQString(journals())).size(), 3u) << "nobody decided about them";
}

TEST_F(Killed, SignalsAskWhereNoJournalHoldsTheText) {
  const QString state = environment_.value(q("XDG_STATE_HOME")) + q("/zelkor");
  QDir().mkpath(state);
  QFile inTheWay(journals());
  ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
  inTheWay.close();
  QProcess& process = startTyping(100);
  ASSERT_TRUE(untilTyped(100));
  ::kill(pid_t(process.processId()), SIGTERM);
  EXPECT_FALSE(process.waitForFinished(1500)) << "it asks";
  ASSERT_TRUE(QFile::remove(journals()));   // the question is up, but need not be answered any more
  ASSERT_TRUE(process.waitForFinished(kPatience));
  EXPECT_EQ(process.exitCode(), 0);
  expectAllIsThere();
}

}   // namespace
