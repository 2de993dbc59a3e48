// Arrows for tool bars, drawn in the palette's colours each time they are shown. The style's own arrows stay dark on a dark
// desktop.
#pragma once

#include <QIcon>

enum class Arrow { left, right, up, down, first, last };

QIcon arrowIcon(Arrow arrow);
