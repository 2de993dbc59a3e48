// The inside of CodeMax. Only its own files include it.
#pragma once

#include <QApplication>

#include "control/CodeMax.h"
#include "control/commands/CommandTable.h"
#include "control/view/Pane.h"
#include "control/view/PaneGrid.h"
#include "control/view/ViewState.h"

struct CodeMax::Impl {
  ViewState state;
  PaneGrid* grid = nullptr;
  bool focused = false, painting = true;

  Pane& pane() { return *grid->active(); }
  Editor& editor() { return grid->active()->editor(); }
  const text::Snapshot& snapshot() const { return state.model->snapshot(); }

  // Text from outside as bytes of this text: its line breaks become those of the line.
  std::string incoming(const QString& text, text::LineNo line);
  // Edits that leave the selection where its text goes.
  void apply(const std::vector<text::Edit>& edits);
  // Changes made through the editor: told and shown once.
  template <class F>
  void change(F edit) {
    const Pane::Action action(pane());
    edit(editor());
    pane().showCaret();
  }

  void repaint() {
    for (Pane* each : grid->panes()) each->appearanceChanged();
  }
  void release() {   // shows what is made: nothing may come out of it
    try {
      for (Pane* each : grid->panes()) each->released();
    } catch (const std::bad_alloc&) { grid->update(); }
  }
  void measure() {
    std::vector<text::ByteOffset> tops;   // in the rows that they had
    for (Pane* each : grid->panes()) tops.push_back(each->view().topByte());
    state.remeasure();
    for (std::size_t i = 0; i < tops.size(); ++i) grid->panes()[i]->metricsChanged(tops[i]);
  }
  void refit() {
    for (Pane* each : grid->panes()) each->optionsChanged();
  }
};
