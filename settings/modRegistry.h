// The short calls by which the program reads and writes its settings. All use HKEY_LOCAL_MACHINE and one clsRegistry.
//
// Flag, Number and Real accept either stored type, "True"/"False" in any case, 1, 0 and -1. A missing or senseless value gives the
// default. Flags are written as the texts "True" and "False".
#pragma once

#include <QString>
#include <QVariant>

class clsRegistry;

namespace modRegistry {

inline const QString kGlobalKey = QStringLiteral("Software\\Zelkor Editor\\Global");
inline const QString kEditorKey = QStringLiteral("Software\\Zelkor Editor\\Editor");
inline const QString kPrinterKey = QStringLiteral("Software\\Zelkor Editor\\Printer");

clsRegistry& Registry();   // made on first use

bool KeyValid(const QString& key);
QVariant GetValue(const QString& key, const QString& name);   // see clsRegistry::GetKeyValue
void NewKey(const QString& key);
void SetNumber(const QString& key, const QString& name, qint32 value);
void SetText(const QString& key, const QString& name, const QString& value);
int LastResult();   // of the last call, 0 for success

bool Flag(const QString& key, const QString& name, bool otherwise);
int Number(const QString& key, const QString& name, int otherwise);
double Real(const QString& key, const QString& name, double otherwise);
QString Text(const QString& key, const QString& name, const QString& otherwise = {});
void SetFlag(const QString& key, const QString& name, bool value);

int Flush();                 // writes all pending changes; 0 or an error code. Called when the program ends
bool SetReadOnly(bool on);   // batch mode: later changes last for this process only. Returns the old state

}   // namespace modRegistry
