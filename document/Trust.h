// Which macros may start programs. Those of the installed definition file and of the person's own may; a file from elsewhere
// colours like any other, and before the first program is started from its macros the person is asked, once for its content.
#pragma once

#include <QString>

class ucCM;

namespace trust {

// The manager's definition file is neither the installed one nor in the person's own settings folder.
bool isForeign(ucCM& manager);

// May macros of these definitions start `commandLine`? Asks if need be; "yes" is remembered in the settings, and ends
// when the definitions change.
bool mayStart(ucCM& manager, const QString& commandLine);

}  // namespace trust
