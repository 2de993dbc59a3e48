// Auto-indent by the block words of a language: the indent of a new line, and of a word that ends a block. Comments and strings are
// ignored.
#pragma once

#include <QString>
#include <optional>
#include <string>

#include "control/code/BlockWords.h"
#include "control/edit/TextModel.h"

struct EditOptions;

// The white space of the new line when Return replaces `range` by a line break, if the blocks and brackets around determine it.
// Examines a bounded part of the text.
std::optional<std::string> indentForNewLine(TextModel& model, const BlockWords& blocks, text::ByteRange range,
                                            const EditOptions& options);

// True if typing `typed` in place of `range` completes or changes a word that stands alone in its line and may have to be
// outdented.
bool mayStepBack(const TextModel& model, const BlockWords& blocks, text::ByteRange range, const QString& typed);
// The new leading white space of the caret's line, if the line only holds a closing or middle word or a closing bracket; nullopt:
// no change.
std::optional<std::string> indentForCloser(TextModel& model, const BlockWords& blocks, text::ByteOffset caret,
                                           const EditOptions& options);
