// The main() of every test program above the engine: one QApplication, and folders of the user that are nobody's.
#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include "tests/support/Skips.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QTemporaryDir home;
  for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR", "HOME"}) {
    const QString folder = home.filePath(QString::fromLatin1(name).toLower());
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv(name, folder.toLocal8Bit());
  }
  QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  QApplication::setQuitOnLastWindowClosed(false);
  return runAllTests();
}
