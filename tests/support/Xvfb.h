// An X server without a screen, for tests in which windows of several processes must be seen.
#pragma once

#include <QFile>
#include <QProcess>

#include "tests/support/EventLoop.h"

class Xvfb {
 public:
  Xvfb() {
    if (!QFile::exists(QStringLiteral("/usr/bin/Xvfb"))) return;
    // Without -noreset it would throw its next client out while it starts anew behind the last one.
    server_.start(QStringLiteral("/usr/bin/Xvfb"),
                  {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
                   QStringLiteral("1024x768x24"), QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-noreset")});
    QByteArray number;
    while (!number.contains('\n') && server_.waitForReadyRead(kPatience)) number += server_.readAllStandardOutput();
    if (number.contains('\n')) display_ = ":" + number.trimmed();
    before_ = qgetenv("DISPLAY");
    if (!display_.isEmpty()) qputenv("DISPLAY", display_);
  }
  ~Xvfb() {
    if (before_.isEmpty()) qunsetenv("DISPLAY");
    else qputenv("DISPLAY", before_);
    server_.terminate();
    server_.waitForFinished(kPatience);
  }
  Xvfb(const Xvfb&) = delete;
  Xvfb& operator=(const Xvfb&) = delete;

  bool runs() const { return !display_.isEmpty(); }   // it is DISPLAY then, as long as this object lives
  QString display() const { return QString::fromLatin1(display_); }

 private:
  QProcess server_;
  QByteArray display_, before_;
};
