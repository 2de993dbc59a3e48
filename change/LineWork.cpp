#include "change/LineWork.h"

#include "base/Program.h"
#include "bridge/LongWork.h"
#include "control/edit/Carets.h"
#include "text/store/SmallestEdit.h"

namespace {
text::ByteOffset startOf(const text::Snapshot& text, qint64 line) {
  return line < text.lineCount() ? text.lineStart(text::LineNo(line)) : text.size();
}
}   // namespace

LineWork::LineWork(text::Snapshot text, LineRange lines, text::SearchControl& control)
    : text_(std::move(text)),
      lines_(lines),
      control_(control),
      reader_(text_, text::LineNo(lines.first)),
      first_(startOf(text_, lines.first)) {}

bool LineWork::next(std::string_view* line) {
  if (control_.cancel || reader_.line().value + 1 >= lines_.end || !reader_.next(line)) return false;
  control_.bytesDone = reader_.start() - first_;
  return true;
}

void LineWork::replace(std::string_view before, std::string_view after) {
  auto edit = text::smallestEdit(start(), before, after);
  if (!edit) return;
  edits.push_back(std::move(*edit));
  ++changed;
}

void LineWork::remove(LineRange gone) {
  const bool atEnd = gone.end == text_.lineCount() && gone.first > 0;
  edits.push_back(
      {{atEnd ? text_.lineEnd(text::LineNo(gone.first - 1)) : startOf(text_, gone.first), startOf(text_, gone.end)}, {}});
  changed += gone.end - gone.first;
}

qint64 LineWork::run(CodeMax& cmx, LineRange lines, const QString& what, const std::function<void(LineWork&)>& service,
                     QString* error) {
  if (cmx.ReadOnly() || lines.first >= lines.end) return 0;
  const text::Snapshot text = cmx.model()->snapshot();
  text::Document& document = cmx.model()->document();
  const std::uint64_t revision = document.revision();
  std::vector<text::Edit> edits;
  qint64 changed = 0;
  QString failure;
  const auto work = [&](text::SearchControl& control) {
    LineWork own(text, lines, control);
    service(own);
    if (own.isCancelled()) return;
    failure = own.error;
    if (!failure.isEmpty()) return;
    edits = std::move(own.edits);
    changed = own.changed;
  };
  LongWork::run(cmx, startOf(text, lines.end) - startOf(text, lines.first), work, what, true);
  if (error) *error = failure;
  if (edits.empty() || document.revision() != revision) return 0;
  const BusyGuard busy;
  const EditBlock block(cmx);
  carets::editAround(cmx.editor(), edits);
  return changed;
}
