#include "document/LineComments.h"

#include <QCoreApplication>
#include <optional>
#include <vector>

#include "base/Strings.h"
#include "bridge/LongWork.h"
#include "control/CodeMax.h"
#include "control/edit/Carets.h"
#include "text/line/LineReader.h"

namespace {

// Makes at most one edit in each selected line, as `editOf` returns it, as one undo step. A selection that starts at column 0 still
// covers whole lines afterwards. Only blanks may stand before an edit, and it changes the length of the line by `by` characters.
// Several carets go where their text goes.
template <class EditOf>
void editLines(CodeMax& control, const QString& what, qint64 by, EditOf editOf) {
  const std::vector<LineRange> ranges = carets::lines(control.editor(), LineAtEnd::included);
  CmRange selection = control.GetSel(false);
  const text::LineNo first(ranges.front().first), last(ranges.back().end - 1);
  text::Document& document = control.model()->document();
  const text::Snapshot text = document.snapshot();
  const std::uint64_t revision = document.revision();
  std::vector<text::Edit> edits;
  const auto work = [&](text::SearchControl& progress) {
    for (const LineRange& lines : ranges) {
      text::LineReader reader(text, text::LineNo(lines.first));
      std::string_view line;
      for (qint64 at = lines.first; at < lines.end && !progress.cancel && reader.next(&line); ++at) {
        progress.bytesDone = reader.start() - text.lineStart(first);
        if (std::optional<text::Edit> edit = editOf(line, reader.start())) edits.push_back(std::move(*edit));
      }
    }
    if (progress.cancel) edits.clear();
  };
  LongWork::run(control, text.lineEnd(last) - text.lineStart(first), work, what, true);
  if (edits.empty() || document.revision() != revision) return;
  if (carets::several(control.editor())) {
    const EditBlock block(control);
    carets::edit(control.editor(), edits);
    return;
  }
  const bool keepStart = !selection.IsEmpty();
  const auto move = [&](qint64 line, qint64& column) {
    for (const text::Edit* edit : {&edits.front(), &edits.back()}) {
      if (text.lineAt(edit->range.begin).value != line) continue;
      const qint64 from = edit->range.begin - text.lineStart(text::LineNo(line));
      if (column >= from && !(keepStart && column == 0)) column = std::max(from, column + by);
      return;
    }
  };
  move(selection.StartLineNo, selection.StartColNo);
  move(selection.EndLineNo, selection.EndColNo);
  const EditBlock block(control);
  document.apply(edits, control.editor().selection());
  control.SetSel(selection);
}

}   // namespace

void commentLines(CodeMax& control, const QString& mark) {
  if (mark.isEmpty() || control.ReadOnly()) return;
  const QString what = QCoreApplication::translate("frmDocument", "Commenting the lines");
  editLines(control, what, mark.size(), [bytes = fromQString(mark)](std::string_view, text::ByteOffset start) {
    return std::optional(text::Edit{{start, start}, bytes});
  });
}

void uncommentLines(CodeMax& control, const QString& mark) {
  if (mark.isEmpty() || control.ReadOnly()) return;
  const QString what = QCoreApplication::translate("frmDocument", "Uncommenting the lines");
  const auto editOf = [bytes = fromQString(mark)](std::string_view line, text::ByteOffset start) -> std::optional<text::Edit> {
    const std::size_t code = std::min(line.find_first_not_of(" \t"), line.size());
    const std::size_t at = line.substr(0, code + bytes.size()).find(bytes);   // the mark itself may begin with a blank
    if (at == std::string_view::npos) return std::nullopt;
    const text::ByteOffset begin = start + std::int64_t(at);
    return text::Edit{{begin, begin + std::int64_t(bytes.size())}, {}};
  };
  editLines(control, what, -mark.size(), editOf);
}
