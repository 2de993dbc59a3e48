#include "document/frmLog.h"

#include <QAction>
#include <QMenu>
#include <QRegularExpression>
#include <QResizeEvent>
#include <QStyle>
#include <QToolBar>
#include <algorithm>

#include "base/ArrowIcon.h"
#include "base/Counted.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "document/CMXRegistry.h"
#include "document/FileErrors.h"
#include "document/Frame.h"
#include "document/Messages.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"
#include "process/Process.h"
#include "text/line/LineReader.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int kOpenLineTime = 200;                // milliseconds until an incomplete line of a program is shown
constexpr std::int64_t kWalkCost = 32;            // cost of a byte of the log, in bytes of a search
constexpr qsizetype kLongestOpenLine = 1 << 16;   // bytes held back until the line ends
constexpr std::size_t kUndoSteps = 200, kUndoBytes = 16u << 20;

bool isPlain(QStringView text) {
  for (const QChar c : text)
    if (c.unicode() < 0x20 || c.unicode() >= 0x7F) return false;
  return true;
}

// Keeps line breaks and tabs; escapes all other invisible characters.
QString shown(const QString& text) {
  QString out;
  out.reserve(text.size());
  for (qsizetype i = 0; i < text.size();) {
    qsizetype stop = i;
    while (stop < text.size() && text[stop] != u'\n' && text[stop] != u'\r' && text[stop] != u'\t') ++stop;
    const QString piece = text.mid(i, stop - i);
    out += isPlain(piece) ? piece : plainForDisplay(piece, INT_MAX);
    if (stop < text.size()) out += text[stop];
    i = stop + 1;
  }
  return out;
}

// Number of bytes at the end that begin an incomplete character.
qsizetype incompleteTail(const QByteArray& bytes) {
  for (qsizetype back = 1; back <= 3 && back <= bytes.size(); ++back) {
    const uchar c = uchar(bytes[bytes.size() - back]);
    if ((c & 0xC0) == 0x80) continue;
    const qsizetype needed = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 1;
    return needed > back ? back : 0;
  }
  return 0;
}

// The part of a line that may be a message.
QString beginningOf(const text::Snapshot& log, text::LineNo line) {
  return toQString(text::beginOfLine(log, line, 4 * kLongestMessage)).left(kLongestMessage);
}

}   // namespace

// Output of a program that is not in the log yet: the beginning of a line.
struct frmLog::Channel {
  QByteArray open;
};

// A line of the log that refers to a position in a text.
struct frmLog::Walked {
  qint64 line = -1;
  MessagePlace place;   // its file is empty for lines of USAGE; column then counts from 0
};

// What wrote each line; updated with the changes of the text.
struct frmLog::Streams {
  static constexpr signed char kNone = -1;
  std::vector<signed char> lines{kNone};

  void follow(const text::Change& change, const text::Snapshot& now) {
    for (const auto& span : change.spans) {
      // The line in which the span begins keeps its flag if a part of it remains.
      const std::size_t kept = now.lineStart(span.firstLine) == span.begin && span.linesRemoved > 0 ? 0 : 1;
      const auto at = std::min<std::size_t>(std::size_t(span.firstLine.value) + kept, lines.size());
      const auto removed = std::min<std::size_t>(std::size_t(span.linesRemoved), lines.size() - at);
      lines.erase(lines.begin() + std::ptrdiff_t(at), lines.begin() + std::ptrdiff_t(at + removed));
      lines.insert(lines.begin() + std::ptrdiff_t(at), std::size_t(span.linesInserted), kNone);
    }
    if (change.reset) lines.clear();
    lines.resize(std::size_t(now.lineCount()), kNone);
  }
};

frmLog::frmLog(QWidget* parent)
    : QWidget(parent),
      cmx(new CodeMax(this)),
      stopAction(new QAction(tr("Stop the program"), this)),
      nextAction(new QAction(tr("Next message"), this)),
      previousAction(new QAction(tr("Previous message"), this)),
      streams_(std::make_unique<Streams>()) {
  setWindowTitle(tr("Log"));
  setFocusProxy(cmx);
  cmx->setEnableCRLF(true);
  CMXRegistry::applyLook(*cmx);
  cmx->model()->document().setUndoLimit(kUndoSteps, kUndoBytes);
  connect(cmx->model().get(), &TextModel::changed, this,
          [this](const text::Change& change) { streams_->follow(change, cmx->model()->snapshot()); });
  cmx->model()->plainSlot = [this](text::LineNo line) {
    return int(streamOf(line.value) == Stream::errors ? ColorSlot::String : ColorSlot::Text);
  };
  connect(cmx, &CodeMax::DblClick, this, &frmLog::cmx_DblClick);
  connect(cmx, &CodeMax::RClick, this, [this](const QPoint& position, bool* handled) {
    *handled = true;
    showMenu(position);
  });
  flushTimer_.setSingleShot(true);

  stopAction->setIcon(style()->standardIcon(QStyle::SP_BrowserStop));
  stopAction->setEnabled(false);
  nextAction->setIcon(arrowIcon(Arrow::down));
  previousAction->setIcon(arrowIcon(Arrow::up));
  connect(stopAction, &QAction::triggered, this, &frmLog::stopProgram);
  connect(nextAction, &QAction::triggered, this, &frmLog::nextMessage);
  connect(previousAction, &QAction::triggered, this, &frmLog::previousMessage);
  auto* const bar = new QToolBar(this);
  bar->setObjectName(u"logToolBar"_s);
  bar->setOrientation(Qt::Vertical);
  bar->setIconSize({16, 16});
  bar->addActions({stopAction, previousAction, nextAction});
  resize(sizeHint());
  frmRegistry::instance().GetLogWindowProfile(*this);
}

frmLog::~frmLog() { Form_Unload(); }

void frmLog::Form_Unload() {
  if (std::exchange(unloaded_, true)) return;
  const QWidget* dock = parentWidget();   // a floating dock has the position of the log
  frmRegistry::instance().SaveLogWindowProfile(dock && dock->isWindow() ? *dock : *this);
}

void frmLog::resizeEvent(QResizeEvent* event) {
  auto* const bar = findChild<QToolBar*>(u"logToolBar"_s);
  const int width = bar->sizeHint().width();
  bar->setGeometry(0, 0, width, height());
  cmx->setGeometry(width, 0, std::max(0, this->width() - width), height());
  showEnd();
  QWidget::resizeEvent(event);
}

void frmLog::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  showEnd();
}

// Scrolls to output that came while the log was hidden or smaller, unless the user has moved elsewhere in it.
void frmLog::showEnd() {
  const CmRange selection = cmx->GetSel(false);
  if (isVisible() && selection.IsEmpty() && selection.EndLineNo == cmx->LineCount() - 1) cmx->SetSel(selection);
}

CmPosition frmLog::CurrentPosition() const {
  const CmRange selection = cmx->GetSel(true);
  return {selection.EndLineNo, selection.EndColNo};
}

bool frmLog::SaveDocumment(const QString& path) {
  if (frame() && frame()->isInUse(fullPath(path))) {
    tellSaveError(path, tr("The file is open, or a run works on it"));
    return false;
  }
  const text::SaveResult result = cmx->SaveFile(path, false);
  if (result.ok()) return true;
  tellSaveError(path, toQString(result.error));
  return false;
}

void frmLog::Clear() {
  cmx->setText({});
  streams_->lines.assign(1, Streams::kNone);
  openLine_ = false;
  dropped_ = 0;
}

void frmLog::AppendLog(const QString& text, Stream stream) {
  if (text.isEmpty()) return;
  QString added = toCrLf(shown(text));
  if (openLine_ && stream != lastStream_ && !added.startsWith(u"\r\n"_s)) added.prepend(u"\r\n"_s);
  const qint64 first = cmx->LineCount() - 1;
  cmx->AppendText(added);
  const auto last = std::size_t(cmx->LineCount());
  const bool endsLine = added.endsWith(u'\n');
  for (std::size_t line = std::size_t(first); line < last; ++line)
    if (streams_->lines[line] == Streams::kNone && !(endsLine && line + 1 == last)) streams_->lines[line] = (signed char)(stream);
  if (stream == Stream::output) markErrors(first, added);
  openLine_ = !endsLine;
  lastStream_ = stream;
  trim();
  emit appended(added, stream);
}

// The channel tells little: simulators report errors on standard output, and build tools report progress on standard error.
void frmLog::markErrors(qint64 firstLine, const QString& added) {
  qint64 line = firstLine;
  for (const QStringView text : QStringView(added).split(u'\n')) {
    if (std::size_t(line) < streams_->lines.size() && speaksOfError(text))
      streams_->lines[std::size_t(line)] = (signed char)(Stream::errors);
    ++line;
  }
}

std::optional<frmLog::Stream> frmLog::streamOf(qint64 line) const {
  if (line < 0 || std::size_t(line) >= streams_->lines.size()) return std::nullopt;
  const signed char stream = streams_->lines[std::size_t(line)];
  return stream == Streams::kNone ? std::nullopt : std::optional(Stream(stream));
}

void frmLog::trim() {
  const text::Snapshot& now = cmx->model()->snapshot();
  if (now.size().value <= sizeLimit_ + sizeLimit_ / 8) return;
  text::ByteOffset keep(now.size().value - sizeLimit_ + sizeLimit_ / 8);
  text::LineNo line = now.lineAt(keep) + 1;
  if (line.value < now.lineCount()) {
    keep = now.lineStart(line);
  } else {   // a single line that is too long loses its beginning
    line = now.lineAt(keep);
    while (keep < now.size() && (uchar(now.at(keep)) & 0xC0) == 0x80) keep = keep + 1;
  }
  dropped_ = std::max<qint64>(1, dropped_ + line.value - (dropped_ > 0 ? 1 : 0));   // the notice is not counted
  const std::string notice =
      fromQString(tr("[%1 dropped]").arg(counted(dropped_, tr("earlier line"), tr("earlier lines")))) + "\r\n";
  cmx->model()->document().apply(text::Edit{{text::ByteOffset(0), keep}, notice}, cmx->editor().selection());
}

bool frmLog::InsertFile() {
  FileDialogRequest request;
  request.disk = &exactFiles();
  request.title = tr("Insert File");
  request.filter = u"(*.*)|*.*|"_s;
  request.folder = currentFolder();
  const QStringList chosen = dialogs().openFile(request);
  if (chosen.isEmpty()) return false;
  const auto file = std::make_shared<text::LoadedFile>();
  const auto load = [file, name = fromQString(chosen.first())](text::SearchControl& control) {
    *file = text::loadFile(name, {}, &control);
  };
  if (!LongWork::runOrLeave(*this, load, tr("Opening %1").arg(plainForDisplay(chosen.first(), 80)))) return false;
  if (!file->error.empty()) {
    tellOpenError(chosen.first(), toQString(file->error));
    return false;
  }
  const QString content = toQString(file->text.bytes());
  cmx->InsertText(toCrLf(shown(content)), CurrentPosition());
  trim();
  return true;
}

void frmLog::watch(process::Program& program) {
  program_ = &program;
  programFolder_ = currentFolder();
  text::Document& document = cmx->model()->document();
  if (outputStart_) document.removeMark(outputStart_);
  outputStart_ = document.addMark(document.snapshot().size(), text::Bias::left);
  stopAction->setEnabled(true);
  auto channel = std::make_shared<Channel>();
  connect(&program, &process::Program::output, this, [this, channel](const QByteArray& bytes) { take(*channel, bytes); });
  const auto flush = [this, channel](bool toTheEnd) {
    const qsizetype whole = channel->open.size() - (toTheEnd ? 0 : incompleteTail(channel->open));
    if (whole > 0) AppendLog(toQString(std::string_view(channel->open.data(), std::size_t(whole))), Stream::output);
    channel->open.remove(0, whole);
  };
  connect(&flushTimer_, &QTimer::timeout, &program, [flush] { flush(false); });
  const QString name = GetFileTitle(toQString(program.name()));
  connect(&program, &process::Program::finished, this, [this, flush, name](int exitCode) {
    flush(true);
    if (openLine_) AppendLog(u"\r\n"_s, lastStream_);
    AppendLog(tr("[%1: exit code %2]").arg(plainForDisplay(name), QString::number(exitCode)) + u"\r\n"_s,
              exitCode == 0 ? Stream::text : Stream::errors);
    const auto running = process::Program::running();
    program_ = running.isEmpty() ? nullptr : running.last();
    stopAction->setEnabled(programRuns());
  });
  connect(&program, &QObject::destroyed, this, [flush] { flush(true); });
}

void frmLog::take(Channel& channel, const QByteArray& bytes) {
  QByteArray all = channel.open + bytes;
  qsizetype whole = all.lastIndexOf('\n') + 1;
  if (whole == 0 && all.size() > kLongestOpenLine) whole = all.size() - incompleteTail(all);
  channel.open = all.mid(whole);
  if (whole > 0) AppendLog(toQString(std::string_view(all.data(), std::size_t(whole))), Stream::output);
  if (!channel.open.isEmpty() && !flushTimer_.isActive()) flushTimer_.start(kOpenLineTime);
}

bool frmLog::programRuns() const { return program_ && !program_->ended(); }

void frmLog::stopProgram() {
  if (programRuns()) program_->stop();
}

void frmLog::cmx_DblClick() {
  const CmPosition at = cmx->CurrentPosition();
  if (jumpToMessage(at.LineNo, at.ColNo)) return;
  const QString word = cmx->CurrentWord();
  const bool digits = !word.isEmpty() && std::all_of(word.begin(), word.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
  if (digits) {
    frmDocument* const document = frame() ? frame()->activeDocument() : nullptr;
    bool good = false;
    const qint64 index = word.toLongLong(&good) - 1;
    if (!document || !good || index < 0 || index >= document->cmx->LineCount()) return;
    document->cmx->ExecuteCmd(Cmd::GOTOLINE, index);
    document->cmx->SelectLine(index);
    document->cmx->setFocus();
    return;
  }
  jumpToMessage(at.LineNo, -1);
}

// Activates an open document, modified or not. Opening it again would ask or read it anew.
frmDocument* frmLog::showFile(const QString& path) {
  for (frmDocument* document : frame()->documents()) {
    if (document->CurrentFileName() != path) continue;
    frame()->activate(document);
    return document;
  }
  return frame()->openFile(path);
}

QStringList frmLog::folders() const {
  QStringList folders{currentFolder()};
  if (!programFolder_.isEmpty()) folders.prepend(programFolder_);
  const frmDocument* const active = frame()->activeDocument();
  if (active && !active->CurrentFileDir().isEmpty()) folders << active->CurrentFileDir();
  return folders;
}

bool frmLog::showPlace(frmDocument* document, qint64 line, qint64 column) {
  if (!document) return false;
  const qint64 index = std::clamp<qint64>(line, 0, document->cmx->LineCount() - 1);
  const qint64 at = std::clamp<qint64>(column, 0, document->cmx->GetLineLength(index));
  document->cmx->ExecuteCmd(Cmd::GOTOLINE, index);
  document->cmx->SetSel({index, at, index, at, false});
  document->cmx->setFocus();
  return true;
}

// Opens the file that the line names. With a column, only if that place is under the column.
bool frmLog::jumpToMessage(qint64 line, qint64 column) {
  if (!frame()) return false;
  const auto place = MessageFinder(folders()).find(beginningOf(cmx->model()->snapshot(), text::LineNo(line)));
  if (!place) return false;
  if (column >= 0 && (column < place->begin || column > place->begin + place->length)) return false;
  return jumpTo(*place, line);
}

bool frmLog::jumpTo(const MessagePlace& place, qint64 logLine) {
  if (showPlace(showFile(place.file), place.line - 1, place.column - 1))
    SetStatusText(plainForDisplay(beginningOf(cmx->model()->snapshot(), text::LineNo(logLine)), 300));
  return true;
}

void frmLog::setUsageOf(frmDocument* document) { usageOf_ = document; }

// Continues from the line that the last jump selected, else from the caret. If the caret is at the end of the log, where it follows
// the output, it starts with the output of the last program.
bool frmLog::walk(int step) {
  if (!frame()) return false;
  const text::Snapshot log = cmx->model()->snapshot();
  const qint64 count = log.lineCount();
  const CmRange selection = cmx->GetSel(true);
  qint64 line = selection.StartLineNo + step;
  if (selection.IsEmpty() && step > 0) {
    line = selection.StartLineNo;
    if (line == count - 1) line = outputStart_ ? log.lineAt(cmx->model()->document().markAt(outputStart_)).value : 0;
  }
  Walked found;
  const std::vector<signed char> streams = streams_->lines;
  MessageFinder finder(folders());
  LongWork::run(*window(), log.size().value * kWalkCost, [&](text::SearchControl& control) {
    static const QRegularExpression listed(u"^(\\d{1,9})(?:,(\\d{1,9}))?: "_s);
    for (; line >= 0 && line < count && found.line < 0 && !control.cancel; line += step) {
      const text::ByteRange whole{log.lineStart(text::LineNo(line)), log.lineEnd(text::LineNo(line))};
      const QString shown = beginningOf(log, text::LineNo(line));
      if (streams[std::size_t(line)] == (signed char)(Stream::text)) {
        const auto match = listed.match(shown);
        if (match.hasMatch()) found = {line, {{}, match.captured(1).toLongLong(), match.captured(2).toLongLong(), 0, 0}};
      }
      if (found.line < 0)
        if (const auto place = finder.find(shown)) found = {line, *place};
      control.bytesDone = (step > 0 ? whole.end.value : log.size().value - whole.begin.value) * kWalkCost;
    }
  });
  if (found.line < 0) {
    SetStatusText(step > 0 ? tr("No further message in the log") : tr("No earlier message in the log"));
    return false;
  }
  if (found.place.file.isEmpty()) {
    if (usageOf_ && frame()->documents().contains(usageOf_)) frame()->activate(usageOf_);
    showPlace(frame()->activeDocument(), found.place.line - 1, found.place.column);
  } else {
    jumpTo(found.place, found.line);
  }
  cmx->SelectLine(found.line, false);
  const CmRange whole = cmx->GetSel(true);   // with the caret at the front, so that the start of a long message is visible
  cmx->SetSel({whole.EndLineNo, whole.EndColNo, whole.StartLineNo, whole.StartColNo, false});
  return true;
}

bool frmLog::nextMessage() { return walk(1); }
bool frmLog::previousMessage() { return walk(-1); }

void frmLog::showMenu(const QPoint& globalPosition) {
  QMenu menu(this);
  menu.addAction(tr("C&lear"), this, &frmLog::Clear);
  menu.addAction(tr("&Save As..."), this, [this] {
    FileDialogRequest request;
    request.disk = &exactFiles();
    request.title = tr("Save Log");
    request.filter = u"(*.*)|*.*|"_s;
    request.folder = currentFolder();
    request.name = u"zelkor.log"_s;
    const QString path = dialogs().saveFile(request);
    if (!path.isEmpty()) SaveDocumment(path);
  });
  menu.addAction(tr("&Insert File..."), this, &frmLog::InsertFile);
  menu.addAction(tr("&Copy"), this, [this] { cmx->ExecuteCmd(Cmd::COPY); });
  menu.addSeparator();
  menu.addActions({previousAction, nextAction, stopAction});
  menu.addSeparator();
  menu.addAction(tr("Cl&ose"), this, &frmLog::closeAsked);
  menu.exec(globalPosition);
}

#include "moc_frmLog.cpp"
