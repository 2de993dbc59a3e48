// Turns the filter form of the language manager, "Name (*.a;*.b)|*.a;*.b|..." pairs, into the entries of a file dialog.
#pragma once

#include <QStringList>

// One entry "Name (*.a *.b)" for each pair, in order. All entries differ, so that a choice leads back to its index. "*.*" and an
// empty pattern become "*", which also shows names without a dot. A last piece without a partner is pattern and name at once
// ("*.ini").
QStringList dialogFilters(const QString& filter);
