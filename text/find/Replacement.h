// The text that takes the place of a match. Inside the engine; see Finder::replacementFor.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "text/find/Finder.h"

namespace text {

// $0..$99, ${name} and ${number} are groups (one that took no part is empty), $$ is a dollar, \n a line break by
// `newLines`, \t a tab, \\ a backslash; everything else stands for itself. nullopt and *error for a group
// that does not exist or a brace that is not closed.
std::optional<std::string> expandReplacement(const Snapshot& text, const Match& match, std::string_view replacement,
                                             const std::function<std::optional<int>(std::string_view)>& groupByName,
                                             std::string* error, const NewLines& newLines);

// Each line break in `replacement` becomes that of the line of `at`.
std::string withBreaks(const Snapshot& text, ByteOffset at, std::string_view replacement, const NewLines& newLines);

// `replacement` in the shape of `found`: ALL UPPER, all lower or Capitalised; as it is for any other.
std::string inCaseOf(std::string_view found, std::string_view replacement);

}   // namespace text
