#include "app/start/DiffArguments.h"

#include <QApplication>
#include <QEventLoop>

#include "app/compare/CompareFrame.h"
#include "app/frame/frmMain.h"
#include "base/Options.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "bridge/LongWork.h"
#include "bridge/QStringBytes.h"
#include "change/compare/MergeView.h"
#include "document/FileErrors.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "text/file/FileCalls.h"
#include "text/file/FileIo.h"
#include "text/line/Chars.h"

namespace {

constexpr int kTrouble = 2;

// clang-format off
constexpr OptionHelp kOptions[] = {
    {"--diff", "", QT_TRANSLATE_NOOP("DiffArguments", "compare LEFT with RIGHT; with BASE, merge them")},
    {"--output", "FILE", QT_TRANSLATE_NOOP("DiffArguments", "where the result of merging is saved")},
    {"--help", "", QT_TRANSLATE_NOOP("DiffArguments", "show this text")},
};
// clang-format on

QString tr(const char* text) { return QCoreApplication::translate("DiffArguments", text); }

// Version control names it for a file that one side does not have.
bool isNothing(const QString& path) { return path == QLatin1String("/dev/null"); }

struct Loaded {
  CompareSource source;
  QString error;
};

Loaded load(frmMain& frame, const QString& path) {
  Loaded made;
  made.source.name = isNothing(path) ? tr("No file") : nameForDisplay(path);
  if (isNothing(path)) return made;
  const auto file = std::make_shared<text::LoadedFile>();
  const auto work = [file, name = fromQString(path)](text::SearchControl& control) { *file = text::loadFile(name, {}, &control); };
  if (!LongWork::runOrLeave(frame, work, tr("Reading %1").arg(plainForDisplay(path, 80)))) made.error = tr("Cancelled");
  else made.error = toQString(file->error);
  if (!made.error.isEmpty()) return made;
  made.source.text = file->text;
  made.source.format = file->format;
  return made;
}

bool isAscii(const text::Snapshot& text) {
  for (text::ByteOffset at(0); at < text.size();) {
    const std::string_view chunk = text.chunkAt(at);
    if (!text::isAscii(chunk)) return false;
    at += std::ssize(chunk);
  }
  return true;
}

// A document for a side that can be changed; for nothing, a text that cannot.
CompareSource opened(frmMain& frame, const QString& path, bool* failed) {
  if (isNothing(path)) return load(frame, path).source;
  bool ok = false;
  frmDocument* document = frame.mainOpenFile(path, ok);
  *failed = *failed || !document;
  return CompareFrame::sourceOf(document);
}

void untilClosed(frmMain& frame, CompareWindow* window) {
  window->mayClose = [&frame] { return frame.agreeToEnd(); };
  QEventLoop loop;
  QObject::connect(window, &CompareWindow::closed, &loop, &QEventLoop::quit);
  loop.exec();
}

// Ends what is open after the questions were answered: with it go the journals of changes that the user gave up.
void closeAll(frmMain& frame) { frame.mnuFileCloseAll_Click(); }

int merge(frmMain& frame, const DiffTask& task) {
  std::array<Loaded, 3> sides;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    sides[i] = load(frame, task.files[qsizetype(i)]);
    if (!sides[i].error.isEmpty()) return tellOpenError(task.files[qsizetype(i)], sides[i].error), kTrouble;
  }
  const text::Snapshot left = sides[0].source.text, right = sides[1].source.text, base = sides[2].source.text;
  std::vector<text::MergeRegion> regions;
  text::MergedText merged;
  const text::MergeNames names{fromQString(GetFileTitle(task.files[0])), fromQString(GetFileTitle(task.files[2])),
                               fromQString(GetFileTitle(task.files[1]))};
  const auto work = [&](text::SearchControl& control) {
    regions = text::merge3(base, left, right, &control.cancel);
    if (!control.cancel) merged = text::mergedText(base, left, right, regions, names);
  };
  bool cancelled = false;
  LongWork::run(
      frame, left.size().value + right.size().value,
      [&](text::SearchControl& control) {
        work(control);
        cancelled = control.cancel;
      },
      tr("Merging..."), true);
  if (cancelled) return 1;
  frmDocument* document = nullptr;
  if (fileIsMissing(task.output)) {
    document = frame.LoadNewDoc();
    document->beginFile(task.output);
    // A text of ASCII does not say in what encoding the others are.
    const bool another = isAscii(left) && !isAscii(right);
    document->cmx->model()->format = sides[another ? 1 : 0].source.format;
  } else {
    bool ok = false;
    document = frame.mainOpenFile(task.output, ok);
    if (!document) return kTrouble;
  }
  // Undo ends here: the conflicts are known in this text only.
  document->cmx->model()->replaceAll(merged.text, document->cmx->fileFormat());
  document->cmx->setModified(true);   // the file does not hold the result yet
  document->SetLanguage(languageOfFile(task.output, *document->cmx));
  for (std::size_t i = 0; i < 2; ++i) sides[i].source.language = document->cmx->Language();
  CompareWindow* window = CompareFrame::of(frame).compare(sides[0].source, sides[1].source);
  const MergeView& result = window->merge(document, regions, merged);
  std::function<bool(text::SearchControl&)> remains;
  QObject::connect(window, &CompareWindow::closed, [&] { remains = result.remains(); });
  untilClosed(frame, window);
  bool marks = false;
  LongWork::run(
      frame, document->cmx->model()->snapshot().size().value,
      [&](text::SearchControl& control) { marks = !remains || remains(control); }, tr("Reading..."), false);
  const bool unsaved = document->DocumentModified();
  closeAll(frame);
  return unsaved || marks ? 1 : 0;
}

}   // namespace

DiffTask parseDiffArguments(const QStringList& arguments, const QString& folder) {
  DiffTask task;
  const Options given = parseCommandLine(arguments, optionRows(kOptions));
  task.error = given.error;
  task.help = given.isOn("--help");
  if (task.help || !task.error.isEmpty()) return task;
  for (const QString& name : given.files()) task.files << fullPath(name, folder);
  if (given.has("--output")) task.output = fullPath(given.value("--output"), folder);
  if (task.output.isEmpty() && task.files.size() != 2) task.error = tr("--diff needs two files, or three and --output");
  else if (!task.output.isEmpty() && task.files.size() != 3)
    task.error = tr("--diff with --output needs three files: LEFT RIGHT BASE");
  return task;
}

QString diffHelp() {
  QString text = tr("Usage: zelkor --diff LEFT RIGHT\n       zelkor --diff LEFT RIGHT BASE --output FILE") + QLatin1String("\n\n");
  for (const OptionHelp& option : kOptions) text += helpLine(option.name, option.value, tr(option.help), 16);
  text += u'\n' +
          tr("Shows both files side by side and returns when the window has been closed. With BASE\n"
             "it merges what LEFT and RIGHT made of BASE; the result stands below and is saved as FILE.\n\n"
             "Exit status: 0 in order; 1 merging, and the result was not saved or has conflicts; 2 trouble.") +
          u'\n';
  return text;
}

QString diffTrouble(const DiffTask& task) {
  for (const QString& path : task.files) {
    if (isNothing(path)) continue;
    if (isFolder(path)) return tr("%1 is a folder").arg(path);
    const text::FileStamp stamp = text::stampOf(fromQString(path), false);
    if (stamp.exists && !stamp.status.isRegular()) return tr("%1 is not a regular file").arg(path);
    const text::files::Descriptor file =
        text::files::open(text::FileSystem::kCwd, fromQString(path), text::kRead | text::kNonBlock);
    if (!file.ok()) return tr("%1 cannot be read: %2").arg(path, toQString(text::errorText(file.error())));
  }
  if (task.output.isEmpty() || fileIsMissing(task.output)) return {};
  if (isFolder(task.output)) return tr("%1 is a folder").arg(task.output);
  if (!isRegularFile(task.output)) return tr("%1 is not a regular file").arg(task.output);
  return {};
}

int runDiff(frmMain& frame, const DiffTask& task) {
  if (task.files.size() == 3) return merge(frame, task);
  bool failed = false;
  const CompareSource left = opened(frame, task.files[0], &failed);
  const CompareSource right = failed ? CompareSource() : opened(frame, task.files[1], &failed);
  if (failed) return kTrouble;
  untilClosed(frame, CompareFrame::of(frame).compare(left, right));
  closeAll(frame);
  return 0;
}
