#include "app/start/PrintArguments.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QRegularExpression>
#include <cstdio>
#include <set>

#include "app/start/mGlobals.h"
#include "base/Options.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "document/frmDocument.h"
#include "page/PdfFile.h"
#include "page/VSPrinter.h"
#include "print/PrintJob.h"
#include "print/PrintSettings.h"
#include "script/Batch.h"
#include "text/file/FileIo.h"

namespace {

QString tr(const char* text) { return QCoreApplication::translate("PrintArguments", text); }

struct Switch {
  const char* name;
  void (*set)(PrintSettings& settings, bool on);
  const char* help;
};
constexpr Switch kSwitches[] = {
    {"--line-numbers", [](PrintSettings& s, bool on) { s.text.LineNumbers = on; },
     QT_TRANSLATE_NOOP("PrintArguments", "print line numbers")},
    {"--no-line-numbers", [](PrintSettings& s, bool on) { s.text.LineNumbers = !on; },
     QT_TRANSLATE_NOOP("PrintArguments", "print none")},
    {"--no-header", [](PrintSettings& s, bool on) { s.text.HeaderEnabled = !on; },
     QT_TRANSLATE_NOOP("PrintArguments", "print no header")},
    {"--no-footer", [](PrintSettings& s, bool on) { s.text.FooterEnabled = !on; },
     QT_TRANSLATE_NOOP("PrintArguments", "print no footer")},
    {"--wrap-mark", [](PrintSettings& s, bool on) { s.text.WrapMark = on; },
     QT_TRANSLATE_NOOP("PrintArguments", "mark where a line goes on below")},
    {"--review-sheet", [](PrintSettings& s, bool on) { s.reviewSheet = on; },
     QT_TRANSLATE_NOOP("PrintArguments", "a sheet for reviewers' notes behind each text")},
    {"--landscape", [](PrintSettings& s, bool on) { s.layout.setOrientation(on ? QPageLayout::Landscape : QPageLayout::Portrait); },
     QT_TRANSLATE_NOOP("PrintArguments", "turn the sheet")},
    {"--portrait", [](PrintSettings& s, bool on) { s.layout.setOrientation(on ? QPageLayout::Portrait : QPageLayout::Landscape); },
     QT_TRANSLATE_NOOP("PrintArguments", "do not turn the sheet")},
};

bool setStyle(const QString& value, bool* bold, bool* italic) {
  const QStringList words = value.toLower().split(u',');
  *bold = words.contains(QLatin1String("bold"));
  *italic = words.contains(QLatin1String("italic"));
  return words.size() == *bold + *italic || value.toLower() == QLatin1String("plain");
}

bool setColor(const QString& value, QColor* color) {
  *color = QColor(value);
  return color->isValid() || value.toLower() == QLatin1String("none");
}

bool setPaper(PrintSettings& s, const QString& value) {
  for (int id = 0; id < QPageSize::Custom; ++id) {
    const QPageSize size{QPageSize::PageSizeId(id)};
    if (size.key().compare(value, Qt::CaseInsensitive) != 0 && size.name().compare(value, Qt::CaseInsensitive) != 0) continue;
    s.layout.setPageSize(size);
    return true;
  }
  return false;
}

// One number for all sides, or left, top, right and bottom.
constexpr double kLeastRoom = 72;   // points between them
bool setMargins(PrintSettings& s, const QString& value) {
  QList<double> sides;
  for (const QString& part : value.split(u',')) {
    bool good = false;
    sides << part.toDouble(&good) * 72 / 25.4;
    if (!good || sides.last() < 0 || sides.last() > 2000) return false;
  }
  if (sides.size() == 1) sides = {sides[0], sides[0], sides[0], sides[0]};
  if (sides.size() != 4) return false;
  s.layout.setMinimumMargins({});
  const bool fit = s.layout.setMargins({sides[0], sides[1], sides[2], sides[3]});
  const QRectF room = s.layout.paintRect(QPageLayout::Point);
  return fit && room.width() >= kLeastRoom && room.height() >= kLeastRoom;
}

bool setNumber(const QString& value, double low, double high, double* number) {
  bool good = false;
  *number = value.toDouble(&good);
  return good && *number >= low && *number <= high;
}

// "3", "2-5" or "4-".
bool setPages(PrintSettings& s, const QString& value) {
  static const QRegularExpression form(QStringLiteral("^(\\d{1,6})(-(\\d{1,6})?)?$"));
  const auto match = form.match(value);
  if (!match.hasMatch()) return false;
  s.firstPage = match.captured(1).toInt();
  s.lastPage = match.captured(2).isEmpty() ? s.firstPage : match.captured(3).toInt();   // 0: to the end
  return s.firstPage > 0 && (match.captured(3).isEmpty() || s.lastPage >= s.firstPage);
}

struct ValueOption {
  const char *name, *value;
  bool (*set)(PrintSettings& settings, const QString& value);   // false: invalid value
  const char* help;
};
// clang-format off
constexpr ValueOption kValues[] = {
    {"--header", "TEXT", [](PrintSettings& s, const QString& v) { s.text.HeaderText = v; return s.text.HeaderEnabled = true; },
     QT_TRANSLATE_NOOP("PrintArguments", "left|centre|right; $ variables, %d page, %n pages, %f file date")},
    {"--footer", "TEXT", [](PrintSettings& s, const QString& v) { s.text.FooterText = v; return s.text.FooterEnabled = true; },
     QT_TRANSLATE_NOOP("PrintArguments", "the same for the footer")},
    {"--keywords", "STYLE", [](PrintSettings& s, const QString& v) { return setStyle(v, &s.text.Keywordsbold, &s.text.KeywordsItalic); },
     QT_TRANSLATE_NOOP("PrintArguments", "plain, bold, italic or bold,italic")},
    {"--comments", "STYLE", [](PrintSettings& s, const QString& v) { return setStyle(v, &s.text.CommentsBold, &s.text.CommentsItalic); },
     QT_TRANSLATE_NOOP("PrintArguments", "the same for comments")},
    {"--keyword-color", "COLOUR", [](PrintSettings& s, const QString& v) { return setColor(v, &s.text.keywordColor); },
     QT_TRANSLATE_NOOP("PrintArguments", "a name, #rrggbb or none")},
    {"--comment-color", "COLOUR", [](PrintSettings& s, const QString& v) { return setColor(v, &s.text.commentColor); },
     QT_TRANSLATE_NOOP("PrintArguments", "the same for comments")},
    {"--string-color", "COLOUR", [](PrintSettings& s, const QString& v) { return setColor(v, &s.text.stringColor); },
     QT_TRANSLATE_NOOP("PrintArguments", "the same for strings")},
    {"--font", "NAME", [](PrintSettings& s, const QString& v) { s.font.setFamily(v); return QFontDatabase::families().contains(v, Qt::CaseInsensitive); },
     QT_TRANSLATE_NOOP("PrintArguments", "a font of this system")},
    {"--font-size", "POINTS", [](PrintSettings& s, const QString& v) {
       double size = 0;
       const bool good = setNumber(v, 3, 72, &size);
       if (good) s.font.setPointSizeF(size);
       return good;
     }, QT_TRANSLATE_NOOP("PrintArguments", "3 to 72")},
    {"--paper", "SIZE", setPaper, QT_TRANSLATE_NOOP("PrintArguments", "A4, Letter, A3, Legal ...")},
    {"--margins", "MM", setMargins, QT_TRANSLATE_NOOP("PrintArguments", "all sides, or LEFT,TOP,RIGHT,BOTTOM; one inch stays")},
    {"--columns", "N", [](PrintSettings& s, const QString& v) {
       double columns = 0;
       const bool good = setNumber(v, 1, 2, &columns) && (v == QLatin1String("1") || v == QLatin1String("2"));
       if (good) s.columns = static_cast<int>(columns);
       return good;
     }, QT_TRANSLATE_NOOP("PrintArguments", "1 or 2 columns on a page")},
    {"--pages", "RANGE", setPages, QT_TRANSLATE_NOOP("PrintArguments", "of each file: 3, 2-5 or 4-")},
    {"--tab-size", "N", [](PrintSettings& s, const QString& v) {
       bool good = false;
       s.text.TabSize = v.toInt(&good);
       return good && s.text.TabSize >= 1 && s.text.TabSize <= 32;
     }, QT_TRANSLATE_NOOP("PrintArguments", "1 to 32 columns")},
};
// clang-format on

constexpr const char *kPrint = "--print-pdf", *kDefinitions = "--definitions";

QString help() {
  QString text = tr("Usage: zelkor --print-pdf OUT [OPTION...] FILE...") + QLatin1String("\n\n") +
                 tr("OUT is one PDF file for all, or a folder for one PDF file each.") + u'\n' +
                 tr("The defaults are the settings of the print options dialog.") + QLatin1String("\n\n");
  for (const Switch& option : kSwitches) text += helpLine(option.name, "", tr(option.help));
  for (const ValueOption& option : kValues) text += helpLine(option.name, option.value, tr(option.help));
  text += helpLine(kDefinitions, "FILE", tr("another definition file than that of the settings"));
  return text + u'\n' + tr("Exit status: 0 success, 2 wrong usage or a file that could not be read or written.") + u'\n';
}

// A PDF may only replace another PDF: if the user forgot the output name, a source file would be the output.
bool mayReplace(const QString& path, const std::set<FileId>& sources) {
  const auto id = fileId(path);
  bool good = !id || !isRegularFile(path);
  if (!good && sources.count(*id) != 0) {
    std::fprintf(stderr, "zelkor: %s\n", qPrintable(tr("%1 is an input file: it is not replaced").arg(plainForDisplay(path))));
    return false;
  }
  if (!good) {
    text::FileSystem& fs = text::fileSystem();
    char head[5] = {};
    const int fd = fs.openAt(text::FileSystem::kCwd, fromQString(path), text::kRead, 0);
    const auto length = fd < 0 ? -1 : fs.read(fd, head, sizeof head);
    if (fd >= 0) fs.close(fd);
    good = length == 0 || (length == sizeof head && std::string_view(head, sizeof head) == "%PDF-");
  }
  if (!good)
    std::fprintf(stderr, "zelkor: %s\n",
                 qPrintable(tr("%1 exists and is not a PDF file: it is not replaced").arg(plainForDisplay(path))));
  return good;
}

bool save(const QString& path, const QByteArray& pdf) {
  const auto saved = text::saveBytes(fromQString(path), std::string_view(pdf.constData(), static_cast<std::size_t>(pdf.size())));
  if (!saved.ok()) std::fprintf(stderr, "zelkor: %s: %s\n", qPrintable(plainForDisplay(path)), saved.error.c_str());
  return saved.ok();
}

}   // namespace

PrintArguments parsePrintArguments(const QStringList& arguments, PrintSettings* settings) {
  PrintArguments parsed;
  std::vector<OptionRow> rows{{"--help"}, {kPrint, "OUT"}, {kDefinitions, "FILE"}};
  for (const OptionRow& row : optionRows(kSwitches)) rows.push_back(row);
  for (const OptionRow& row : optionRows(kValues)) rows.push_back(row);
  Options given = parseCommandLine(arguments, rows);
  parsed.help = given.isOn("--help");
  if (parsed.help) return parsed;
  parsed.files = given.files();
  parsed.error = given.error;
  // The margins last: whether there is room for them depends on the sheet.
  std::stable_partition(given.given.begin(), given.given.end(),
                        [](const Options::Given& one) { return one.name != QLatin1String("--margins"); });
  for (const Options::Given& one : std::as_const(given.given)) {   // of two that contradict each other the later one holds
    if (!parsed.error.isEmpty()) return parsed;
    const auto isIt = [&](const auto& row) { return one.name == QLatin1String(row.name); };
    const auto* plain = std::find_if(std::begin(kSwitches), std::end(kSwitches), isIt);
    const auto* valued = std::find_if(std::begin(kValues), std::end(kValues), isIt);
    if (plain != std::end(kSwitches)) plain->set(*settings, one.isOn());
    else if (valued != std::end(kValues) && !valued->set(*settings, one.value))
      parsed.error = tr("%1: %2 is not possible (%3)").arg(one.name, one.value, tr(valued->help));
  }
  parsed.output = given.value(kPrint);
  parsed.definitions = given.value(kDefinitions);
  if (!parsed.error.isEmpty()) return parsed;
  if (parsed.output.isEmpty()) parsed.error = tr("--print-pdf needs the PDF file or a folder");
  else if (parsed.files.isEmpty()) parsed.error = tr("--print-pdf needs a file to print");
  return parsed;
}

int runPrintPdf(const QStringList& arguments) {
  const batch::Session session;
  PrintSettings settings = PrintSettings::load();
  const PrintArguments given = parsePrintArguments(arguments, &settings);
  if (given.help) return std::fputs(qPrintable(help()), stdout) < 0 ? batch::kFailed : batch::kDone;
  if (!given.error.isEmpty()) {
    std::fprintf(stderr, "zelkor: %s\n", qPrintable(given.error));
    return batch::kFailed;
  }
  if (const QString error = readDefinitions(given.definitions); !error.isEmpty()) {
    std::fprintf(stderr, "zelkor: %s\n", qPrintable(error));
    return batch::kFailed;
  }

  const bool oneEach = isFolder(given.output);
  QStringList names;
  std::set<FileId> sources;
  for (const QString& file : given.files)
    if (const auto id = fileId(file)) sources.insert(*id);
  if (!oneEach && !mayReplace(given.output, sources)) return batch::kFailed;
  std::vector<PrintDocument> pages;
  int status = batch::eachDocument(given.files, [&](frmDocument& document) {
    CWordWrap wrap;
    VSPrinter printer;
    if (!layOut(document, settings, wrap, printer)) return batch::kFailed;
    std::vector<PrintDocument> made{pagesOf(printer.document(), settings.firstPage, settings.lastPage)};
    if (made.front().pages.empty()) {
      std::fprintf(stderr, "zelkor: %s\n",
                   qPrintable(tr("%1 has no page %2").arg(plainForDisplay(document.CurrentFileTitle())).arg(settings.firstPage)));
      return batch::kFailed;
    }
    if (settings.reviewSheet) {
      wrap.PrintReviewTable(printer);
      made.push_back(printer.document());
    }
    if (!oneEach) {
      pages.insert(pages.end(), made.begin(), made.end());
      return batch::kDone;
    }
    const QString name = document.CurrentFileTitle() + QStringLiteral(".pdf");
    if (names.contains(name)) {
      std::fprintf(stderr, "zelkor: %s\n",
                   qPrintable(tr("another file named %1 was written to the folder already").arg(plainForDisplay(name))));
      return batch::kFailed;
    }
    names << name;
    if (!mayReplace(QDir(given.output).filePath(name), sources)) return batch::kFailed;
    std::vector<const PrintDocument*> both;
    for (const PrintDocument& one : made) both.push_back(&one);
    return save(QDir(given.output).filePath(name), makePdf(both, made.front().name)) ? batch::kDone : batch::kFailed;
  });
  if (oneEach || pages.empty()) return status;
  std::vector<const PrintDocument*> documents;
  for (const PrintDocument& document : pages) documents.push_back(&document);
  const QString title = pages.size() == 1 ? pages.front().name : QFileInfo(given.output).completeBaseName();
  if (!save(given.output, makePdf(documents, title))) status = batch::kFailed;
  return status;
}
