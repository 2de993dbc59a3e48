// Pictures of the commands: those of the desktop's theme, else the program's own, drawn in the colours of the palette.
#pragma once

#include <QIcon>

namespace icons {
QIcon byName(const QString& name);   // "document-open", "zelkor-expand" ...; the program's own are app/icons/NAME.svg
QIcon application();
}   // namespace icons
