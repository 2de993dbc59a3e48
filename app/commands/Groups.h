// The groups of frame commands, each in its own file of this folder. A new group is one line here.
#pragma once

#include <span>

#include "app/frame/FrameCommand.h"

#define ZELKOR_COMMAND_GROUPS(GROUP) \
  GROUP(fileCommands)                \
  GROUP(editCommands)                \
  GROUP(viewCommands)                \
  GROUP(toolsCommands)               \
  GROUP(compareCommands)             \
  GROUP(customCommands)              \
  GROUP(languageCommands)            \
  GROUP(logCommands)                 \
  GROUP(printCommands)               \
  GROUP(formatCommands)              \
  GROUP(windowCommands)              \
  GROUP(helpCommands)

#define ZELKOR_DECLARE_GROUP(name) std::span<const FrameCommand> name();
ZELKOR_COMMAND_GROUPS(ZELKOR_DECLARE_GROUP)
#undef ZELKOR_DECLARE_GROUP
