// Settings as text, in the form that the registry editor of Windows exports and imports ("Version 5.00"), so that settings
// move between machines. Holds the whole file: what it does not understand is kept and written back as it was.
//
// Key paths begin with the hive's name ("HKEY_LOCAL_MACHINE\Software\..."), parts separated by "\". Keys and value names are
// looked up without regard to case and keep the spelling of their first writing. The empty value name is the key's default
// value. Values are QString (REG_SZ) or qint32 (REG_DWORD); anything else is kept but reads as empty (an invalid QVariant).
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <vector>

class RegistryText {
 public:
  // Reads UTF-16LE with its mark, or UTF-8 with or without. False: damaged (cut, binary, another format), then empty.
  // A file that toBytes wrote and that was cut anywhere is damaged or complete, never something between.
  bool parse(const QByteArray& bytes);
  QByteArray toBytes() const;   // UTF-16LE with its mark and CR LF, as the registry editor writes it

  bool hasKey(const QString& key) const;                    // also true for the parent of a key
  bool hasSubkeys(const QString& key) const;
  bool hasValue(const QString& key, const QString& name) const;   // of any type
  QVariant value(const QString& key, const QString& name) const;

  void addKey(const QString& key);                          // with its missing parents (not the hive)
  void setValue(const QString& key, const QString& name, const QVariant& value);   // makes the key when it is missing
  void removeKey(const QString& key);                       // the key itself; subkeys are the caller's affair

 private:
  struct Item {
    QString raw;                  // the lines as they stand in the file, without the last line break
    bool isValue = false;
    QString foldedName;
    QString name;
    QVariant value;
  };
  struct Section {                // one "[key]" line and what follows it; the first one has no key
    QString key, foldedKey, raw;
    std::vector<Item> items;
  };
  class Reader;
  const Item* find(const QString& key, const QString& name) const;

  std::vector<Section> sections_ = std::vector<Section>(1);
};
