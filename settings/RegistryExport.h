// Reads files that the registry editor of Windows exports ("Version 5.00"), so that settings can be moved between machines. Older
// settings files have this form too. Read only.
#pragma once

#include "settings/RegistryText.h"

namespace registryExport {

inline constexpr QStringView kHeader = u"Windows Registry Editor Version 5.00";   // the first line

// Fills `sections`, which holds one section without a key. False: the file is damaged and `sections` is meaningless. Items of other
// types than text and number get an invalid value and their data as `raw`, in one line. Comments get their line as `raw`. Other
// items have no `raw`.
bool read(const QString& text, std::vector<RegistryText::Section>& sections);

}   // namespace registryExport
