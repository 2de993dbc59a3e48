// Makes a PDF file of laid-out documents, with title, bookmarks and embedded fonts. The result is bytes, written like any other
// file.
#pragma once

#include <QByteArray>
#include <QStringList>
#include <functional>
#include <vector>

#include "page/PrintPages.h"

// The pages of all documents in order, each drawn with its own page layout, with one bookmark for each document. Never empty:
// without documents there is one empty page. goOn is told before each page how many are drawn; false ends it with a null result.
QByteArray makePdf(const std::vector<const PrintDocument*>& documents, const QString& title,
                   const std::function<bool(int pages)>& goOn = {});
