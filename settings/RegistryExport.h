// Reads what the registry editor of Windows exports ("Version 5.00"), so that settings move between machines; the settings file
// had this form once. Reading only.
#pragma once

#include "settings/RegistryText.h"

namespace registryExport {

inline constexpr QStringView kHeader = u"Windows Registry Editor Version 5.00";   // the first line

// Fills `sections` (it holds one, without a key). False: damaged; what is in `sections` then means nothing. Items of types
// other than text and number get an invalid value and their data as `raw`, in one line; comments get their line as `raw`;
// other items have no `raw`.
bool read(const QString& text, std::vector<RegistryText::Section>& sections);

}   // namespace registryExport
