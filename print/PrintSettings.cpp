#include "print/PrintSettings.h"

#include <QDateTime>
#include <QFontInfo>
#include <QLocale>

#include "base/FixedFont.h"
#include "bridge/FileNames.h"
#include "control/CodeMax.h"
#include "document/frmDocument.h"
#include "page/VSPrinter.h"
#include "script/mCMXParser.h"
#include "settings/modRegistry.h"

using namespace modRegistry;

namespace {

struct Flag9 {
  const char* name;
  bool CWordWrap::*member;
};
constexpr Flag9 kFlags[] = {{"cb", &CWordWrap::CommentsBold},  {"ci", &CWordWrap::CommentsItalic},
                            {"kb", &CWordWrap::Keywordsbold},  {"ki", &CWordWrap::KeywordsItalic},
                            {"ln", &CWordWrap::LineNumbers},   {"wrapmark", &CWordWrap::WrapMark},
                            {"he", &CWordWrap::HeaderEnabled}, {"fe", &CWordWrap::FooterEnabled}};
struct NamedText {
  const char* name;
  QString CWordWrap::*member;
};
constexpr NamedText kTexts[] = {{"ht", &CWordWrap::HeaderText}, {"ft", &CWordWrap::FooterText}};
struct NamedColor {
  const char* name;
  QColor CWordWrap::*member;
};
constexpr NamedColor kColors[] = {{"keywordcolor", &CWordWrap::keywordColor},
                                  {"commentcolor", &CWordWrap::commentColor},
                                  {"stringcolor", &CWordWrap::stringColor}};

QString key(const char* name) { return QLatin1String(name); }

}   // namespace

PrintSettings::PrintSettings()
    : font(fixedFont()),
      layout(QPageSize(QLocale::system().measurementSystem() == QLocale::MetricSystem ? QPageSize::A4 : QPageSize::Letter),
             QPageLayout::Portrait, QMarginsF(54, 54, 54, 54), QPageLayout::Point) {
  font.setPointSizeF(9);
}

PrintSettings PrintSettings::load() {
  PrintSettings s;
  for (const auto& flag : kFlags) s.text.*flag.member = Flag(kPrinterKey, key(flag.name), s.text.*flag.member);
  for (const auto& t : kTexts) s.text.*t.member = Text(kPrinterKey, key(t.name), s.text.*t.member);
  for (const auto& c : kColors) {
    const QColor color(Text(kPrinterKey, key(c.name)));
    if (color.isValid()) s.text.*c.member = color;
  }
  const QString family = Text(kPrinterKey, QStringLiteral("fontname"));
  if (!family.isEmpty()) s.font.setFamily(family);
  const double size = Real(kPrinterKey, QStringLiteral("fontsize"), s.font.pointSizeF());
  if (size >= 3 && size <= 72) s.font.setPointSizeF(size);
  s.columns = std::clamp(Number(kPrinterKey, QStringLiteral("columns"), s.columns), 1, 2);
  const int paper = Number(kPrinterKey, QStringLiteral("paper"), int(s.layout.pageSize().id()));
  if (paper >= 0 && paper < QPageSize::Custom) s.layout.setPageSize(QPageSize(QPageSize::PageSizeId(paper)));
  s.layout.setOrientation(Flag(kPrinterKey, QStringLiteral("landscape"), false) ? QPageLayout::Landscape : QPageLayout::Portrait);
  QMarginsF margins = s.layout.margins();
  const auto margin = [](const char* name, double otherwise) {
    const double value = Real(kPrinterKey, key(name), otherwise);
    return value >= 0 && value <= 2000 ? value : otherwise;
  };
  s.layout.setMinimumMargins(QMarginsF());
  s.layout.setMargins(QMarginsF(margin("marginleft", margins.left()), margin("margintop", margins.top()),
                                margin("marginright", margins.right()), margin("marginbottom", margins.bottom())));
  return s;
}

void PrintSettings::save() const {
  NewKey(kPrinterKey);
  for (const auto& flag : kFlags) SetFlag(kPrinterKey, key(flag.name), text.*flag.member);
  for (const auto& t : kTexts) SetText(kPrinterKey, key(t.name), text.*t.member);
  for (const auto& c : kColors) SetText(kPrinterKey, key(c.name), (text.*c.member).isValid() ? (text.*c.member).name() : QString());
  SetText(kPrinterKey, QStringLiteral("fontname"), font.family());
  SetText(kPrinterKey, QStringLiteral("fontsize"), QString::number(font.pointSizeF()));
  SetNumber(kPrinterKey, QStringLiteral("columns"), columns);
  SetNumber(kPrinterKey, QStringLiteral("paper"), int(layout.pageSize().id()));
  SetFlag(kPrinterKey, QStringLiteral("landscape"), layout.orientation() == QPageLayout::Landscape);
  const QMarginsF margins = layout.margins(QPageLayout::Point);
  SetText(kPrinterKey, QStringLiteral("marginleft"), QString::number(margins.left()));
  SetText(kPrinterKey, QStringLiteral("margintop"), QString::number(margins.top()));
  SetText(kPrinterKey, QStringLiteral("marginright"), QString::number(margins.right()));
  SetText(kPrinterKey, QStringLiteral("marginbottom"), QString::number(margins.bottom()));
}

void PrintSettings::applyTo(VSPrinter& printer) const {
  printer.setPageLayout(layout);
  printer.setColumns(columns);
  printer.setFont(font);
  printer.setTextColor(Qt::black);
}

void PrintSettings::copyOptionsTo(CWordWrap& wrap) const {
  for (const auto& flag : kFlags) wrap.*flag.member = text.*flag.member;
  for (const auto& t : kTexts) wrap.*t.member = text.*t.member;
  for (const auto& c : kColors) wrap.*c.member = text.*c.member;
  wrap.TabSize = text.TabSize;
}

PrintEdge GenerateHandF(const QString& text, bool enabled, const QString& fileDate) {
  if (!enabled) return {};
  PrintEdge edge = splitEdge(text);
  for (QString* part : {&edge.left, &edge.centre, &edge.right}) {
    QString made;
    const auto add = [&made](QString literal) {
      mCMXParser::SubstituteVariables(literal);
      for (const QChar letter : {u'd', u'n'}) literal.replace(QString(u'%') + letter, QString(u'%') + kNoField + letter);
      made += literal;
    };
    qsizetype copied = 0;
    for (qsizetype at = 0; at + 1 < part->size(); ++at) {
      const QChar letter = (*part)[at + 1];
      if ((*part)[at] != u'%' || (letter != u'd' && letter != u'n' && letter != u'f')) continue;
      add(part->mid(copied, at - copied));
      made += letter == u'f' ? fileDate : part->mid(at, 2);
      copied = ++at + 1;
    }
    add(part->mid(copied));
    *part = made;
  }
  return edge;
}

bool layOut(CodeMax& cmx, const QString& title, const PrintSettings& settings, CWordWrap& wrap, VSPrinter& printer,
            const std::function<bool(qint64, qint64)>& goOn) {
  settings.copyOptionsTo(wrap);
  settings.applyTo(printer);
  wrap.cmx = &cmx;
  const text::FileStamp file = wrap.FilePath.isEmpty() ? text::FileStamp() : text::stampOf(fromQString(wrap.FilePath), false);
  const QDateTime changed = file.exists ? QDateTime::fromMSecsSinceEpoch(file.status.mtimeNs / 1'000'000) : QDateTime();
  const QString fileDate = QLocale().toString(changed.date(), QLocale::ShortFormat);
  printer.setHeader(GenerateHandF(wrap.HeaderText, wrap.HeaderEnabled, fileDate));
  printer.setFooter(GenerateHandF(wrap.FooterText, wrap.FooterEnabled, fileDate));
  printer.setWrapMark(wrap.WrapMark);
  const auto lines = QObject::connect(&printer, &VSPrinter::NewLineEvent, &printer, [&wrap] { ++wrap.NewLineCount; });
  const auto pages = QObject::connect(&printer, &VSPrinter::NewPageEvent, &printer, [&wrap](int page) { wrap.setPages(page); });
  QString line;
  bool done = false;
  wrap.cmPrintText(printer, line, title, wrap.LineNumbers, done, goOn);
  QObject::disconnect(lines);
  QObject::disconnect(pages);
  return done;
}

bool layOut(frmDocument& document, const PrintSettings& settings, CWordWrap& wrap, VSPrinter& printer,
            const std::function<bool(qint64, qint64)>& goOn) {
  wrap.SetSingleComment(document.LineComment());
  wrap.SetMultiLineComment(document.BlockCommentStart(), document.BlockCommentEnd());
  wrap.FilePath = document.CurrentFileName();
  wrap.UserName = QStringLiteral("$User");
  mCMXParser::SubstituteVariables(wrap.UserName);
  return layOut(*document.cmx, document.CurrentFileTitle(), settings, wrap, printer, goOn);
}
