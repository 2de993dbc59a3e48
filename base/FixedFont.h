// The desktop's fixed-pitch font in its size. If the desktop names no font, or one that is not fixed, an installed fixed-pitch
// font.
#pragma once

#include <QFont>

QFont fixedFont();
