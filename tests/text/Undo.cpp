// Steps of undo: what joins, groups, the save point, limits, selections. Each case is a script that is played on a document.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "text/store/Document.h"
#include "text/store/Tree.h"

namespace {

using namespace text;

// The commands of a script:
//   i3:ab  insert "ab" at 3          t3:ab  the same as typing         o3,2:ab  typing that replaces 2 bytes
//   d3,2   delete 2 bytes at 3       D3,2   the same as a run of Delete or Backspace
//   u r    undo, redo                u- r-  the same, refused           ( ) x   begin, end, roll back a group
//   < > A  begin, end, abandon a run
//   s L    mark saved, unsaved       b      break the run              R W      read only, writable
//   l3     limit of 3 steps          =ab    the text is "ab"           m !m w   modified, not modified, steps were dropped
void play(Document& d, const std::string& script) {
  std::size_t at = 0;
  while (at < script.size()) {
    const auto end = std::min(script.find(' ', at), script.size());
    const auto word = script.substr(at, end - at);
    at = end + 1;
    const char* rest = word.c_str() + 1;
    char* behind = nullptr;
    const auto begin = std::strtoll(rest, &behind, 10);
    const auto length = *behind == ',' ? std::strtoll(behind + 1, &behind, 10) : 0;
    const std::string text = *behind == ':' ? behind + 1 : "";
    const Edit edit{{ByteOffset(begin), ByteOffset(begin + length)}, text};
    SCOPED_TRACE(script.substr(0, end));
    switch (word[0]) {
      case 'i':
      case 'd': ASSERT_EQ(d.apply(edit, {}), !d.readOnly()); break;
      case 't':
      case 'o': ASSERT_TRUE(d.apply(edit, {}, Join::typing)); break;
      case 'D': ASSERT_TRUE(d.apply(edit, {}, Join::deleting)); break;
      case 'u':
        ASSERT_EQ(d.canUndo(), *rest != '-');
        ASSERT_EQ(d.undo().has_value(), *rest != '-');
        break;
      case 'r':
        ASSERT_EQ(d.canRedo(), *rest != '-');
        ASSERT_EQ(d.redo().has_value(), *rest != '-');
        break;
      case '(': d.beginGroup(); break;
      case ')': d.endGroup(); break;
      case 'x': d.rollbackGroup(); break;
      case '<': d.beginRun(); break;
      case '>': d.endRun(); break;
      case 'A':
        d.abandonRun();
        d.endRun();
        break;
      case 's': d.markSaved(); break;
      case 'L': d.markUnsaved(); break;
      case 'b': d.breakJoin(); break;
      case 'R': d.setReadOnly(true); break;
      case 'W': d.setReadOnly(false); break;
      case 'l': d.setUndoLimit(static_cast<std::size_t>(begin), SIZE_MAX); break;
      case '=': ASSERT_EQ(d.snapshot().bytes(), rest); break;
      case 'm': ASSERT_TRUE(d.modified()); break;
      case '!': ASSERT_FALSE(d.modified()); break;
      case 'w': ASSERT_TRUE(d.undoWasDropped()); break;
      default: FAIL() << "no such command: " << word;
    }
    d.checkInvariants();
  }
}

TEST(Undo, Scripts) {
  struct Case {
    const char *name, *start, *script;
  };
  const Case cases[] = {
      {"typing before other text", "xy", "t1:a t2:b =xaby u =xy r =xaby"},
      {"breaking the run", "", "t0:a b t1:b u =a u ="},
      {"overtyping is one step", "xyz", "o0,1:a o1,1:b =abz u =xyz r =abz"},
      {"a run of Delete", "abcdef", "D1,1 D1,1 D1,1 =aef u =abcdef r =aef"},
      {"a run of Backspace", "abcdef", "D4,1 D3,1 D2,1 =abf u =abcdef r =abf"},
      {"the direction of a run stays", "abcdef", "D2,1 D2,1 D1,1 =aef u =abef u =abcdef"},
      {"typing and deleting do not join", "ab", "t2:c D2,1 t2:d =abd u =ab u =abc u =ab"},
      {"edits of a group that overlap", "abcdef", "( i2:XYZ d1,3 i1:Q d0,7 i0:end ) =end u =abcdef r =end"},
      {"undo inside a run takes back its own change, then an older one", "",
       "t0:a b t1:b < t2:c t3:d u =abc u u =a r =ab i0:x r- > =xab u =ab u =a u ="},
      {"a run that undoes an older change and makes it again leaves it alone", "",
       "i0:a i1:b < i2:c i3:d u u u r r =abc > u =ab u =a r r r =abcd"},
      {"a run that is abandoned gives back what it undid", "", "i0:a i1:b i2:c < u u A =abc u =ab"},
      {"also behind changes of its own", "", "i0:a i1:b s i2:c i3:d < u i3:x u u i2:y A =abcd r- m u u =ab !m u =a"},
      {"a group that took itself back leaves no step", "ab", "s ( i1:x m d1,1 ) =ab !m u-"},
      {"roll back", "abc", "s ( i0:x d1,2 x =abc !m ) u- !m"},
      {"an edit that changes nothing", "abc", "d1,0 i1: o0,1:a u- !m"},
      {"saved inside a group", "", "( i0:a s !m i1:b m ) m u m r m"},
      {"marked as lost", "", "s L m i0:a u m s !m"},
      {"read only", "ab", "i0:x R i0:y =xab u- W u =ab R r- W r =xab"},
      {"a limit and the save point", "", "l1 s i0:a m i1:b u =a m u-"},
      {"a limit set later", "", "i0:a t1:b i2:c l1 w u =ab u-"},
  };
  for (const auto& c : cases) {
    for (const bool tiny : {false, true}) {
      SCOPED_TRACE(std::string(c.name) + (tiny ? ", tiny nodes" : ""));
      SnapshotBuilder builder(LineMode::lf, tiny ? TreeShape{4, 2, 4, 2} : TreeShape());
      builder.append(std::string(c.start));
      Document d;
      d.reset(builder.finish());
      play(d, c.script);
    }
  }
}

TEST(Undo, SelectionsComeBack) {
  const auto caret = [](std::int64_t at) { return SelectionState{ByteOffset(at), ByteOffset(at)}; };
  const SelectionState column{ByteOffset(0), ByteOffset(2), 3, 4, true};
  Document d;
  d.apply(Edit{{}, "ab"}, caret(0), Join::typing);
  d.apply(Edit{{ByteOffset(2), ByteOffset(2)}, "c"}, caret(2), Join::typing);
  d.apply(Edit{{}, "x"}, column);
  d.setSelectionAfter(caret(4));
  EXPECT_EQ(d.undo(), column);
  EXPECT_EQ(d.undo(), caret(0)) << "the selection before the whole run";
  EXPECT_EQ(d.redo(), caret(3)) << "not set: the end of the edit";
  EXPECT_EQ(d.redo(), caret(4));
}

TEST(Undo, AGroupWithoutAChangeDropsNoStep) {
  Document undone;
  undone.setUndoLimit(SIZE_MAX, 100000);
  for (const std::size_t length : {std::size_t{2}, std::size_t{2}, std::size_t{200000}})
    undone.apply(Edit{{}, std::string(length, 'c')}, {});
  undone.undo();   // what redo brings back weighs more than the limit
  { const UndoGroup nothing(undone); }
  EXPECT_TRUE(undone.undo() && undone.undo());
}

TEST(Undo, RefusesEditsThatAreNotInOrder) {
  Document d;
  d.reset(Snapshot("0123456789"));
  const auto edit = [](std::int64_t b, std::int64_t e) { return Edit{{ByteOffset(b), ByteOffset(e)}, "x"}; };
  const std::vector<Edit> refused[] = {
      {edit(-1, 0)}, {edit(4, 3)}, {edit(9, 11)}, {edit(0, 5), edit(4, 6)}, {edit(5, 6), edit(1, 2)}};
  for (const auto& edits : refused) EXPECT_FALSE(d.apply(edits, {}));
  EXPECT_EQ(d.snapshot().bytes(), "0123456789");
  EXPECT_FALSE(d.canUndo());
}

TEST(Undo, ListenersHearOnceAndMayLeave) {
  std::vector<std::string> heard;
  std::shared_ptr<void> first, second;
  {
    Document d;
    first = d.subscribe([&](const Change&) {
      heard.push_back("first");
      second.reset();
      EXPECT_FALSE(d.apply(Edit{{}, "y"}, {})) << "a listener may not change the text";
      EXPECT_FALSE(d.undo().has_value());
    });
    second = d.subscribe([&](const Change&) { heard.push_back("second"); });
    const auto failing = d.subscribe([&](const Change&) -> void { throw std::runtime_error("from a listener"); });
    const auto last = d.subscribe([&](const Change& change) { heard.push_back("last " + std::to_string(change.revision)); });
    EXPECT_THROW(d.apply(Edit{{}, "x"}, {}), std::runtime_error);
    EXPECT_EQ(heard, (std::vector<std::string>{"first", "last 1"}));
    EXPECT_EQ(d.snapshot().bytes(), "x");
    EXPECT_THROW(d.undo(), std::runtime_error);
    EXPECT_EQ(d.snapshot().bytes(), "");
    const auto group = [&d] {
      const UndoGroup step(d);
      d.apply(Edit{{}, "z"}, {});
    };
    EXPECT_THROW(group(), std::runtime_error) << "and not the end of the program";
    EXPECT_EQ(d.snapshot().bytes(), "");
  }
  first.reset();   // outlives the document
}

}   // namespace
