// Reports of the command language in the log: the usage search and the file information.
#pragma once

#include <QString>

class frmDocument;

namespace reports {

// FILEINFO: lines separated by CR LF, labels padded to one width.
QString fileInformation(frmDocument& document);

// USAGE: its argument is the search text with the options. Lines end with CR LF. Sets bookmarks if requested; caret, selection and
// search settings stay as they are. `about`, if not empty, is the file name in each line.
QString usage(frmDocument& document, const QString& argument, const QString& about = {});

// Lines whose visible text is only comment, and lines of blanks only.
struct LineCounts {
  qint64 comments = 0, blank = 0;
  bool whole = true;   // not cancelled
};
LineCounts countLines(frmDocument& document);

}   // namespace reports
