// Makes the replacement text of a match. Internal to the engine; see Finder::replacementFor.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "text/find/Finder.h"

namespace text {

// $0..$99, ${name} and ${number} are groups (empty if they did not take part), $$ is a dollar, \n a line break from `newLines`, \t
// a tab, \\ a backslash; all other text is literal. nullopt and *error for an unknown group or a missing closing brace.
std::optional<std::string> expandReplacement(const Snapshot& text, const Match& match, std::string_view replacement,
                                             const std::function<std::optional<int>(std::string_view)>& groupByName,
                                             std::string* error, const NewLines& newLines);

// Each line break in `replacement` becomes that of the line of `at`.
std::string withBreaks(const Snapshot& text, ByteOffset at, std::string_view replacement, const NewLines& newLines);

// `replacement` in the letter case of `found`: ALL UPPER, all lower or Capitalised; else unchanged.
std::string inCaseOf(std::string_view found, std::string_view replacement);

}   // namespace text
