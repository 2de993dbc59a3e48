#include "app/frame/FrameCommand.h"

#include <cstring>
#include <vector>

#include "app/commands/Groups.h"

std::span<const FrameCommand* const> frameCommands() {
  static const std::vector<const FrameCommand*> all = [] {
    std::vector<const FrameCommand*> rows;
    const auto add = [&](std::span<const FrameCommand> group) {
      for (const FrameCommand& row : group) rows.push_back(&row);
    };
#define ZELKOR_ADD_GROUP(name) add(name());
    ZELKOR_COMMAND_GROUPS(ZELKOR_ADD_GROUP)
#undef ZELKOR_ADD_GROUP
    return rows;
  }();
  return all;
}

const FrameCommand* frameCommand(const char* name) {
  for (const FrameCommand* row : frameCommands())
    if (std::strcmp(row->name, name) == 0 && row->elements == 0) return row;
  return nullptr;
}
