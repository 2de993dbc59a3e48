#include "page/PdfFile.h"

#include <QBuffer>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>

#include "base/Program.h"

namespace {

// A text string of a PDF file: UTF-16 with its mark, as hex.
QByteArray pdfText(const QString& text) {
  QByteArray bytes("\xFE\xFF", 2);
  for (const QChar c : text) {
    bytes += static_cast<char>(c.unicode() >> 8);
    bytes += static_cast<char>(c.unicode() & 0xff);
  }
  return '<' + bytes.toHex() + '>';
}

struct Bookmark {
  QString title;
  int page;   // from 0
};

// Appends an incremental update that adds an outline to the catalogue. QPdfWriter cannot write one. If the file does not look as
// expected, it stays without bookmarks.
void addBookmarks(QByteArray* pdf, const std::vector<Bookmark>& bookmarks) {
  const QString text = QString::fromLatin1(*pdf);
  static const QRegularExpression trailerForm(QStringLiteral("trailer\\s*<<(.*?)>>\\s*startxref\\s+(\\d+)\\s+%%EOF\\s*$"),
                                              QRegularExpression::DotMatchesEverythingOption);
  const qsizetype trailerAt = text.lastIndexOf(QLatin1String("trailer"));
  const auto trailer = trailerAt < 0 ? QRegularExpressionMatch() : trailerForm.match(text, trailerAt);
  static const QRegularExpression sizeForm(QStringLiteral("/Size\\s+(\\d+)")),
      rootForm(QStringLiteral("/Root\\s+(\\d+)\\s+0\\s+R")), infoForm(QStringLiteral("/Info\\s+\\d+\\s+0\\s+R"));
  const QString entries = trailer.captured(1);
  const auto size = sizeForm.match(entries), root = rootForm.match(entries), info = infoForm.match(entries);
  if (!trailer.hasMatch() || !size.hasMatch() || !root.hasMatch()) return;
  const auto objectBody = [&text](const QString& number) {
    static const QString end = QStringLiteral("endobj");
    qsizetype at = text.indexOf(u'\n' + number + QStringLiteral(" 0 obj"));
    if (at < 0) return QString();
    at = text.indexOf(QLatin1String("<<"), at) + 2;
    return text.mid(at, text.indexOf(end, at) - at);
  };
  QString catalogue = objectBody(root.captured(1));
  catalogue.truncate(catalogue.lastIndexOf(QLatin1String(">>")));
  static const QRegularExpression pagesForm(QStringLiteral("/Pages\\s+(\\d+)\\s+0\\s+R")),
      kidsForm(QStringLiteral("/Kids\\s*\\[([^\\]]*)\\]"));
  const auto kids = kidsForm.match(objectBody(pagesForm.match(catalogue).captured(1)));
  QStringList pages = kids.captured(1).simplified().split(QStringLiteral(" 0 R"), Qt::SkipEmptyParts);
  if (catalogue.isEmpty() || pages.isEmpty()) return;

  const int firstNew = size.captured(1).toInt();
  std::vector<std::pair<int, qsizetype>> offsets;
  const auto object = [&](int number, const QByteArray& body) {
    offsets.push_back({number, pdf->size()});
    *pdf += QByteArray::number(number) + " 0 obj\n<<" + body + ">>\nendobj\n";
  };
  const auto reference = [](int number) { return QByteArray::number(number) + " 0 R"; };
  const int count = static_cast<int>(bookmarks.size());
  if (!pdf->endsWith('\n')) *pdf += '\n';
  object(root.captured(1).toInt(), catalogue.toLatin1() + "/Outlines " + reference(firstNew) + " /PageMode /UseOutlines ");
  object(firstNew, "/Type /Outlines /First " + reference(firstNew + 1) + " /Last " + reference(firstNew + count) + " /Count " +
                       QByteArray::number(count));
  for (int i = 0; i < count; ++i) {
    QByteArray body = "/Title " + pdfText(bookmarks[static_cast<std::size_t>(i)].title) + " /Parent " + reference(firstNew) +
                      " /Dest [" + pages.value(bookmarks[static_cast<std::size_t>(i)].page).simplified().toLatin1() + " 0 R /Fit]";
    if (i > 0) body += " /Prev " + reference(firstNew + i);
    if (i + 1 < count) body += " /Next " + reference(firstNew + i + 2);
    object(firstNew + 1 + i, body);
  }
  const qsizetype xref = pdf->size();
  *pdf += "xref\n";
  for (const auto& [number, offset] : offsets)
    *pdf += QByteArray::number(number) + " 1\n" + QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
  *pdf += "trailer\n<</Size " + QByteArray::number(firstNew + 1 + count) + " /Root " + reference(root.captured(1).toInt()) + " " +
          info.captured(0).toLatin1() + " /Prev " + trailer.captured(2).toLatin1() + ">>\nstartxref\n" + QByteArray::number(xref) +
          "\n%%EOF\n";
}

}   // namespace

QByteArray makePdf(const std::vector<const PrintDocument*>& documents, const QString& title,
                   const std::function<bool(int pages)>& goOn) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  std::vector<Bookmark> bookmarks;
  {
    QPdfWriter writer(&buffer);
    writer.setTitle(title);
    writer.setCreator(QLatin1String(kApplicationTitle));
    writer.setResolution(1200);
    const auto layoutFor = [&](const PrintDocument& document) {
      QPageLayout layout = document.layout;
      layout.setMode(QPageLayout::FullPageMode);
      return layout;
    };
    if (!documents.empty()) writer.setPageLayout(layoutFor(*documents.front()));
    QPainter painter(&writer);
    int page = 0;
    for (const PrintDocument* document : documents) {
      for (int i = 0; i < static_cast<int>(document->pages.size()); ++i) {
        if (goOn && !goOn(page)) return {};
        if (page > 0) {
          writer.setPageLayout(layoutFor(*document));
          writer.newPage();
        }
        if (i == 0) bookmarks.push_back({document->name, page});
        painter.save();
        painter.scale(writer.logicalDpiX() / 72.0, writer.logicalDpiY() / 72.0);
        drawPage(painter, *document, i);
        painter.restore();
        ++page;
      }
    }
  }
  if (!bookmarks.empty()) addBookmarks(&bytes, bookmarks);
  return bytes;
}
