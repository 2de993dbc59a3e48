// Tool tips that show a file name literally, never as markup.
#pragma once

#include "base/Strings.h"

inline QString plainTip(const QString& text) {
  return QLatin1String("<p style='white-space:pre'>") + plainForDisplay(text).toHtmlEscaped() + QLatin1String("</p>");
}
