// What a command does at the carets while it runs at each of several: its changes are collected here, in place of being applied.
// Only control/edit/Carets.cpp makes one; while it lives, Editor::Impl::run points to it.
#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "text/store/Document.h"

struct CaretRun {
  // At the present caret.
  bool changed = false;   // it has made its change
  bool cut = false;       // an edit of it was in the way of an earlier caret's, and was dropped or joined
  bool grown = false;     // its deletion and that of earlier carets became one that is larger than theirs
  bool isMain = false;
  std::optional<text::SelectionState> after;   // in the text with its own edits only
  std::size_t first = 0;                       // its first edit
  std::size_t popped = SIZE_MAX;               // from here on edits of earlier carets became one
  std::optional<QString> piece;                // for the clipboard

  // Of all carets.
  std::vector<text::Edit> edits;   // ascending
  text::Join join = text::Join::none;
  bool refused = false;   // it did more than can be collected
  bool closers = false;   // a typed word or bracket may have to step back

  void begin(bool main);
  // Takes the change of a caret. False: it is a second one.
  bool take(std::span<const text::Edit> own, const std::optional<text::SelectionState>& behind, text::Join how);
};
