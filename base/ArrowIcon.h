// Arrows for tool bars, drawn in the palette's colours at the time they are shown: those of the style stay dark on a dark desktop.
#pragma once

#include <QIcon>

enum class Arrow { left, right, up, down, first, last };

QIcon arrowIcon(Arrow arrow);
