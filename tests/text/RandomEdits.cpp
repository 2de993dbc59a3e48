// Random edits, groups, undo and redo against a plain std::string (T6, T7): after each step the text, its lines, the change
// told to listeners, marks, the save point and snapshots taken earlier are compared with a model that copies whole texts.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "tests/text/MarkModel.h"
#include "tests/text/RandomText.h"
#include "text/store/Document.h"
#include "text/store/Tree.h"

namespace {

using namespace text;

// The starts of the lines as the rules of Snapshot.h say them.
std::vector<std::int64_t> lineStarts(const std::string& text, LineMode mode) {
  std::vector<std::int64_t> starts{0};
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text[i] == (mode == LineMode::lf ? '\n' : '\r')) starts.push_back(static_cast<std::int64_t>(i) + 1);
  return starts;
}

void compareText(const Snapshot& s, const std::string& model, test::Random& random) {
  ASSERT_EQ(s.bytes(), model);
  const auto size = static_cast<std::int64_t>(model.size());
  const auto starts = lineStarts(model, s.lineMode());
  const auto lines = std::ssize(starts);
  ASSERT_EQ(s.lineCount(), lines);
  for (int i = 0; i < 3; ++i) {
    const auto k = random.upTo(lines);
    const LineNo line(k);
    const auto begin = starts[static_cast<std::size_t>(k)];
    const auto behind = k + 1 < lines ? starts[static_cast<std::size_t>(k) + 1] : size;
    LineBreak kind = LineBreak::none;
    if (k + 1 < lines) {
      kind = s.lineMode() == LineMode::cr ? LineBreak::cr : LineBreak::lf;
      if (kind == LineBreak::lf && behind - begin > 1 && model[static_cast<std::size_t>(behind) - 2] == '\r')
        kind = LineBreak::crlf;
    }
    ASSERT_EQ(s.lineStart(line).value, begin);
    ASSERT_EQ(s.lineEndWithBreak(line).value, behind);
    ASSERT_EQ(s.lineBreak(line), kind);
    ASSERT_EQ(s.lineEnd(line).value, behind - std::ssize(breakBytes(kind)));
    const auto offset = random.upTo(size + 1);
    const auto holds = std::upper_bound(starts.begin(), starts.end(), offset) - starts.begin() - 1;
    ASSERT_EQ(s.lineAt(ByteOffset(offset)).value, holds);
    const auto after = s.chunkAt(ByteOffset(offset)), ahead = s.chunkBefore(ByteOffset(offset));
    ASSERT_EQ(after.empty(), offset == size);
    ASSERT_EQ(ahead.empty(), offset == 0);
    ASSERT_EQ(after, model.substr(static_cast<std::size_t>(offset), after.size()));
    ASSERT_EQ(ahead, model.substr(static_cast<std::size_t>(offset) - ahead.size(), ahead.size()));
    if (offset < size) { ASSERT_EQ(s.at(ByteOffset(offset)), model[static_cast<std::size_t>(offset)]); }
  }
}

void compareChange(const Change& change, const std::string& old, const std::string& now, LineMode mode) {
  const char breaker = mode == LineMode::lf ? '\n' : '\r';
  std::size_t atOld = 0, atNow = 0;
  for (const auto& span : change.spans) {
    const auto begin = static_cast<std::size_t>(span.begin.value);
    ASSERT_GE(begin, atNow) << "spans ascend";
    const auto kept = begin - atNow;
    ASSERT_EQ(old.substr(atOld, kept), now.substr(atNow, kept)) << "what no span names is as it was";
    const auto gone = old.substr(atOld + kept, static_cast<std::size_t>(span.removed));
    const auto came = now.substr(begin, static_cast<std::size_t>(span.inserted));
    ASSERT_EQ(span.linesRemoved, std::ranges::count(gone, breaker));
    ASSERT_EQ(span.linesInserted, std::ranges::count(came, breaker));
    ASSERT_EQ(span.firstLine.value, std::count(now.begin(), now.begin() + span.begin.value, breaker));
    atOld += kept + gone.size();
    atNow = begin + came.size();
  }
  ASSERT_EQ(old.substr(atOld), now.substr(atNow));
}

struct Shape {
  const char* name;
  TreeShape sizes;
  LineMode mode;
  std::int64_t textSize;                      // about which the text's size wavers
  std::size_t steps = 60, bytes = SIZE_MAX;   // limits of undo
};

class Trial {
 public:
  Trial(const Shape& shape, test::Random& random) : shape_(shape), random_(random) {
    document_.reset(build(now_.text));
    document_.setUndoLimit(shape_.steps, shape_.bytes);
    handle_ = document_.subscribe([this](const Change& change) { heard_.push_back(change); });
  }

  void step() {
    learnWhatWasDropped();
    const auto before = now_;
    heard_.clear();
    std::size_t expected = 0;   // notifications
    switch (random_.upTo(19)) {
      case 0:
      case 1:
      case 2: expected = undo(); break;
      case 3:
      case 4: expected = redo(); break;
      case 5:
        if (groupDepth_ < 2) beginGroup();
        break;
      case 6:
        if (groupDepth_ > 0) expected = endGroup();
        break;
      case 7:
        if (groupDepth_ > 0 && random_.oneIn(3)) expected = rollback();
        break;
      case 8: moveMarks(); break;
      case 9: hold(); break;
      case 10:
        if (random_.oneIn(4)) {
          document_.markSaved();
          saved_ = now_.state;
        } else document_.breakJoin();
        runOpen_ = false;
        break;
      case 11:
      case 12:
      case 13: expected = type(); break;
      case 14:
        if (random_.oneIn(6)) expected = exchange();
        break;
      case 15: expected = inRun_ ? endRun() : beginRun(); break;
      default: expected = edit(); break;
    }
    ASSERT_EQ(heard_.size(), expected);
    for (const auto& change : heard_) {
      ASSERT_EQ(change.revision, document_.revision());
      compareChange(change, before.text, now_.text, shape_.mode);
      for (auto& mark : marks_) mark.move(change);
    }
    document_.checkInvariants();
    compareText(document_.snapshot(), now_.text, random_);
    for (const auto& mark : marks_) ASSERT_EQ(document_.markAt(mark.id).value, mark.at);
    ASSERT_EQ(document_.modified(), now_.state != saved_);
    learnWhatWasDropped();
    ASSERT_EQ(document_.canUndo(), groupDepth_ == 0 && !done_.empty());
    ASSERT_EQ(document_.canRedo(), groupDepth_ == 0 && !undone_.empty());
    ASSERT_EQ(document_.undoWasDropped(), dropped_);
    if (!held_.empty()) {
      const auto& [snapshot, text] = held_[static_cast<std::size_t>(random_.upTo(std::ssize(held_)))];
      ASSERT_EQ(snapshot.bytes(), text) << "a snapshot changed";
    }
  }

 private:
  struct State {
    std::string text;
    int state = 0;
  };

  // A random text, made of several blocks.
  Snapshot build(std::string& text) {
    SnapshotBuilder builder(shape_.mode, shape_.sizes);
    text.clear();
    for (int i = 0; i < 4; ++i) {
      auto part = random_.text(random_.upTo(shape_.textSize / 4 + 1));
      text += part;
      builder.append(std::move(part));
    }
    return builder.finish();
  }

  void recordStep(State before) {
    undone_.clear();
    done_.push_back(std::move(before));
    olderUndone_ = 0;
    dropOldest();
  }
  void dropOldest() {
    while (!inRun_ && done_.size() > shape_.steps) {
      done_.pop_front();
      dropped_ = true;
    }
  }
  // The number of steps that a limit of bytes leaves is not specified; that older steps are dropped whole is.
  void learnWhatWasDropped() {
    if (shape_.bytes == SIZE_MAX) return;
    ASSERT_TRUE(document_.undoWasDropped() || !dropped_);
    dropped_ = document_.undoWasDropped();
    if (groupDepth_ > 0 || document_.canUndo() || done_.empty()) return;
    ASSERT_TRUE(dropped_);
    done_.clear();
    older_ = 0;
  }

  // The text has become another one, by a step of its own or one that joined the last.
  std::size_t changeTo(std::string fresh, bool joins = false) {
    if (groupDepth_ > 0) groupChanged_ = true;
    else if (!joins) recordStep(now_);
    undone_.clear();
    now_ = {std::move(fresh), ++lastState_};
    runOpen_ = false;
    return 1;
  }

  std::size_t type() {
    const auto size = std::ssize(now_.text);
    const auto at = runOpen_ && !random_.oneIn(5) ? runEnd_ : random_.upTo(size + 1);
    const auto over = random_.oneIn(4) ? std::min<std::int64_t>(1, size - at) : 0;
    const auto text = random_.text(1);
    auto fresh = now_.text;
    fresh.replace(static_cast<std::size_t>(at), static_cast<std::size_t>(over), text);
    EXPECT_TRUE(document_.apply(Edit{{ByteOffset(at), ByteOffset(at + over)}, text}, {}, Join::typing));
    if (over == std::ssize(text) && fresh == now_.text) return 0;
    changeTo(std::move(fresh), groupDepth_ == 0 && runOpen_ && at == runEnd_);
    runOpen_ = groupDepth_ == 0 && !inRun_;
    runEnd_ = at + std::ssize(text);
    return 1;
  }

  std::size_t exchange() {
    std::string fresh;
    const auto snapshot = build(fresh);
    EXPECT_TRUE(document_.exchange(snapshot, {}));
    return fresh == now_.text ? 0 : changeTo(std::move(fresh));
  }

  std::size_t edit() {
    std::vector<Edit> edits;
    const auto size = std::ssize(now_.text);
    const bool grow = size < shape_.textSize;
    const auto many = random_.oneIn(4) ? random_.upTo(12) : 1;
    for (std::int64_t i = 0, at = 0; i < many && at <= size; ++i) {
      const auto begin = at + random_.upTo(size - at + 1);
      auto length = random_.oneIn(2) ? 0 : random_.upTo(grow ? 4 : 12);
      if (random_.oneIn(60)) length = size;
      length = std::min(length, size - begin);
      std::string text = random_.oneIn(3) ? "" : random_.text(random_.upTo(grow ? 8 : 3));
      if (random_.oneIn(10)) text = now_.text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(length));
      edits.push_back({{ByteOffset(begin), ByteOffset(begin + length)}, std::move(text)});
      at = begin + length;
    }
    std::string fresh = now_.text;
    bool changes = false;
    for (auto e = edits.rbegin(); e != edits.rend(); ++e) {
      const auto begin = static_cast<std::size_t>(e->range.begin.value), length = static_cast<std::size_t>(e->range.length());
      changes = changes || fresh.compare(begin, length, e->text) != 0;
      fresh.replace(begin, length, e->text);
    }
    EXPECT_TRUE(document_.apply(edits, {}));
    return changes ? changeTo(std::move(fresh)) : 0;
  }

  std::size_t undo() {
    const bool can = groupDepth_ == 0 && !done_.empty();
    EXPECT_EQ(document_.undo().has_value(), can);
    if (!can) return 0;
    runOpen_ = false;
    undone_.push_back(std::move(now_));
    now_ = std::move(done_.back());
    done_.pop_back();
    if (done_.size() < older_) {
      --older_;
      ++olderUndone_;
    }
    return 1;
  }
  std::size_t redo() {
    const bool can = groupDepth_ == 0 && !undone_.empty();
    EXPECT_EQ(document_.redo().has_value(), can);
    if (!can) return 0;
    runOpen_ = false;
    done_.push_back(std::move(now_));
    now_ = std::move(undone_.back());
    undone_.pop_back();
    if (olderUndone_ > 0) {
      --olderUndone_;
      ++older_;
    }
    return 1;
  }

  std::size_t beginRun() {
    if (groupDepth_ > 0) return 0;
    document_.beginRun();
    inRun_ = true;
    runOpen_ = false;
    older_ = done_.size();
    olderUndone_ = 0;
    return 0;
  }
  // What is left of the run becomes one step; steps older than it stay as they are.
  std::size_t endRun() {
    if (groupDepth_ > 0) return 0;
    std::size_t told = 0;
    if (done_.size() > older_ && done_[older_].text == now_.text) {   // such a run may leave no step; make it differ
      document_.apply(Edit{{}, "x"}, {});
      told = changeTo("x" + now_.text);
    }
    document_.endRun();
    inRun_ = runOpen_ = false;
    if (done_.size() > older_) done_.resize(older_ + 1);
    dropOldest();
    while (!undone_.empty() && done_.size() + undone_.size() > shape_.steps) undone_.erase(undone_.begin());
    return told;
  }

  void beginGroup() {
    document_.beginGroup();
    if (groupDepth_++ == 0) {
      groupStart_ = now_;
      groupChanged_ = false;
    }
  }
  std::size_t endGroup() {
    std::size_t told = 0;
    if (groupDepth_ == 1 && groupChanged_ && now_.text == groupStart_.text) {
      // A group whose changes took one another back may leave no step; make it differ.
      document_.apply(Edit{{}, "x"}, {});
      told = changeTo("x" + now_.text);
    }
    document_.endGroup();
    runOpen_ = false;
    if (--groupDepth_ == 0 && groupChanged_) recordStep(groupStart_);
    return told;
  }
  std::size_t rollback() {
    const auto revision = document_.revision();
    document_.rollbackGroup();
    if (!groupChanged_) {
      EXPECT_EQ(document_.revision(), revision);
      return 0;
    }
    groupChanged_ = false;
    now_ = groupStart_;
    return heard_.size() <= 1 ? heard_.size() : 1;   // silent when the changes took one another back
  }

  void moveMarks() {
    const auto at = random_.upTo(std::ssize(now_.text) + 1);
    if (marks_.size() < 12) {
      const auto bias = static_cast<Bias>(random_.upTo(4));
      marks_.push_back({document_.addMark(ByteOffset(at), bias), at, bias});
      return;
    }
    const auto index = random_.upTo(std::ssize(marks_));
    auto& mark = marks_[static_cast<std::size_t>(index)];
    document_.removeMark(mark.id);
    EXPECT_THROW((void)document_.markAt(mark.id), std::out_of_range);
    marks_.erase(marks_.begin() + index);
  }

  void hold() {
    if (held_.size() > 6) held_.erase(held_.begin() + random_.upTo(std::ssize(held_)));
    held_.emplace_back(document_.snapshot(), now_.text);
  }

  const Shape& shape_;
  test::Random& random_;
  Document document_;
  std::shared_ptr<void> handle_;
  std::vector<Change> heard_;
  State now_, groupStart_;
  std::deque<State> done_;
  std::vector<State> undone_;
  int lastState_ = 0, saved_ = 0, groupDepth_ = 0;
  std::size_t older_ = 0, olderUndone_ = 0;   // steps done and undone that are older than the open run
  std::int64_t runEnd_ = 0;
  bool inRun_ = false;
  bool groupChanged_ = false, dropped_ = false, runOpen_ = false;   // runOpen_: typing at runEnd_ joins the last step
  std::vector<test::ModelMark> marks_;
  std::vector<std::pair<Snapshot, std::string>> held_;
};

class RandomEdits : public testing::TestWithParam<Shape> {};

TEST_P(RandomEdits, EqualAPlainString) {
  test::Random random;
  SCOPED_TRACE(random.message());
  Trial run(GetParam(), random);
  const auto count = test::steps(6000);
  for (std::int64_t i = 0; i < count; ++i) {
    run.step();
    if (HasFatalFailure() || HasNonfatalFailure()) FAIL() << "at step " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, RandomEdits,
                         testing::Values(Shape{"one_byte_pieces", {4, 1, 8, 3, 0}, LineMode::lf, 40},
                                         Shape{"tiny_nodes", {4, 7, 16, 4, 5}, LineMode::lf, 600},
                                         Shape{"tiny_nodes_cr", {6, 5, 64, 6}, LineMode::cr, 300},
                                         Shape{"usual", {}, LineMode::lf, 400},
                                         Shape{"no_undo", {4, 7, 16, 4}, LineMode::lf, 60, 0},
                                         Shape{"one_undo_step", {4, 7, 16, 4}, LineMode::lf, 60, 1},
                                         Shape{"three_undo_steps", {4, 1, 8, 3}, LineMode::cr, 60, 3},
                                         Shape{"undo_of_few_bytes", {4, 7, 16, 4}, LineMode::lf, 200, SIZE_MAX, 1500},
                                         Shape{"undo_of_no_bytes", {4, 7, 16, 4}, LineMode::lf, 200, 1000, 1}),
                         [](const auto& shape) { return std::string(shape.param.name); });

}   // namespace
