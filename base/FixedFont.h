// The fixed font of the desktop, in its size; where the desktop names none, or names one that is not fixed, a fixed one of those installed.
#pragma once

#include <QFont>

QFont fixedFont();
