// docs/commands.md is what commandref prints.
#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>

#include "tests/support/EventLoop.h"

TEST(CommandReference, IsUpToDate) {
  QProcess program;
  program.start(qEnvironmentVariable("ZELKOR_BIN") + QStringLiteral("/commandref"), QStringList());
  ASSERT_TRUE(program.waitForFinished(kPatience)) << "commandref does not run";
  const QByteArray printed = program.readAllStandardOutput();
  EXPECT_GT(printed.size(), 10000);
  QFile file(qEnvironmentVariable("ZELKOR_SOURCE") + QStringLiteral("/docs/commands.md"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_TRUE(file.readAll() == printed) << "run: build/dev/bin/commandref > docs/commands.md";
}
