// The settings file as text: what it reads, what it writes, and that damage is seen as damage.
#include "settings/RegistryText.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QString kKey = u"HKEY_LOCAL_MACHINE\\Software\\Zelkor Editor\\Global"_s;

QByteArray exported(const QString& body) {
  return (u"Windows Registry Editor Version 5.00\r\n\r\n["_s + kKey + u"]\r\n"_s + body).toUtf8();
}

QByteArray own(const QString& body) {
  return (u"# Settings of Zelkor Editor. A whole file ends with the line \"# end\".\n\n[Software\\Zelkor Editor\\Global]\n"_s +
          body + u"\n# end\n"_s)
      .toUtf8();
}

QString readable(const RegistryText& text) { return QString::fromUtf8(text.toBytes()); }

RegistryText full() {
  RegistryText text;
  text.setValue(kKey, u"CURDIR"_s, u"C:\\work \"here\"\\ü"_s);
  text.setValue(kKey, u"EMPTY"_s, QString());
  text.setValue(kKey, u"NUMBER"_s, qint32(-2));
  text.setValue(kKey, u"HOTKEYS"_s, u"Ctrl+A=HOME\r\nCtrl+B=END\r\n; a text long enough to be broken into several lines\r\n"_s);
  text.setValue(kKey + u"\\Deep"_s, QString(), u"default value"_s);
  text.addKey(kKey + u"\\Empty key"_s);
  return text;
}

}   // namespace

TEST(RegistryText, ReadsWhatTheRegistryEditorExports) {
  struct Case {
    QString line;
    QVariant value;
  };
  // clang-format off
  const std::vector<Case> cases{
      {u"\"v\"=\"text\""_s, u"text"_s}, {u"\"v\"=\"\""_s, u""_s}, {u"\"v\"=\"a\\\\b \\\"c\\\"\""_s, u"a\\b \"c\""_s},
      {u"\"V\"=\"two\r\nlines\""_s, u"two\r\nlines"_s}, {u"\"v\"=dword:0000001f"_s, qint32(31)},
      {u"\"v\"=dword:FFFFFFFF"_s, qint32(-1)}, {u"\"v\"=hex(1):41,00,0d,00,0a,00,\\\r\n  42,00,00,00"_s, u"A\r\nB"_s},
      {u"\"v\"=hex(4):02,01,00,00"_s, qint32(258)}, {u"\"v\"=hex:01,02"_s, {}}, {u"\"v\"=hex(7):41,00,00,00,00,00"_s, {}},
      {u"\"v\"=hex(2):"_s, {}}, {u"\"v\"=-"_s, {}}, {u"\"v\"=\"first\"\r\n\"V\"=\"last counts\""_s, u"last counts"_s}};
  // clang-format on
  for (const Case& c : cases) {
    RegistryText text;
    ASSERT_TRUE(text.parse(exported(c.line + u"\r\n"_s))) << qPrintable(c.line);
    EXPECT_EQ(text.value(kKey.toUpper(), u"v"_s), c.value) << qPrintable(c.line);
    EXPECT_EQ(text.value(kKey, u"v"_s).typeId(), c.value.typeId()) << qPrintable(c.line);
    EXPECT_TRUE(text.hasValue(kKey, u"v"_s));
    RegistryText again;   // from then on in our own form
    ASSERT_TRUE(again.parse(text.toBytes())) << qPrintable(readable(text));
    EXPECT_EQ(again.value(kKey, u"v"_s), c.value) << qPrintable(readable(text));
    EXPECT_TRUE(again.hasValue(kKey, u"v"_s));
  }
}

TEST(RegistryText, IsWrittenForAPersonToRead) {
  RegistryText text;
  text.setValue(kKey, u"A\\B"_s, u"C:\\x"_s);
  text.setValue(kKey, u"a\\b"_s, qint32(-10));   // the first spelling stays
  text.setValue(kKey, u"Last file"_s, u"1\r\n\tü \"\xD8FF\u0001"_s);
  text.setValue(u"HKEY_CURRENT_USER\\X"_s, QString(), u""_s);
  const QString written =
      u"# Settings of Zelkor Editor. A whole file ends with the line \"# end\".\n\n[Software]\n\n[Software\\Zelkor Editor]\n\n"
      "[Software\\Zelkor Editor\\Global]\n\"A\\\\B\" = -10\nLast file = \"1\\r\\n\\tü \\\"\\ud8ff\\u0001\"\n\n[HKEY_CURRENT_USER\\X]\n@ = \"\"\n\n# end\n"_s;
  EXPECT_EQ(readable(text), written);
  RegistryText edited;   // as an editor of another system leaves it
  ASSERT_TRUE(
      edited.parse("\xEF\xBB\xBF" + QString(written).replace(u"\n"_s, u"\r\n"_s).replace(u"= -10"_s, u"  =8  "_s).toUtf8()));
  EXPECT_EQ(edited.value(kKey, u"A\\B"_s), qint32(8));
  EXPECT_EQ(edited.value(kKey, u"Last file"_s), text.value(kKey, u"Last file"_s));
}

TEST(RegistryText, C3_UnknownContentSurvivesChanges) {
  const QString body = u"v = 1\nstrange = hex(b):01,02\n  # a remark\n\n[HKEY_CURRENT_USER\\Other]\n@ = \"d\"\n"_s;
  RegistryText text;
  ASSERT_TRUE(text.parse(own(body)));
  text.setValue(kKey, u"V"_s, qint32(7));
  text.setValue(kKey, u"new"_s, u"x"_s);
  RegistryText again;
  ASSERT_TRUE(again.parse(text.toBytes()));
  const QString out = readable(again);
  for (const auto& kept :
       {u"\nv = 7\n"_s, u"\nstrange = hex(b):01,02\n"_s, u"\n  # a remark\n"_s, u"[HKEY_CURRENT_USER\\Other]\n@ = \"d\"\n"_s})
    EXPECT_TRUE(out.contains(kept)) << qPrintable(kept) << "\n" << qPrintable(out);
  EXPECT_EQ(again.value(kKey, u"NEW"_s), u"x"_s);
  EXPECT_TRUE(again.hasValue(kKey, u"strange"_s));
  EXPECT_EQ(again.toBytes(), text.toBytes());
}

TEST(RegistryText, KeysHaveParentsAndSubkeys) {
  RegistryText text = full();
  EXPECT_TRUE(text.hasKey(u"hkey_local_machine\\SOFTWARE"_s));
  EXPECT_TRUE(text.hasSubkeys(kKey));
  EXPECT_FALSE(text.hasSubkeys(kKey + u"\\Deep"_s));
  EXPECT_FALSE(text.hasKey(kKey + u"\\Dee"_s));
  text.removeKey(kKey.toLower() + u"\\deep"_s);
  EXPECT_FALSE(text.hasKey(kKey + u"\\Deep"_s));
  EXPECT_TRUE(text.hasKey(kKey + u"\\Empty key"_s));
  text.removeKey({});
  EXPECT_EQ(text.value(kKey, u"NUMBER"_s), qint32(-2));
}

TEST(RegistryText, DamagedFormsAreRefused) {
  // clang-format off
  const std::vector<QByteArray> damaged{
      "", "\n", "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\A]\r\n", "Windows Registry Editor Version 5.00", QByteArray(1000, '\0'),
      "Windows Registry Editor Version 5.00\r\n", exported(u"garbage\r\n"_s), exported(u"\"v\"\r\n"_s),
      exported(u"\"v=1\r\n"_s), exported(u"\"v\"=\"open\r\n"_s), exported(u"\"v\"=\"x\" y\r\n"_s),
      exported(u"\"v\"=dword:12g\r\n"_s), exported(u"\"v\"=dword:123456789\r\n"_s), exported(u"\"v\"=hex:100\r\n"_s),
      exported(u"\"v\"=what:1\r\n"_s), own(u"garbage\n"_s), own(u"= 1\n"_s), own(u"\"v = 1\n"_s), own(u"v = \"open\n"_s),
      own(u"v = \"x\" y\n"_s), own(u"v = \"\\u12\"\n"_s), own(u"v = \"\\q\"\n"_s), own(u"[key\n"_s), own({}).chopped(7),
      exported(u"[key\r\n"_s), exported(u"\"v\"=dword:00000001\r\n"_s) + "\xFF", QByteArray("\xFF\xFE") + "odd"};
  // clang-format on
  for (const QByteArray& bytes : damaged) {
    RegistryText text = full();
    EXPECT_FALSE(text.parse(bytes)) << bytes.constData();
    EXPECT_FALSE(text.hasKey(kKey)) << "left over after a failure";
  }
}

TEST(RegistryText, C2_CutAtEveryByteIsDamagedOrComplete) {
  const QByteArray whole = full().toBytes();
  int complete = 0;
  for (qsizetype length = 0; length < whole.size(); ++length) {
    RegistryText text;
    if (!text.parse(whole.left(length))) continue;
    ++complete;
    ASSERT_EQ(text.toBytes(), whole) << "cut to " << length << " bytes";
  }
  EXPECT_LE(complete, 2);   // only the last line break may go without loss
}
