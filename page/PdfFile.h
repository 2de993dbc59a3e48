// A PDF file made of laid-out documents, with title, bookmarks and embedded fonts; as bytes, so that it is written like any other file.
#pragma once

#include <QByteArray>
#include <QStringList>
#include <vector>

#include "page/PrintPages.h"

// The pages of all documents, one behind the other, each drawn with its own page layout; one bookmark a document. Never empty: no document
// gives one empty page.
QByteArray makePdf(const std::vector<const PrintDocument*>& documents, const QString& title);
