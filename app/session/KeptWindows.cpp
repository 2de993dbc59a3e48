#include "app/session/KeptWindows.h"

#include <QDockWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "app/folder/FolderParts.h"
#include "app/folder/WorkFolder.h"
#include "app/frame/frmMain.h"
#include "bridge/FileNames.h"
#include "bridge/QStringBytes.h"
#include "control/find/UsersSearch.h"
#include "control/folds/PaneFolds.h"
#include "control/view/PaneGrid.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "language/ucCM.h"

namespace {

constexpr int kMostPixels = 20'000;
constexpr std::size_t kMostFoldNumbers = 5'000;   // of one text, as the file takes
const char* const kDocks[] = {"logDock", "filesDock"};

KeptPlace keptPlace(const QRect& place) { return {place.x(), place.y(), place.width(), place.height()}; }
PaneGrid* gridOf(const frmDocument& document) { return document.cmx->findChild<PaneGrid*>(); }

void giveEncodingBack(const KeptDocument& kept, frmDocument& document) {
  for (const text::Encoding encoding : text::encodings()) {
    const text::FileFormat format{encoding, kept.bom};
    if (*kept.encoding != text::name(encoding) || document.cmx->fileFormat() == format) continue;
    TextModel& model = *document.cmx->model();
    const std::vector<text::LineNo> marks = model.bookmarks();
    if (!document.ReopenAs(format)) return;
    model.replaceAll(model.snapshot(), model.format);   // the user has not seen the other reading: there is no way back to it
    model.setBookmarks(marks, true);
  }
}

// Those of a text that has as many lines as then.
void giveFoldsBack(const std::vector<std::int64_t>& kept, CodeMax& cmx) {
  PaneFolds* const folds = cmx.editor().host().folds();
  const std::int64_t lines = cmx.LineCount();
  if (!folds || kept.empty() || kept[0] != lines) return;
  std::vector<text::Fold> given;
  for (std::size_t i = 1; i + 1 < kept.size(); i += 2) {
    const std::int64_t first = kept[i], hidden = kept[i + 1];
    if (first < 0 || hidden <= 0 || hidden >= lines || first >= lines - hidden) continue;
    if (given.empty() || given.back().first.value < first) given.push_back({text::LineNo(first), text::LineNo(first + hidden)});
  }
  folds->setFolds(given);
}

void giveDockBack(const KeptDock& kept, frmMain& frame) {
  auto* dock = frame.findChild<QDockWidget*>(toQString(kept.name));
  if (!kept.shown) {
    if (dock) dock->hide();
    return;
  }
  if (kept.name == "logDock") frame.showLog();
  else frame.folders().showFiles();
  dock = frame.findChild<QDockWidget*>(toQString(kept.name));
  const QRect place = placeOf(kept.place);
  if (kept.floats) {
    dock->setFloating(true);
    if (!place.isEmpty()) dock->setGeometry(place);
    return;
  }
  dock->setFloating(false);
  for (const auto area : {Qt::LeftDockWidgetArea, Qt::RightDockWidgetArea, Qt::TopDockWidgetArea, Qt::BottomDockWidgetArea})
    if (kept.area == area && frame.dockWidgetArea(dock) != area) frame.addDockWidget(area, dock);
  if (place.isEmpty()) return;
  dock->setProperty("placed", true);   // else it takes the size of the settings when it is laid out first
  QTimer::singleShot(0, dock, [&frame, dock, place] {
    frame.resizeDocks({dock}, {std::min(place.width(), frame.width() * 2 / 3)}, Qt::Horizontal);
    frame.resizeDocks({dock}, {std::min(place.height(), frame.height() * 2 / 3)}, Qt::Vertical);
  });
}

}   // namespace

QRect placeOf(const KeptPlace& kept) {
  const auto fits = [](std::int64_t number) { return number >= -kMostPixels && number <= kMostPixels; };
  if (!std::ranges::all_of(kept, fits) || kept[2] < 20 || kept[3] < 20) return {};
  return {int(kept[0]), int(kept[1]), int(kept[2]), int(kept[3])};
}

std::optional<KeptDocument> keptOf(const frmMain& frame, frmDocument& document, bool ends) {
  CodeMax& cmx = *document.cmx;
  TextModel& model = *cmx.model();
  KeptDocument kept;
  kept.path = fromQString(document.CurrentFileName());
  kept.title = fromQString(document.CurrentFileTitle());
  kept.modified = ends ? document.isLeftInJournal() : cmx.Modified();
  if (kept.title.empty()) return std::nullopt;
  if (!kept.modified && !kept.path.empty() && !document.DocumentHasName()) return std::nullopt;   // its file was never made
  if (!kept.modified && kept.path.empty() && (cmx.Modified() || model.snapshot().size().value > 0)) return std::nullopt;
  if (kept.modified) kept.journal = fromQString(document.journalName());
  if (document.LanguageIsChosen()) kept.language = fromQString(cmx.Language());
  if (document.EncodingIsChosen() && (kept.modified || !cmx.Modified())) {   // else the file may never have got it
    kept.encoding = text::name(cmx.fileFormat().encoding);
    kept.bom = cmx.fileFormat().bom;
  }
  kept.readOnly = cmx.ReadOnly() && !document.isGuarded();
  const CmRange selection = cmx.GetSel(false);
  kept.selection = {selection.StartLineNo, selection.StartColNo, selection.EndLineNo, selection.EndColNo};
  kept.columns = selection.ColumnSel;
  kept.top = cmx.editor().host().topLine();
  if (PaneFolds* const folds = cmx.editor().host().folds(); folds && !folds->folds().empty()) {
    kept.folds = {cmx.LineCount()};
    for (const text::Fold& fold : folds->folds()) {
      if (kept.folds.size() + 2 > kMostFoldNumbers) break;
      kept.folds.insert(kept.folds.end(), {fold.first.value, fold.last - fold.first});
    }
  }
  kept.zoom = cmx.Zoom();
  kept.wrapSwitched = cmx.wraps() != (cmx.WordWrap() != 0);
  if (const PaneGrid* grid = gridOf(document))
    kept.bars = {std::lround(grid->place(Qt::Horizontal) * 1000), std::lround(grid->place(Qt::Vertical) * 1000)};
  if (const QMdiSubWindow* window = frame.windowOf(&document)) {
    kept.state = window->isMinimized()   ? windowstate::kMinimised
                 : window->isMaximized() ? windowstate::kMaximised
                                         : windowstate::kNormal;
    if (kept.state == windowstate::kNormal) kept.place = keptPlace(window->geometry().translated(frame.scrolledBy()));
  }
  if (kept.path.empty())
    for (const text::LineNo line : model.bookmarks()) kept.bookmarks.push_back(line.value);
  return kept;
}

void giveBack(const KeptDocument& kept, frmMain& frame, frmDocument& document, bool ofFile) {
  CodeMax& cmx = *document.cmx;
  if (kept.encoding && ofFile) giveEncodingBack(kept, document);
  if (kept.encoding) document.keepEncoding();
  if (kept.language) {
    const QString name = toQString(*kept.language);
    const int index = name.isEmpty() ? 0 : languages().GetIndex(name);
    if (name.isEmpty() || index > 0) document.chooseLanguage(index);
  }
  if (kept.readOnly && !cmx.Modified()) cmx.setReadOnly(true);
  cmx.setZoom(int(std::clamp<std::int64_t>(kept.zoom, 30, 500)));
  if (kept.wrapSwitched) cmx.editor().host().toggleWordWrap();
  const auto bar = [](std::int64_t thousandths) { return double(std::clamp<std::int64_t>(thousandths, 0, 1000)) / 1000; };
  if (kept.bars[0] != 0 || kept.bars[1] != 0) cmx.splitPanes(bar(kept.bars[0]), bar(kept.bars[1]));
  const auto& at = kept.selection;
  const std::int64_t last = cmx.LineCount() - 1;
  const auto line = [last](std::int64_t number) { return std::clamp<std::int64_t>(number, 0, last); };
  const auto column = [](std::int64_t number) { return std::clamp<std::int64_t>(number, 0, 1 << 30); };
  cmx.SetSel({line(at[0]), column(at[1]), line(at[2]), column(at[3]), kept.columns}, false);
  giveFoldsBack(kept.folds, cmx);
  cmx.editor().host().setTopLine(line(kept.top));
  if (kept.path.empty())
    for (const std::int64_t mark : kept.bookmarks)
      if (mark >= 0 && mark <= last) cmx.setBookmark(mark, true);
  if (frame.activeDocument() == &document) document.focusWork();
}

void keepFolder(frmMain& frame, SessionState* state) {
  const WorkFolder& work = frame.folders().work();
  if (work.kind() == WorkFolder::Kind::folder || work.kind() == WorkFolder::Kind::list) state->folder = fromQString(work.root());
  state->list = fromQString(work.list());
  state->relativeToList = work.relativeToList();
}

void keepFrame(frmMain& frame, SessionState* state) {
  keepFolder(frame, state);
  const SearchState& search = usersSearch();
  state->find = fromQString(search.findText);
  state->replace = fromQString(search.replaceText);
  state->matchCase = search.options.matchCase;
  state->wholeWord = search.options.wholeWord;
  state->regex = search.options.regex;
  state->preserveCase = search.preserveCase;
  for (const char* name : kDocks) {
    const auto* dock = frame.findChild<QDockWidget*>(QString::fromLatin1(name));
    KeptDock kept{name, dock && !dock->isHidden(), dock && dock->isFloating(), 0, {}};
    if (dock) kept.area = frame.dockWidgetArea(const_cast<QDockWidget*>(dock));
    if (kept.shown) kept.place = keptPlace(dock->geometry());
    state->docks.push_back(std::move(kept));
  }
}

void giveFrameBack(const SessionState& state, frmMain& frame) {
  WorkFolder& work = frame.folders().work();
  const QString folder = toQString(state.folder), list = toQString(state.list);
  const bool opened = work.kind() == WorkFolder::Kind::folder || work.kind() == WorkFolder::Kind::list;
  if (list != work.list() || folder != (opened ? work.root() : QString())) {
    if (!list.isEmpty()) work.openList(list, state.relativeToList, folder);
    else if (!folder.isEmpty()) work.openFolder(folder);
    else work.close();
  }
  SearchState& search = usersSearch();
  search.findText = toQString(state.find);
  search.replaceText = toQString(state.replace);
  search.options.matchCase = state.matchCase;
  search.options.wholeWord = state.wholeWord;
  search.options.regex = state.regex;
  search.preserveCase = state.preserveCase;
  for (const KeptDock& dock : state.docks)
    if (std::ranges::any_of(kDocks, [&](const char* name) { return dock.name == name; })) giveDockBack(dock, frame);
}
