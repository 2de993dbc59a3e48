// Settings as text that the user can read and edit: UTF-8, one value a line. Holds the whole file. A line that it cannot parse is
// kept and written back unchanged.
//
//   # Settings of Zelkor Editor. A whole file ends with the line "# end".
//
//   [Software\Zelkor Editor\Global]
//   LEFTMARGIN = "False"
//   Width = 800
//   "a name = with signs" = "C:\\work\nsecond line"
//
// A number is a REG_DWORD (32 bits, signed), a text in quotes a REG_SZ; anything else is kept but reads as empty (an invalid
// QVariant). In quotes \n, \r, \t, \", \\ and \uXXXX (one UTF-16 unit) stand for the character. "@" is the key's default value,
// whose name is empty. A key path without the name of a hive ("HKEY_...") lies below HKEY_LOCAL_MACHINE; in memory every path
// begins with its hive. Keys and value names are looked up without regard to case and keep the spelling of their first writing.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <vector>

class RegistryText {
 public:
  struct Item {
    QString raw;   // the line as it is in the file, without its line break
    bool isValue = false;
    QString foldedName;
    QString name;
    QVariant value;
  };
  struct Section {   // one "[key]" line and the items below it; the first section has no key
    QString key, foldedKey, raw;
    std::vector<Item> items;
  };

  // Reads the form above, or a file exported by the registry editor of Windows (RegistryExport.h). False: the file is damaged (cut,
  // binary, another format); the object is then empty. If a file written by toBytes is cut anywhere, it is read as damaged or as
  // complete, never as something between.
  bool parse(const QByteArray& bytes);
  QByteArray toBytes() const;   // UTF-8 with LF, without a byte order mark

  bool hasKey(const QString& key) const;   // also true for a parent of a key
  bool hasSubkeys(const QString& key) const;
  bool hasValue(const QString& key, const QString& name) const;   // of any type
  QVariant value(const QString& key, const QString& name) const;

  void addKey(const QString& key);                                                 // with its missing parents (not the hive)
  void setValue(const QString& key, const QString& name, const QVariant& value);   // creates the key if it is missing
  void removeKey(const QString& key);                                              // only the key itself; its subkeys stay

 private:
  const Item* find(const QString& key, const QString& name) const;

  std::vector<Section> sections_ = std::vector<Section>(1);
};
