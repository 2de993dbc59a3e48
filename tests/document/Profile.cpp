// The service form: recently-used list, window profile, menus made from data, file dialogs.
#include <QApplication>
#include <QScreen>

#include "settings/clsRegistry.h"
#include "settings/modRegistry.h"
#include "tests/document/DocumentFixture.h"

namespace {

using namespace modRegistry;

class Profile : public DocumentFixture {
 protected:
  Profile() {
    NewKey(kGlobalKey);
    for (const char* name :
         {"winTop", "winleft", "winwidth", "winheight", "winstate", "winscale", "StatusBar", "ToolBar", "Tabs", "ewinstate"})
      SetText(kGlobalKey, q(name), {});
    for (int i = 0; i < 10; ++i) SetText(kGlobalKey, q("MRU%1").arg(i), {});
    service.mruFile.setItems({});
    folderBefore = QDir::currentPath();
  }
  ~Profile() override { QDir::setCurrent(folderBefore); }
  frmRegistry& service = frmRegistry::instance();
  QString folderBefore;
};
class ProfileDialogs : public Profile {};

TEST(ProfileMru, OrderAndLimits) {
  ucMRULst list;
  int changes = 0;
  QObject::connect(&list, &ucMRULst::Changed, [&] { ++changes; });
  for (int i = 1; i <= 12; ++i) list.AddItem(q("/f%1").arg(i));
  EXPECT_EQ(list.Count(), 10);
  EXPECT_EQ(list.Item(0), q("/f12"));
  EXPECT_EQ(list.Item(9), q("/f3"));
  list.AddItem(q("/f5"));
  EXPECT_EQ(list.Count(), 10);
  EXPECT_EQ(list.Item(0), q("/f5"));
  list.UseItem(3);
  EXPECT_EQ(list.Item(0), q("/f10"));
  list.Remove(0);
  EXPECT_EQ(list.Count(), 9);
  EXPECT_EQ(changes, 15);
  for (const int outside : {-1, 9, 100}) {
    list.UseItem(outside);
    list.Remove(outside);
    EXPECT_EQ(list.Item(outside), QString());
  }
  EXPECT_EQ(changes, 15);
  list.AddItem({});
  EXPECT_EQ(list.Count(), 9);
}

TEST_F(Profile, SampleFilesSeedTheList) {
  service.SetupMRUList();
  EXPECT_EQ(service.mruFile.Count(), 9);
  EXPECT_TRUE(service.mruFile.Item(0).endsWith(q("/Samples/sample1.vhd"))) << service.mruFile.Item(0).toStdString();
  EXPECT_TRUE(service.mruFile.Item(8).endsWith(q("/Samples/wave.do")));
  service.GetProfile(main, q("mnuFileMRU"));
  EXPECT_EQ(service.mruFile.Count(), 9) << "nothing stored yet: the seed stays";
}

TEST_F(Profile, ListSurvivesARun) {
  service.GetProfile(main, q("mnuFileMRU"));
  service.mruFile.AddItem(q("/a&b.v"));
  service.mruFile.AddItem(q("/second.v"));   // and no end in good order
  EXPECT_EQ(Text(kGlobalKey, q("MRU0")), q("/second.v"));
  service.GetProfile(main, q("mnuFileMRU"));
  EXPECT_EQ(service.mruFile.items(), (QStringList{q("/second.v"), q("/a&b.v")}));
}

TEST_F(Profile, GeometryFollowsTheState) {
  main.window.setGeometry(50, 60, 300, 200);
  main.checks = {{q("mnuViewStatusBar"), true}, {q("mnuViewToolbar"), false}, {q("mnuViewTabs"), false}};
  main.documentState = 2;
  service.SaveMDIWindowProfile(main);
  for (const auto& [state, number] :
       {std::pair{Qt::WindowMaximized, 2}, std::pair{Qt::WindowMinimized, 1}, std::pair{Qt::WindowFullScreen, 0}}) {
    main.window.setWindowState(state);
    SetText(kGlobalKey, q("winTop"), q("61"));
    service.SaveMDIWindowProfile(main);
    EXPECT_EQ(Number(kGlobalKey, q("winstate"), -1), number);
    EXPECT_EQ(Number(kGlobalKey, q("winTop"), -1), 60) << "its normal place";
    EXPECT_EQ(Number(kGlobalKey, q("winwidth"), -1), 300);
  }

  FakeFrame next;
  next.checks = {{q("mnuViewStatusBar"), false}, {q("mnuViewToolbar"), true}, {q("mnuViewTabs"), true}};
  SetNumber(kGlobalKey, q("winstate"), 2);
  service.getFormWindowProfile(next);
  EXPECT_TRUE(next.window.isMaximized());
  EXPECT_TRUE(next.checks[q("mnuViewStatusBar")]);
  EXPECT_FALSE(next.checks[q("mnuViewToolbar")]);
  EXPECT_FALSE(next.checks[q("mnuViewTabs")]);
  EXPECT_EQ(next.documentState, 2);
  SetNumber(kGlobalKey, q("winstate"), 1);
  FakeFrame minimised;
  service.getFormWindowProfile(minimised);
  EXPECT_FALSE(minimised.window.isMinimized()) << "who starts a program wants to see it";
  EXPECT_EQ(minimised.window.geometry(), QRect(50, 60, 300, 200));
}

TEST_F(Profile, ASmallScreenOrAnotherScaleKeepsTheSize) {
  const auto session = [this](const QSize& resized = {}) {
    FakeFrame frame;
    service.getFormWindowProfile(frame);
    const QSize shown = frame.window.size();
    if (resized.isValid()) frame.window.resize(resized);
    service.SaveMDIWindowProfile(frame);
    return shown;
  };
  const auto stored = [] { return QSize(Number(kGlobalKey, q("winwidth"), -1), Number(kGlobalKey, q("winheight"), -1)); };
  const auto store = [](const QSize& size, double scale) {
    SetText(kGlobalKey, q("winwidth"), QString::number(size.width()));
    SetText(kGlobalKey, q("winheight"), QString::number(size.height()));
    SetText(kGlobalKey, q("winscale"), QString::number(scale));
  };
  store({3000, 2000}, 1);
  EXPECT_LT(session().width(), 3000);
  EXPECT_EQ(stored(), QSize(3000, 2000)) << "shown smaller only";
  session({400, 300});
  EXPECT_EQ(stored(), QSize(400, 300)) << "the user made it so";
  const double scale = QApplication::primaryScreen()->devicePixelRatio();
  store({150, 100}, 2 * scale);
  EXPECT_EQ(session(), QSize(300, 200)) << "as much of the screen as before";
  EXPECT_EQ(stored(), QSize(150, 100));
  store({300, 200}, 0.5 * scale);
  EXPECT_EQ(session(), QSize(300, 200)) << "as much text as before";
  session({350, 310});
  EXPECT_EQ(session(), QSize(350, 310)) << "with the scale it was made at";
}

TEST_F(Profile, ForeignValuesDoNoHarm) {
  struct Case {
    const char *top, *left, *width, *height;
  };
  const QRect screen = QApplication::primaryScreen()->availableGeometry();
  for (const Case& c : {Case{"-30000", "50000", "400", "300"}, Case{"10.5", "20.25", "400.7", "300"},
                        Case{"0", "0", "999999999", "999999999"}, Case{"x", "y", "z", ""}, Case{"0", "0", "-5", "0"},
                        Case{"1e300", "-1e300", "400", "300"}, Case{"nan", "inf", "400", "300"}}) {
    SCOPED_TRACE(c.top);
    SetText(kGlobalKey, q("winTop"), q(c.top));
    SetText(kGlobalKey, q("winleft"), q(c.left));
    SetText(kGlobalKey, q("winwidth"), q(c.width));
    SetText(kGlobalKey, q("winheight"), q(c.height));
    FakeFrame frame;
    frame.window.resize(350, 300);
    service.getFormWindowProfile(frame);
    EXPECT_TRUE(screen.contains(frame.window.geometry())) << frame.window.geometry().top() << ' ' << frame.window.geometry().left();
    EXPECT_GE(frame.window.width(), 100);
    EXPECT_GE(frame.window.height(), 100);
  }
}

// ---- file dialogs

TEST_F(ProfileDialogs, OpenAndSaveFollowTheFolder) {
  const QString filter = q("(*.*)|*.*|Verilog (*.v;*.vh)|*.v;*.vh|None ()||");
  QDir(dir.path()).mkdir(q("sub"));
  int entry = 1;
  boxes.answerOpen({path("sub/a.v"), path("sub/b.v")}, 2);
  EXPECT_EQ(service.stdOpenFile(q("Open File"), filter, entry, dir.path(), {}, true).size(), 2);
  EXPECT_EQ(entry, 2);
  EXPECT_EQ(boxes.last().request.title, q("Open File"));
  EXPECT_TRUE(boxes.last().request.multiple);
  EXPECT_EQ(QDir::currentPath(), QDir(path("sub")).canonicalPath());

  struct Case {
    int entry;
    const char* extension;
  };
  for (const Case& c : {Case{1, ""}, Case{2, "v"}, Case{3, ""}, Case{9, ""}}) {
    boxes.answerSave({});
    entry = c.entry;
    EXPECT_EQ(service.stdSaveFile(q("Save File"), filter, entry, dir.path(), q("x")), QString());
    EXPECT_EQ(boxes.last().request.defaultExtension, q(c.extension)) << c.entry;
  }
  EXPECT_EQ(QDir::currentPath(), QDir(path("sub")).canonicalPath()) << "cancelled: the folder stays";
}

}   // namespace
