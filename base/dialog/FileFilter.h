// Turns the filter form of the language manager, "Name (*.a;*.b)|*.a;*.b|..." pairs, into the entries of a file dialog.
#pragma once

#include <QStringList>

// One entry "Name (*.a *.b)" for each pair, in order; all different, so that a dialog's choice leads back to its index.
// "*.*" becomes "*", which also shows names without a dot; so does an empty pattern. A last piece without a partner
// is a pattern that is its own name ("*.ini").
QStringList dialogFilters(const QString& filter);
