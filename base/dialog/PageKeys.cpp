#include "base/dialog/PageKeys.h"

#include <QShortcut>
#include <QTabBar>

void walkPagesByKeys(QWidget& dialog, QTabBar& pages) {
  for (const auto& [keys, step] : {std::pair{"Ctrl+Tab", 1}, {"Ctrl+PgDown", 1}, {"Ctrl+Shift+Tab", -1}, {"Ctrl+PgUp", -1}}) {
    auto* key = new QShortcut(QKeySequence(QLatin1String(keys)), &dialog);
    QObject::connect(key, &QShortcut::activated, &pages, [&pages, step = step] {
      const int count = pages.count();
      int to = pages.currentIndex();
      do to = (to + step + count) % count;
      while (to != pages.currentIndex() && !(pages.isTabVisible(to) && pages.isTabEnabled(to)));
      pages.setCurrentIndex(to);
    });
  }
}
