// Reports on a text that the command language writes into the log: the usage search and the file information.
#pragma once

#include <QString>

class frmDocument;

namespace reports {

// FILEINFO: lines parted by CR LF, labels padded to one width.
QString fileInformation(frmDocument& document);

// USAGE: its argument is the text sought with the options. Lines end with CR LF. Sets bookmarks when asked to; caret,
// selection and the search settings stay as they are. `about`, when it is
// not empty, names the file in each line.
QString usage(frmDocument& document, const QString& argument, const QString& about = {});

// Lines whose visible text is all comment, and lines that hold blanks only.
struct LineCounts {
  qint64 comments = 0, blank = 0;
  bool whole = true;   // not cancelled
};
LineCounts countLines(frmDocument& document);

}   // namespace reports
