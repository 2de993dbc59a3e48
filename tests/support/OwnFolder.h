// A folder of the test's own with files in it, as a base of fixtures.
#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "tests/support/Text.h"
#include "tests/support/files/TempFolder.h"

// In memory where that can be: a busy disk that takes seconds for a sync would meet the editor's patience with disks.
inline QTemporaryDir memoryFolder() {
  return QTemporaryDir(QString::fromStdString(testing_files::TempFolder::base(testing_files::TempFolder::Where::memory)) +
                       q("/zelkor-test-XXXXXX"));
}

class OwnFolder {
 protected:
  QString path(const QString& name) const { return dir.filePath(name); }
  QString path(const char* name) const { return path(q(name)); }
  QString write(const QString& name, const QByteArray& bytes = "text\n") const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) << name.toStdString();
    return path(name);
  }
  QString write(const char* name, const QByteArray& bytes = "text\n") const { return write(q(name), bytes); }
  static QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
  }

  QTemporaryDir dir = memoryFolder();
};
