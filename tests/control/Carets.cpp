// Several carets: random edits against a string and a list of carets, and what each kind of command does with them.
#include "control/edit/Carets.h"

#include <algorithm>

#include "control/code/LanguageTable.h"
#include "tests/control/EditorFixture.h"
#include "tests/support/Cost.h"
#include "tests/text/RandomText.h"

using text::ByteOffset;

namespace {

// Each '|' is a caret; "@ab|" selects. The last one is the main one. CR LF and blanks stand as they are.
struct Marked {
  std::string bytes;
  std::vector<Caret> carets;
};

Marked parse(std::string_view marked) {
  Marked result;
  std::optional<ByteOffset> anchor;
  for (const char c : marked) {
    const ByteOffset here(static_cast<std::int64_t>(result.bytes.size()));
    if (c == '@') anchor = here;
    else if (c == '|') result.carets.push_back({std::exchange(anchor, std::nullopt).value_or(here), here});
    else result.bytes += c;
  }
  return result;
}

struct CaretsFixture : EditorFixture {
  explicit CaretsFixture(std::string_view marked) {
    Marked parsed = parse(marked);
    model->replaceAll(text::Snapshot(parsed.bytes), {});
    model->setEnableCrlf(false);
    const std::size_t main = parsed.carets.size() - 1;
    carets::set(editor, std::move(parsed.carets), main);
  }
  // Selections as "@ab|", whichever way they look.
  std::string shownAll() const {
    std::string result = bytes();
    std::vector<Caret> all = carets::all(editor);
    for (auto caret = all.rbegin(); caret != all.rend(); ++caret) {
      result.insert(static_cast<std::size_t>(caret->end().value), "|");
      if (!caret->empty()) result.insert(static_cast<std::size_t>(caret->begin().value), "@");
    }
    return result;
  }
};

}   // namespace

TEST(Carets, CommandsWorkAtEach) {
  struct Case {
    const char *command, *before, *after;
  };
  for (const Case& c : std::vector<Case>{
           {"CHARRIGHT", "|ab\n|cd", "a|b\nc|d"},
           {"CHARLEFT", "a|b|", "|a|b"},
           {"CHARRIGHT", "a|b|", "ab|"},   // two that meet are one
           {"LINEDOWN", "abc|\nd|\nefg", "abc\nd|\ne|fg"},
           {"WORDRIGHTEXTEND", "|ab cd\n|ef gh", "@ab| cd\n@ef| gh"},
           {"DELETEBACK", "ab|c|\nd|", "a|\n|"},
           {"DELETEBACK", "@ab|c\nd|", "|c\n|"},
           {"DELETE", "a|b\n|c", "a|\n|"},
           {"DELETE", "a|\n|b", "a|"},
           {"WORDDELETETOSTART", "al|pha|", "|"},
           {"NEWLINE", "  a|b\n  c|d", "  a\n  |b\n  c\n  |d"},
           {"LINEDELETE", "a|b|\nc\nd|e\n", "|c\n|"},
           {"INDENTSELECTION", "a|b|\nc|", "\ta|b|\n\tc|"},
           {"UNINDENTSELECTION", "\ta|b|\n\tc|", "a|b|\nc|"},
           {"UPPERCASESELECTION", "@ab|c@de|", "@AB|c@DE|"},
           {"WORDUPPERCASE", "a|b c|d", "AB| CD|"},
           {"WORDUPPERCASE", "ab|cd ef|\n gh|i", "ABCD| EF|\n GHI|"},
           {"LINESMOVEUP", "0\na|\n1\nb|b\n@c|\n", "a|\n0\nb|b\n@c|\n1\n"},
           {"LINESMOVEDOWN", "a|\n1\n@b|b\n2\n", "1\na|\n2\n@b|b\n"},
           {"LINEOPENBELOW", "a|\nb|c", "a\n|\nbc\n|"},
           {"SELECTLINE", "a|b\ncd\ne|f", "@ab\n|cd\n@ef|"},
           {"DOCUMENTEND", "a|b\nc|d", "ab\ncd|"},
           {"CHARTRANSPOSE", "a|b c|d", "ba| dc|"},
           {"CARETADDBELOW", "abc|\nd\nefg", "abc|\nd|\nefg"},
           {"CARETADDABOVE", "a\nb|\nc|", "a|\nb|\nc|"},
           {"CARETADDNEXT", "a|b ab abc ab", "@ab| ab abc ab"},
           {"CARETADDNEXT", "@ab| ab abc ab", "@ab| @ab| abc ab"},
           {"CARETADDALL", "ab |ab abc Ab", "@ab| @ab| abc Ab"},
           {"CARETSINSELECTION", "@a\nbc\n|d", "a|\nbc|\nd"},
           {"CARETSEND", "a|b|c", "ab|c"},
           {"DROPSELECTION", "@a|b@c|", "ab@c|"},
           {"SELECTALL", "a|b|c", "@abc|"},
       }) {
    CaretsFixture f(c.before);
    ASSERT_TRUE(f.run(c.command)) << c.command;
    EXPECT_EQ(f.shownAll(), c.after) << c.command << " in " << c.before;
    f.run("UNDO");
    if (parse(c.before).bytes == parse(c.after).bytes) continue;
    EXPECT_EQ(f.shownAll(), c.before) << "undone: " << c.command;
    f.run("REDO");
    EXPECT_EQ(f.shownAll(), c.after) << "done again: " << c.command;
  }
}

TEST(Carets, AddingUpAndDownNeverDoubles) {
  CaretsFixture f("abcd\na\nabc|d\n\nabcd");
  for (const char* command : {"CARETADDABOVE", "CARETADDABOVE", "CARETADDBELOW", "CARETADDABOVE", "CARETADDBELOW"}) f.run(command);
  EXPECT_EQ(f.shownAll(), "abc|d\na|\nabc|d\n|\nabc|d") << "the column is kept over short lines";
  f.editor.typeText(QStringLiteral("x"));
  f.editor.typeText(QStringLiteral("y"));
  EXPECT_EQ(f.shownAll(), "abcxy|d\naxy|\nabcxy|d\nxy|\nabcxy|d");
  f.run("UNDO");
  EXPECT_EQ(f.shownAll(), "abc|d\na|\nabc|d\n|\nabc|d") << "typing is one step";
}

TEST(Carets, TheirChangesCanBeTakenBack) {
  CaretsFixture f("a|b ab ab");
  const auto back = [&f] {
    f.run("CARETUNDO");
    return f.shownAll();
  };
  for (const char* command : {"CARETADDNEXT", "CARETADDNEXT", "CARETADDNEXT", "CHARRIGHT", "DROPSELECTION"}) f.run(command);
  EXPECT_EQ(f.shownAll(), "ab ab ab|");
  EXPECT_EQ(back(), "ab| ab| ab|") << "after Esc";
  EXPECT_EQ(back(), "@ab| @ab| @ab|");
  EXPECT_EQ(back(), "@ab| @ab| ab") << "the last one that was added";
  f.editor.typeText(QStringLiteral("x"));
  EXPECT_EQ(back(), "x| x| ab") << "not over a change of the text";
  f.run("CARETSEND");
  EXPECT_EQ(back(), "x| x| ab");
}

TEST(Carets, ManyAreOneStepToo) {
  std::string text, typed;
  std::vector<Caret> list;
  for (std::int64_t line = 0; line < 3000; ++line) {
    list.push_back({ByteOffset(3 * line + 1), ByteOffset(3 * line + 1)});
    text += "ab\n";
    typed += "axyb\n";
  }
  CaretsFixture f("|" + text);
  carets::set(f.editor, list, 7);
  for (const char* key : {"x", "y"}) f.editor.typeText(QString::fromLatin1(key));
  EXPECT_EQ(f.bytes(), typed);
  f.run("UNDO");
  EXPECT_EQ(f.bytes(), text);
  EXPECT_EQ(carets::all(f.editor), list);
  f.run("REDO");
  EXPECT_EQ(f.bytes(), typed);
  EXPECT_EQ(f.editor.selection().caret, ByteOffset(7 * 5 + 3)) << "the main one";
}

TEST(Carets, AHundredThousandStayUsable) {
  constexpr std::int64_t kLines = 100000, kLine = 24;
  CaretsFixture f("|");
  std::string text;
  std::vector<Caret> list;
  for (std::int64_t line = 0; line < kLines; ++line) {
    text += "  signal_a <= signal_b;\n";
    list.push_back({ByteOffset(kLine * line + 5), ByteOffset(kLine * line + 5)});
  }
  f.model->replaceAll(text::Snapshot(std::move(text)), {});
  carets::set(f.editor, std::move(list), 0);
  for (const char* command : {"INSERTCHAR", "DELETEBACK", "NEWLINE", "CHARRIGHT", "LINEUP", "UNDO"}) {
    const double before = spentMs();
    f.run(command, QStringLiteral("x"));
    const double cost = spentMs() - before;
    EXPECT_LT(cost, 5000) << command << ": more than each caret costs by itself";
  }
  EXPECT_EQ(carets::count(f.editor), static_cast<std::size_t>(kLines));
}

TEST(Carets, ClosersStepBackAtEach) {
  CmLanguage language;
  language.BlockStart = QStringLiteral("begin\n");
  language.BlockEnd = QStringLiteral("end\n");
  LanguageTable::registerLanguage(QStringLiteral("Blocks"), language);
  CaretsFixture f("begin\n\ta;\n\ten|\nx\nbegin\n\tb;\n\ten|\n");
  f.options->autoIndent = AutoIndent::language;
  f.model->setLanguage(QStringLiteral("Blocks"));
  f.editor.typeText(QStringLiteral("d"));
  EXPECT_EQ(f.shownAll(), "begin\n\ta;\nend|\nx\nbegin\n\tb;\nend|\n");
  f.run("UNDO");
  EXPECT_EQ(f.shownAll(), "begin\n\ta;\n\ten|\nx\nbegin\n\tb;\n\ten|\n") << "one step, with the carets";
  LanguageTable::unregisterLanguage(QStringLiteral("Blocks"));
}

TEST(Carets, CopiesGoBackPieceByPiece) {
  CaretsFixture f("@ab| @cd|\n|");
  f.run("COPY");
  EXPECT_EQ(f.host.clipboard, QStringLiteral("ab\ncd\n"));
  f.run("CHARRIGHT");
  f.run("PASTE");
  EXPECT_EQ(f.shownAll(), "abab| cdcd|\n|") << "as many carets as pieces";

  CaretsFixture lines("a|b\ncd\ne|f\n");
  lines.run("CUT");
  EXPECT_EQ(lines.host.clipboard, QStringLiteral("ab\nef\n")) << "whole lines stay whole";
  EXPECT_EQ(lines.shownAll(), "|cd\n|");
  lines.run("PASTE");
  EXPECT_EQ(lines.bytes(), "ab\ncd\nef\n");
  lines.run("CARETSEND");
  lines.run("PASTE");
  EXPECT_EQ(lines.bytes(), "ab\ncd\nef\nab\nef\n") << "one caret takes all";

  const auto cut = [](const char* marked, const char* command) {
    CaretsFixture over(marked);
    over.run(command);
    return over.bytes() + '-' + over.host.clipboard.toStdString();
  };
  EXPECT_EQ(cut("@a\nb|b@b\nc|\nd\n", "LINECUT"), "d\n-a\nbbb\nc\n") << "all that goes is on the clipboard";
  EXPECT_EQ(cut("x\nl|i@n\nm|n", "CUT"), "x\nn-lin\nm");

  CaretsFixture other("|a|");
  other.host.clipboard = QStringLiteral("x\ny");
  other.run("PASTE");
  EXPECT_EQ(other.bytes(), "x\nyax\ny") << "two lines that two carets have not copied";
}

TEST(Carets, OthersMoveWithTheText) {
  CaretsFixture f("a|b@cd|ef|");
  f.model->document().apply(text::Edit{{ByteOffset(0), ByteOffset(3)}, "xyz1"}, {});
  EXPECT_EQ(f.shownAll(), "x|y@z1d|ef|");
  f.editor.replaceRange({ByteOffset(0), ByteOffset(0)}, QStringLiteral("."));   // by the program, at the main one
  EXPECT_EQ(carets::count(f.editor), 3u);
  f.model->replaceAll(text::Snapshot("new"), {});
  EXPECT_EQ(f.shownAll(), "|new");
  CaretsFixture joined("a|b a\r|x\n|");
  joined.model->document().apply(
      std::vector<text::Edit>{{{ByteOffset(0), ByteOffset(2)}, "\u4e2d"}, {{ByteOffset(5), ByteOffset(6)}, ""}}, {});
  EXPECT_EQ(joined.shownAll(), "|\u4e2d a|\r\n|") << "never within a character";
}

TEST(Carets, RandomEditsEqualAStringAndAList) {
  test::Random random;
  const std::string seed = random.message();
  const auto below = [&](std::int64_t n) { return static_cast<std::size_t>(random.upTo(n)); };
  struct Plain {
    std::string text;
    std::vector<std::pair<std::size_t, std::size_t>> carets;   // anchor, caret
    void arrange() {
      const auto first = [](const auto& c) { return std::min(c.first, c.second); };
      const auto last = [](const auto& c) { return std::max(c.first, c.second); };
      std::ranges::sort(carets, {}, [&](const auto& c) { return std::pair(first(c), last(c)); });
      std::vector<std::pair<std::size_t, std::size_t>> kept;
      for (const auto& c : carets) {
        const bool empty = c.first == c.second || (!kept.empty() && kept.back().first == kept.back().second);
        if (kept.empty() || first(c) > last(kept.back()) || (first(c) == last(kept.back()) && !empty)) kept.push_back(c);
        else kept.back() = {first(kept.back()), std::max(last(kept.back()), last(c))};
      }
      carets = kept;
    }
  };
  for (int round = 0; round < 60; ++round) {
    Plain plain{std::string(below(40), 'a'), {{0, 0}}};
    CaretsFixture f("|" + plain.text);
    std::vector<std::string> texts;
    for (int step = 0; step < 60; ++step) {
      const std::size_t what = below(6);
      const std::string before = plain.text;
      if (what == 0) {   // a selection or caret more
        const std::size_t a = below(std::ssize(plain.text) + 1), c = std::min(plain.text.size(), a + below(3));
        carets::add(f.editor, {ByteOffset(static_cast<std::int64_t>(a)), ByteOffset(static_cast<std::int64_t>(c))});
        plain.carets.push_back({a, c});
      } else if (what == 1 || what == 2) {
        f.run(what == 1 ? "CHARRIGHT" : "CHARRIGHTEXTEND");
        for (auto& [anchor, caret] : plain.carets) {
          const std::size_t right = anchor != caret && what == 1 ? std::max(anchor, caret) : std::min(plain.text.size(), caret + 1);
          anchor = what == 1 ? right : anchor;
          caret = right;
        }
      } else {   // replaces the selection, or puts in, or deletes the character before
        const std::string fresh(what == 3 ? 0 : 1 + below(2), static_cast<char>('a' + below(26)));
        if (what == 3) f.run("DELETEBACK");
        else f.editor.typeText(QString::fromStdString(fresh));
        for (std::size_t i = 0; i < plain.carets.size(); ++i) {
          auto [begin, end] = std::minmax({plain.carets[i].first, plain.carets[i].second});
          if (what == 3 && begin == end && begin > 0 && (i == 0 || plain.carets[i - 1].second < begin)) --begin;
          plain.text.replace(begin, end - begin, fresh);
          const std::size_t behind = begin + fresh.size();
          for (std::size_t k = i + 1; k < plain.carets.size(); ++k)
            for (std::size_t* at : {&plain.carets[k].first, &plain.carets[k].second}) *at = *at + fresh.size() - (end - begin);
          plain.carets[i] = {behind, behind};
        }
      }
      plain.arrange();
      std::vector<std::pair<std::size_t, std::size_t>> got, want;
      for (const Caret& c : carets::all(f.editor))
        got.emplace_back(static_cast<std::size_t>(c.begin().value), static_cast<std::size_t>(c.end().value));
      for (const auto& c : plain.carets) want.push_back(std::minmax({c.first, c.second}));
      ASSERT_EQ(f.bytes(), plain.text) << seed << ", step " << step;
      ASSERT_EQ(got, want) << seed << ", step " << step << ", what " << what;
      plain.carets.assign(got.begin(), got.end());   // which way they look is the editor's
      const auto looks = carets::all(f.editor);
      for (std::size_t i = 0; i < looks.size(); ++i)
        plain.carets[i] = {static_cast<std::size_t>(looks[i].anchor.value), static_cast<std::size_t>(looks[i].caret.value)};
      if (before != plain.text && below(4) == 0) {   // undone and done again, all is as it was
        const std::string shown = f.shownAll();
        f.run("UNDO");
        f.run("REDO");
        ASSERT_EQ(f.shownAll(), shown) << seed << ", step " << step;
      }
    }
  }
}
