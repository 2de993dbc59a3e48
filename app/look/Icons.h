// Pictures of the commands: the desktop's own where its theme has them, else ours, drawn in the colours of the palette.
#pragma once

#include <QIcon>

namespace icons {
QIcon byName(const QString& name);   // "document-open", "zelkor-expand" ...; ours are app/icons/NAME.svg
QIcon application();
}   // namespace icons
