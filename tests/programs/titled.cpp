// Shows a window with the title of its first argument, changes it to that of the second one after 300 ms, and ends with code 5
// when its window is asked to close, with 6 when that does not happen within two minutes.
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <cstdlib>

class Window : public QWidget {
  void closeEvent(QCloseEvent*) override { std::_Exit(5); }   // at once: the tool kit leaks at its end, which a sanitizer reports
};

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  qputenv("QT_QPA_PLATFORM", "xcb");
  QApplication application(argc, argv);
  Window window;
  window.setWindowTitle(QString::fromLocal8Bit(argv[1]));
  window.show();
  QTimer::singleShot(300, &window, [&] { window.setWindowTitle(QString::fromLocal8Bit(argv[2])); });
  QTimer::singleShot(120'000, &window, [] { QCoreApplication::exit(6); });
  return QApplication::exec();
}
