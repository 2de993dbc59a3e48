// Writes settings as one of several processes: settings_writer FILE NAME COUNT EVERY [FROM] sets the values NAME<FROM> (0) to
// NAME<COUNT-1> in that file, flushes after every EVERY of them, and prints the number of each value that is certainly in the file.
#include <sys/stat.h>

#include <QCoreApplication>
#include <cstdio>

#include "settings/RegistryFile.h"

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  const QStringList arguments = application.arguments();
  if (arguments.size() < 5) return 2;
  const QString key = QStringLiteral("Software\\Zelkor Editor\\Global");
  RegistryFile store(arguments[1]);
  store.setLockPatience(600'000);
  store.create(registry::kLocalMachine, key);
  const int count = arguments[3].toInt(), every = arguments[4].toInt();
  struct stat mark {};
  for (int n = arguments.value(5).toInt(); n < count; ++n) {
    if (store.write(registry::kLocalMachine, key, arguments[2] + QString::number(n), n) != 0) return 3;
    if ((n + 1) % every != 0 && n + 1 < count) continue;
    ::stat("/the-save-begins-here", &mark);   // seen in a trace
    if (store.flush() != 0) return 4;
    ::stat("/the-save-ends-here", &mark);
    std::printf("%d\n", n);
    std::fflush(stdout);
  }
  return 0;
}
