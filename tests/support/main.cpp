// The main() of every test program above the engine: one QApplication, and folders of the user that are nobody's.
#include <QApplication>

#include "tests/support/Skips.h"
#include "tests/support/files/OwnHome.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const testing_files::OwnHome home;
  QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  QApplication::setQuitOnLastWindowClosed(false);
  return runAllTests();
}
