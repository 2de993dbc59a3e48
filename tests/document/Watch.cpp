// Changes on disk: promises W1 and W2, and saving over what others wrote (S12).
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/document/DocumentFixture.h"
#include "tests/support/files/AllocationFault.h"
#include "tests/support/files/FaultyFileSystem.h"

namespace {

const char kGone[] = "The source of this file cannot be found, please re-save it";

class Watch : public DocumentFixture {
 protected:
  static void keepTimes(const QString& name, const std::function<void()>& change) {
    struct stat status {};
    ASSERT_EQ(::stat(name.toUtf8().constData(), &status), 0);
    change();
    const timespec times[2] = {status.st_atim, status.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, name.toUtf8().constData(), times, 0), 0);
  }
  void comesForward(CodeMax& cmx) {
    const std::size_t asked = boxes.boxes.size();
    emit cmx.GotFocus();
    EXPECT_EQ(boxes.boxes.size(), asked) << "a question would stop the change of windows halfway";
    QCoreApplication::processEvents();
  }
  static QString question() {
    return q("Warning : a.v has been changed since it was opened with this editor\r\nDo you want to re-load it");
  }
};

enum class Seen { nothing, changed, gone };
struct Way {
  const char* name;
  std::function<void(Watch&, const QString&)> act;
  Seen seen;
};

class WatchWays : public Watch {
 public:
  static std::vector<Way> all() {
    const auto put = [](const QString& name, const QByteArray& bytes) {
      QFile file(name);
      ASSERT_TRUE(file.open(QIODevice::WriteOnly));
      file.write(bytes);
    };
    const auto over = [put](const QString& name, const QByteArray& bytes) {
      put(name + u'2', bytes);
      ASSERT_EQ(::rename((name + u'2').toUtf8().constData(), name.toUtf8().constData()), 0);
    };
    const auto path = [](const QString& name) { return name.toUtf8(); };
    return {
        {"written in place", [=](Watch&, const QString& n) { put(n, "longer text\n"); }, Seen::changed},
        {"same size", [=](Watch&, const QString& n) { put(n, "OLD TEXT\n"); }, Seen::changed},
        {"same size and date", [=](Watch&, const QString& n) { keepTimes(n, [&] { put(n, "OLD TEXT\n"); }); }, Seen::changed},
        {"appended",
         [=](Watch&, const QString& n) {
           QFile file(n);
           ASSERT_TRUE(file.open(QIODevice::Append));
           file.write("x");
         },
         Seen::changed},
        {"cut to nothing", [=](Watch&, const QString& n) { ASSERT_EQ(::truncate(path(n).constData(), 0), 0); }, Seen::changed},
        {"renamed over", [=](Watch&, const QString& n) { over(n, "other\n"); }, Seen::changed},
        {"renamed over, same size and date", [=](Watch&, const QString& n) { keepTimes(n, [&] { over(n, "OLD TEXT\n"); }); },
         Seen::changed},
        {"deleted and made again",
         [=](Watch&, const QString& n) {
           QFile::remove(n);
           put(n, "again\n");
         },
         Seen::changed},
        {"a link to another",
         [=](Watch&, const QString& n) {
           put(n + u'3', "linked\n");
           QFile::remove(n);
           ASSERT_EQ(::symlink(path(n + u'3').constData(), path(n).constData()), 0);
         },
         Seen::changed},
        {"another date",
         [=](Watch&, const QString& n) {
           const timespec times[2] = {{1, 0}, {1, 0}};
           ASSERT_EQ(::utimensat(AT_FDCWD, path(n).constData(), times, 0), 0);
         },
         Seen::changed},
        {"deleted", [=](Watch&, const QString& n) { QFile::remove(n); }, Seen::gone},
        {"folder removed", [=](Watch&, const QString& n) { QDir(QFileInfo(n).path()).removeRecursively(); }, Seen::gone},
        {"a folder in its place",
         [=](Watch&, const QString& n) {
           QFile::remove(n);
           QDir().mkdir(n);
         },
         Seen::gone},
        {"a pipe in its place",
         [=](Watch&, const QString& n) {
           QFile::remove(n);
           ASSERT_EQ(::mkfifo(path(n).constData(), 0600), 0);
         },
         Seen::gone},
        {"other rights only", [=](Watch&, const QString& n) { ::chmod(path(n).constData(), 0640); }, Seen::nothing},
        {"nothing", [](Watch&, const QString&) {}, Seen::nothing},
    };
  }
};

TEST_F(WatchWays, AreNoticedOnFocusAndOnTheTimer) {
  for (const Way& way : all())
    for (const bool byTimer : {false, true}) {
      SCOPED_TRACE(std::string(way.name) + (byTimer ? ", timer" : ", focus"));
      QDir(dir.path()).mkdir(q("sub"));
      ScriptedDialogs boxes;
      const auto document = opened(write("sub/a.v", "old text\n"));
      way.act(*this, document->CurrentFileName());
      if (way.seen != Seen::nothing) boxes.answer(way.seen == Seen::gone ? Answer::ok : Answer::no);
      if (byTimer) {
        document->Timer1->setSingleShot(true);
        document->Timer1->start(1);
        for (int i = 0; i < 400 && (i < 20 || way.seen != Seen::nothing) && boxes.boxes.empty(); ++i) settle(2);
        document->Timer1->stop();
      } else {
        comesForward(*document->cmx);
      }
      ASSERT_EQ(boxes.boxes.size(), way.seen == Seen::nothing ? 0u : 1u);
      if (way.seen != Seen::nothing) { EXPECT_EQ(boxes.last().text, way.seen == Seen::gone ? q(kGone) : question()); }
      EXPECT_EQ(document->cmx->Text(), q("old text\n")) << "W2: nothing changes without a yes";
      if (way.seen == Seen::changed) {
        document->inconsistentDate();
        EXPECT_EQ(boxes.boxes.size(), 1u) << "the same change is not reported again";
      }
      main.open.clear();
      QDir(path("sub")).removeRecursively();
    }
}

// What others wrote is not overwritten unasked. What is there instead of the file decides what a save can do; the text stays and the
// user is told whenever it could not.
TEST_F(WatchWays, W1_AreNoticedAtSave) {
  for (const Way& way : all()) {
    SCOPED_TRACE(way.name);
    QDir(dir.path()).mkdir(q("sub"));
    ScriptedDialogs boxes;
    const auto document = opened(write("sub/a.v", "old text\n"));
    const QString name = document->CurrentFileName();
    document->cmx->setText(q("mine\n"));
    way.act(*this, name);
    const bool canBeSaved = QFileInfo(path("sub")).isDir() && (QFileInfo(name).isFile() || !QFileInfo::exists(name));
    const QByteArray theirs = way.seen == Seen::gone ? QByteArray() : read(name);
    const bool asked = way.seen == Seen::changed && theirs != "old text\n";
    if (asked) {
      boxes.answer(Answer::no);
      EXPECT_FALSE(document->SaveDocumment(name));
      EXPECT_EQ(read(name), theirs);
      EXPECT_TRUE(document->DocumentModified());
      boxes.answer(Answer::yes);
    }
    const bool folderGone = !QFileInfo::exists(path("sub"));
    if (!canBeSaved) boxes.answer(folderGone ? Answer::no : Answer::ok);
    EXPECT_EQ(document->SaveDocumment(name), canBeSaved);
    EXPECT_EQ(document->DocumentModified(), !canBeSaved);
    EXPECT_EQ(boxes.boxes.size(), asked ? 2u : canBeSaved ? 0u : 1u);
    if (canBeSaved) {
      EXPECT_EQ(read(name), "mine\n");
      document->inconsistentDate();   // has nothing to ask
    } else {
      EXPECT_TRUE(boxes.last().text.startsWith(folderGone ? q("The folder ") : q("File Save Error : ")))
          << boxes.last().text.toStdString();
      EXPECT_FALSE(QFileInfo(name).isFile()) << "nothing is replaced that is no file";
    }
    EXPECT_EQ(document->cmx->Text(), q("mine\n"));
    main.open.clear();
    QFile::remove(name);
    QDir(path("sub")).removeRecursively();
  }
}

// A mount that goes away and comes back, and rights that are taken and given again: as the calls to the system show them.
TEST_F(Watch, W1_MountsAndRightsThatGoAndComeBack) {
  const auto document = opened(write("a.v", "old text\n"));
  for (const int error : {ENOENT, EIO, ESTALE, EACCES}) {
    SCOPED_TRACE(text::errorText(error));
    testing_files::FaultyFileSystem away;
    away.failUse("statAt", 1, error, true);
    {
      const testing_files::UseFileSystem use(away);
      boxes.answer(Answer::ok);
      document->inconsistentDate();
      EXPECT_EQ(boxes.last().text, q(kGone));
      EXPECT_TRUE(document->DocumentModified());
    }
    boxes.answer(Answer::yes);   // it is there again, and nobody knows what was done to it
    document->inconsistentDate();
    EXPECT_EQ(boxes.last().text, question());
    EXPECT_FALSE(document->DocumentModified());
    EXPECT_EQ(document->cmx->Text(), q("old text\n"));
  }

  const std::size_t before = boxes.boxes.size();
  const auto noRight = [&](const std::function<void()>& act) {
    testing_files::FaultyFileSystem forbidden;
    forbidden.failUse("openAt", 1, EACCES, true);
    const testing_files::UseFileSystem use(forbidden);
    act();
  };
  ::chmod(document->CurrentFileName().toUtf8().constData(), 0);
  noRight([&] { document->inconsistentDate(); });
  EXPECT_EQ(boxes.boxes.size(), before) << "that alone is no other text";
  document->cmx->setText(q("mine\n"));
  boxes.answer(Answer::ok);
  noRight([&] { EXPECT_FALSE(document->SaveDocumment(document->CurrentFileName())); });
  EXPECT_TRUE(boxes.last().text.endsWith(QString::fromLocal8Bit(::strerror(EACCES)))) << boxes.last().text.toStdString();
  ::chmod(document->CurrentFileName().toUtf8().constData(), 0644);
  document->inconsistentDate();
  EXPECT_TRUE(document->SaveDocumment(document->CurrentFileName()));
  EXPECT_EQ(read(path("a.v")), "mine\n");
  EXPECT_EQ(boxes.boxes.size(), before + 1) << "and no question when they are back";
}

// A clock that ticks in milliseconds, and a change within one tick: nothing but the bytes tells of it.
TEST_F(Watch, W1_AChangeWithinTheClocksGrainIsNoticed) {
  const auto document = opened(write("a.v", "old\n"));
  write("a.v", "new\n");
  document->cmx->model()->stamp->status = text::stampOf(fromQString(path("a.v")), false).status;
  boxes.answer(Answer::no);
  document->inconsistentDate();
  EXPECT_EQ(boxes.boxes.size(), 1u);
}

// Only the window with the focus looks. The others are asked about when they get it, and their saves ask too.
TEST_F(Watch, W1_ADocumentBehindAnotherIsNoticedWhenItComesForward) {
  const auto hidden = opened(write("a.v", "old\n")), shown = opened(write("b.v", "old\n"));
  emit hidden->cmx->LostFocus();
  comesForward(*shown->cmx);
  EXPECT_FALSE(hidden->Timer1->isActive());
  EXPECT_EQ(shown->Timer1->interval(), 4000);
  write("a.v", "theirs\n");
  shown->inconsistentDate();
  EXPECT_TRUE(boxes.boxes.empty());
  hidden->cmx->setText(q("mine\n"));
  boxes.answer(Answer::no);
  EXPECT_FALSE(hidden->SaveDocumment(hidden->CurrentFileName())) << "as saving all of them does";
  EXPECT_EQ(read(path("a.v")), "theirs\n");
  emit shown->cmx->LostFocus();
  boxes.answer(Answer::no);
  comesForward(*hidden->cmx);
  EXPECT_EQ(boxes.last().text, question());
  EXPECT_EQ(hidden->cmx->Text(), q("mine\n"));
  // The user has gone on while the disk was looked at: what is asked about is shown.
  main.active = shown.get();
  QFile::remove(path("a.v"));
  boxes.answer(Answer::ok, [&] { EXPECT_EQ(main.active, hidden.get()); });
  hidden->inconsistentDate();
  EXPECT_EQ(boxes.last().text, q(kGone));
  EXPECT_EQ(boxes.last().title, path("a.v"));
}

TEST_F(Watch, W2_TwoWindowsOnOneTextAskOnceAndReloadTogether) {
  const auto first = opened(write("a.v", "one\ntwo\n"));
  frmDocument second(*first);
  main.open << &second;
  write("a.v", "theirs\n");
  boxes.answer(Answer::no);
  comesForward(*second.cmx);
  for (frmDocument* window : {first.get(), &second}) {
    EXPECT_EQ(window->cmx->Text(), q("one\ntwo\n"));
    EXPECT_TRUE(window->DocumentModified());
    window->inconsistentDate();
  }
  EXPECT_EQ(boxes.boxes.size(), 1u) << "one answer for both";
  write("a.v", "");
  boxes.answer(Answer::yes);
  comesForward(*first->cmx);
  for (frmDocument* window : {first.get(), &second}) {
    EXPECT_EQ(window->cmx->Text(), QString());
    EXPECT_FALSE(window->DocumentModified());
  }
  second.cmx->ExecuteCmd(Cmd::UNDO);
  for (frmDocument* window : {first.get(), &second}) EXPECT_EQ(window->cmx->Text(), q("one\ntwo\n"));
  EXPECT_TRUE(first->DocumentModified());
  main.open.removeOne(&second);
}

// T10: reading a file again without the memory for it.
TEST_F(Watch, T10_AReloadWithoutMemoryLeavesTheTextAndSaysWhy) {
  const auto document = opened(write("a.v", QByteArray(100'000, 'o') + "\n"));
  document->cmx->InsertText(q("mine "), {0, 0});
  const QString old = document->cmx->Text();
  write("a.v", QByteArray(300'000, 'n') + "\n");
  int failed = 0;
  for (long n = 1;; ++n) {
    SCOPED_TRACE(n);
    ScriptedDialogs boxes;
    boxes.answerAny(Answer::ok);
    bool loaded = false, hit = false;
    {
      const testing_files::AllocationFault fault(n, false, 2'000);
      document->LoadDocument(document->CurrentFileName(), loaded);
      hit = fault.hit();
    }
    EXPECT_EQ(boxes.boxes.size(), loaded ? 0u : 1u);
    if (loaded) {
      if (!hit) break;
      document->cmx->ExecuteCmd(Cmd::UNDO);
    } else {
      ++failed;
      EXPECT_EQ(boxes.last().text, q("File Open Error : Out of memory"));
    }
    ASSERT_TRUE(document->cmx->Text() == old);
    ASSERT_TRUE(document->DocumentModified());
  }
  EXPECT_GT(failed, 3);
  EXPECT_EQ(document->cmx->Text().size(), 300'001);
}

TEST_F(Watch, W2_ReloadIsOneStepAndTheOldTextComesBack) {
  const auto document = opened(write("a.v", "one\ntwo\nthree\n"));
  document->cmx->InsertText(q("my "), {1, 0});
  document->cmx->setBookmark(2, true);
  select(*document, 2, 3, 2, 3);
  write("a.v", "");   // cut to nothing, as by a full disk
  boxes.answer(Answer::yes);
  comesForward(*document->cmx);
  EXPECT_EQ(document->cmx->Text(), QString());
  EXPECT_FALSE(document->DocumentModified());
  document->cmx->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(document->cmx->Text(), q("one\nmy two\nthree\n"));
  EXPECT_TRUE(document->DocumentModified());
  document->cmx->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(document->cmx->Text(), q("one\ntwo\nthree\n")) << "earlier steps are still there";
}

TEST_F(Watch, ReloadKeepsCaretBookmarksAndFormat) {
  const auto document = opened(write("a.v", "one\ntwo\nthree\n"), 1);
  document->cmx->setBookmark(2, true);
  select(*document, 2, 1, 2, 3);
  write("a.v", "zero\none\ntwo\nthree\n");
  document->cmx->setReadOnly(true);
  boxes.answer(Answer::yes);
  document->inconsistentDate();
  EXPECT_TRUE(document->cmx->ReadOnly()) << "the user's guard";
  document->cmx->setReadOnly(false);
  EXPECT_EQ(document->cmx->Text(), q("zero\none\ntwo\nthree\n"));
  EXPECT_EQ(document->cmx->GetSel(false), (CmRange{2, 1, 2, 3, false}));
  EXPECT_TRUE(document->cmx->hasBookmark(3));
  EXPECT_EQ(document->LanguageIndex(), 1);
  write("a.v", "one\rtwo\rthree\r");
  boxes.answer(Answer::yes);
  document->inconsistentDate();
  document->cmx->setBookmark(1, true);
  write("a.v", "one\ntwo\n3\n");
  boxes.answer(Answer::yes);
  document->inconsistentDate();
  EXPECT_EQ(document->cmx->model()->snapshot().lineMode(), text::LineMode::lf);
  EXPECT_TRUE(document->cmx->LineCount() == 4 && document->cmx->hasBookmark(1));
  document->cmx->ExecuteCmd(Cmd::UNDO);
  EXPECT_EQ(document->cmx->model()->snapshot().bytes(), "one\rtwo\rthree\r") << "one step";
  EXPECT_EQ(document->cmx->LineCount(), 4);
  document->cmx->ExecuteCmd(Cmd::REDO);
  write("a.v", QByteArray("\xFF\xFE"
                          "a\0",
                          4));
  boxes.answer(Answer::yes);
  document->inconsistentDate();
  EXPECT_EQ(document->cmx->Text(), q("a"));
  EXPECT_EQ(document->cmx->fileFormat(), (text::FileFormat{text::Encoding::utf16le, true}));
  for (int each = static_cast<int>(text::Encoding::windows1252); each <= static_cast<int>(text::Encoding::cp437); ++each) {
    const text::FileFormat format{static_cast<text::Encoding>(each), false};   // nothing in the file tells it
    write("a.v", "\xE1\n");
    ASSERT_TRUE(document->ReopenAs(format)) << each;
    write("a.v", "\xE1\xE1\n");
    boxes.answer(Answer::yes);
    document->inconsistentDate();
    EXPECT_EQ(document->cmx->fileFormat(), format) << each;
  }
}

TEST_F(Watch, DeclinedOrVanishedTextIsOfferedForSaving) {
  const auto document = opened(write("a.v", "mine\n"));
  write("a.v", "theirs\n");
  boxes.answer(Answer::no);
  document->inconsistentDate();
  EXPECT_TRUE(document->cmx->Modified()) << "what is shown is not in the file any more";
  EXPECT_TRUE(document->SaveDocumment(document->CurrentFileName())) << "the answer was given";
  EXPECT_EQ(read(path("a.v")), "mine\n");

  QFile::remove(path("a.v"));
  boxes.answer(Answer::ok);
  document->inconsistentDate();
  document->inconsistentDate();   // told once as long as it is so
  write("a.v", "theirs\n");
  boxes.answer(Answer::no);
  document->inconsistentDate();
  QFile::remove(path("a.v"));
  boxes.answer(Answer::ok);
  document->inconsistentDate();
  EXPECT_EQ(boxes.last().text, q(kGone)) << "it had come back";
  EXPECT_TRUE(document->DocumentModified());
  EXPECT_TRUE(document->SaveDocumment(document->CurrentFileName()));
  EXPECT_EQ(read(path("a.v")), "mine\n");
  document->inconsistentDate();
  EXPECT_FALSE(document->DocumentModified());
}

TEST_F(Watch, RestsWhereItShould) {
  frmDocument untitled;
  untitled.setUntitled(q("Untitled 1"), dir.path());
  untitled.inconsistentDate();   // no name, nothing to look at
  const auto document = opened(write("a.v", "old\n"));
  write("a.v", "new text\n");
  main.minimised = true;
  document->Timer1->start(1);
  settle(30);
  EXPECT_TRUE(boxes.boxes.empty()) << "a minimised frame asks nothing";
  document->Timer1->stop();
  main.minimised = false;
  {
    const BusyGuard busy;
    comesForward(*document->cmx);
    EXPECT_TRUE(boxes.boxes.empty());
  }
  {
    const ModalGuard dialog;
    document->inconsistentDate();
    EXPECT_TRUE(boxes.boxes.empty());
  }
  boxes.answer(Answer::no);
  comesForward(*document->cmx);
  EXPECT_EQ(boxes.boxes.size(), 1u);
}

TEST_F(Watch, OneBoxAtATimeAndItsEndIsNoFocusGain) {
  const auto document = opened(write("a.v", "old\n"));
  const auto other = opened(write("b.v", "old\n"));
  QFile::remove(path("a.v"));
  QFile::remove(path("b.v"));
  boxes.answer(Answer::ok, [&] {
    emit document->cmx->LostFocus();   // to the box
    document->Timer1->start(1);
    other->inconsistentDate();
    settle(20);
    EXPECT_EQ(boxes.boxes.size(), 1u) << "no box on top of the box";
    document->Timer1->setInterval(4'000'000);
  });
  comesForward(*document->cmx);
  EXPECT_EQ(boxes.boxes.size(), 1u);
  write("a.v", "new text\n");
  comesForward(*document->cmx);   // the box gives it back
  EXPECT_EQ(boxes.boxes.size(), 1u) << "or a file that is often written would never let go";
  EXPECT_TRUE(document->Timer1->isActive());
  EXPECT_GT(document->Timer1->remainingTime(), 3'000'000) << "the time counts from the end of the box";
  boxes.answer(Answer::no);
  comesForward(*document->cmx);   // a real one
  EXPECT_EQ(boxes.boxes.size(), 2u);
}

}   // namespace
