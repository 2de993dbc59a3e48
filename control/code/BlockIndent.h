// Auto-indent by the block words of a language: what a new line gets, and where a word that ends a block steps back to. Comments and
// strings say nothing.
#pragma once

#include <QString>
#include <optional>
#include <string>

#include "control/code/BlockWords.h"
#include "control/edit/TextModel.h"

struct EditOptions;

// The white space that the new line begins with when Return puts a line break in the place of `range`, where the blocks and brackets
// around say something. Looks back a bounded stretch of text.
std::optional<std::string> indentForNewLine(TextModel& model, const BlockWords& blocks, text::ByteRange range,
                                            const EditOptions& options);

// True where typing `typed` in the place of `range` ends or changes a word that alone makes the line and may have to step back.
bool mayStepBack(const TextModel& model, const BlockWords& blocks, text::ByteRange range, const QString& typed);
// The white space that the caret's line, which holds a closing or middle word or a closing bracket alone, gets for it; nullopt: it stays.
std::optional<std::string> indentForCloser(TextModel& model, const BlockWords& blocks, text::ByteOffset caret,
                                           const EditOptions& options);
