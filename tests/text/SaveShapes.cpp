// What a save keeps of files of every shape: links, inode, mode, owner, group, attributes, access lists. Run as the superuser
// it also plays an ordinary user; else the rows that need other owners are left out.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>

#include "tests/support/files/Child.h"
#include "tests/support/files/FaultyFileSystem.h"
#include "tests/support/files/TempFolder.h"
#include "text/file/FileIo.h"

using namespace testing_files;
namespace fs = std::filesystem;

namespace {

constexpr unsigned kUser = 12345, kOther = 12346, kGroup = 12345, kOtherGroup = 12347;
const std::string kOld(5'000, 'o'), kNew = "the new text\n";

// All that must stay.
struct Shape {
  unsigned mode = 0, owner = 0, group = 0;
  std::uint64_t links = 0, inode = 0;
  std::map<std::string, std::string> attributes;
};

Shape shapeOf(const std::string& path) {
  struct stat s {};
  EXPECT_EQ(::stat(path.c_str(), &s), 0) << path;
  Shape shape{s.st_mode, s.st_uid, s.st_gid, s.st_nlink, s.st_ino, {}};
  char names[4096];
  const ssize_t length = ::listxattr(path.c_str(), names, sizeof names);
  for (const char* name = names; length > 0 && name < names + length; name += std::strlen(name) + 1) {
    char value[4096];
    const ssize_t n = ::getxattr(path.c_str(), name, value, sizeof value);
    shape.attributes[name] = std::string(value, n > 0 ? static_cast<std::size_t>(n) : 0);
  }
  return shape;
}

bool setAttribute(const std::string& path, const char* name, const std::string& value) {
  return ::setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

// An access list in the kernel's form: owner rw, one more user `perm`, group r, mask `perm`, others nothing.
std::string accessList(unsigned short perm) {
  struct Entry {
    unsigned short tag, perm;
    unsigned id;
  };
  const Entry entries[] = {
      {1, 6, ~0u}, {2, perm, kOther}, {4, 4, ~0u}, {0x10, static_cast<unsigned short>(perm | 4), ~0u}, {0x20, 0, ~0u}};
  const unsigned version = 2;
  std::string value(reinterpret_cast<const char*>(&version), sizeof version);
  return value.append(reinterpret_cast<const char*>(entries), sizeof entries);
}

enum class Way { replace, inPlace, refuse };

struct Row {
  const char* name;
  bool asUser;   // saved by an ordinary user, who owns folder and file unless `build` says otherwise
  Way way;
  std::function<bool(const std::string& folder, const std::string& file)> build;   // false: not possible here
};

bool mode(const std::string& path, unsigned bits) { return ::chmod(path.c_str(), bits) == 0; }
bool own(const std::string& path, unsigned owner, unsigned group) { return ::chown(path.c_str(), owner, group) == 0; }

// clang-format off
const Row kRows[] = {
    {"0600", true, Way::replace, [](auto&, auto& f) { return mode(f, 0600); }},
    {"0755", true, Way::replace, [](auto&, auto& f) { return mode(f, 0755); }},
    {"0666", true, Way::replace, [](auto&, auto& f) { return mode(f, 0666); }},
    {"set-user-id", true, Way::replace, [](auto&, auto& f) { return mode(f, 04755); }},
    {"set-group-id", true, Way::replace, [](auto&, auto& f) { return mode(f, 02775); }},
    {"set-user-id as superuser", false, Way::replace, [](auto&, auto& f) { return mode(f, 06755); }},
    {"read-only", true, Way::refuse, [](auto&, auto& f) { return mode(f, 0444); }},
    {"read-only as superuser", false, Way::replace, [](auto&, auto& f) { return mode(f, 0444); }},
    {"no rights at all", true, Way::refuse, [](auto&, auto& f) { return mode(f, 0); }},
    {"attributes", true, Way::replace,
     [](auto&, auto& f) {
       return setAttribute(f, "user.comment", "x") && setAttribute(f, "user.empty", "") &&
              setAttribute(f, "user.long", std::string(900, 'y'));
     }},
    {"access list", true, Way::replace,
     [](auto&, auto& f) { return setAttribute(f, "system.posix_acl_access", accessList(6)); }},
    {"access list and attribute as superuser", false, Way::replace,
     [](auto&, auto& f) {
       return own(f, kOther, kOtherGroup) && setAttribute(f, "system.posix_acl_access", accessList(4)) &&
              setAttribute(f, "trusted.note", "t");
     }},
    {"folder whose list would let more people in", true, Way::replace,
     [](auto& d, auto& f) { return mode(f, 0640) && setAttribute(d, "system.posix_acl_default", accessList(6)); }},
    {"folder with group inheritance", true, Way::replace,
     [](auto& d, auto&) { return own(d, kUser, kOtherGroup) && mode(d, 02775); }},
    {"other owner as superuser", false, Way::replace, [](auto&, auto& f) { return own(f, kOther, kOtherGroup); }},
    {"hard link", true, Way::inPlace,
     [](auto& d, auto& f) { return ::link(f.c_str(), (d + "/second").c_str()) == 0; }},
    {"foreign owner", true, Way::inPlace, [](auto&, auto& f) { return own(f, kOther, kOtherGroup) && mode(f, 0666); }},
    {"foreign owner in a shared folder", true, Way::inPlace,
     [](auto& d, auto& f) { return own(d, 0, 0) && mode(d, 01777) && own(f, kOther, kOtherGroup) && mode(f, 0666); }},
    {"foreign group", true, Way::inPlace, [](auto&, auto& f) { return own(f, kUser, kOtherGroup) && mode(f, 0664); }},
    {"no right in the folder", true, Way::inPlace, [](auto& d, auto&) { return own(d, 0, 0) && mode(d, 0755); }},
    {"folder that cannot be listed", true, Way::inPlace, [](auto& d, auto&) { return own(d, 0, 0) && mode(d, 0711); }},
};
// clang-format on

TEST(SaveShapes, S8_S9_S10_LinksModeOwnerAndAttributesAreKept) {
  const bool root = ::geteuid() == 0;
  for (const auto& row : kRows) {
    if (!root && !row.asUser) continue;
    SCOPED_TRACE(row.name);
    TempFolder top;
    const std::string folder = top / "folder", file = folder + "/file.txt", state = top / "state";
    fs::create_directory(folder);
    fs::create_directory(state);
    writeRaw(file, kOld);
    if (root) {
      mode(top.path(), 0755);
      for (const auto& path : {folder, file, state}) own(path, row.asUser ? kUser : 0, row.asUser ? kGroup : 0);
    }
    if (!row.build(folder, file)) {
      std::printf("left out, not possible here: %s\n", row.name);
      continue;
    }
    const Shape before = shapeOf(file);
    EXPECT_EQ(inChild([&] {
                if (root && row.asUser) {
                  EXPECT_EQ(::setgid(kGroup), 0);
                  EXPECT_EQ(::setuid(kUser), 0);
                }
                ::umask(0);   // nothing may come out wider even then
                text::setRecoveryFolder(state);
                FaultyFileSystem watched;
                const UseFileSystem use(watched);
                watched.before([&](const Call& call) {
                  std::error_code hidden;
                  for (fs::directory_iterator it(folder, hidden), end; !hidden && it != end; it.increment(hidden)) {
                    if (it->path().filename().string().find("zelkor") == std::string::npos) continue;
                    struct stat s {};
                    if (::stat(it->path().c_str(), &s) != 0) continue;
                    const unsigned allowed = (row.way == Way::inPlace ? 0600 : 0) | before.mode;
                    EXPECT_EQ(s.st_mode & 0777 & ~allowed, 0u) << "wider than its target before " << call.name;
                  }
                });
                const auto result = text::saveFile(file, text::Snapshot(kNew), {});
                EXPECT_EQ(result.ok(), row.way != Way::refuse) << result.error;
              }),
              0);
    Shape after = shapeOf(file);
    EXPECT_EQ(after.mode, before.mode) << std::oct << after.mode << " " << before.mode;
    EXPECT_EQ(after.owner, before.owner);
    EXPECT_EQ(after.group, before.group);
    EXPECT_EQ(after.links, before.links);
    EXPECT_EQ(after.attributes, before.attributes);
    EXPECT_EQ(after.inode == before.inode, row.way != Way::replace);
    mode(file, 0600);   // an ordinary user reads nothing else
    EXPECT_TRUE(readRaw(file) == (row.way == Way::refuse ? kOld : kNew));
    EXPECT_TRUE(fs::is_empty(state));
    for (const auto& entry : fs::directory_iterator(folder))
      EXPECT_EQ(entry.path().filename().string().find("zelkor"), std::string::npos) << entry.path();
  }
}

TEST(SaveShapes, S8_ChainsOfSymbolicLinksAreFollowedAndKept) {
  TempFolder folder;
  fs::create_directories(folder / "a/b");
  writeRaw(folder / "a/b/file", kOld);
  fs::create_symlink("b/file", folder / "a/relative");
  fs::create_symlink(folder / "a/relative", folder / "absolute");
  fs::create_symlink("a", folder / "folder");
  fs::create_symlink("folder/../absolute", folder / "winding");
  for (const char* name : {"a/relative", "absolute", "folder/relative", "winding"}) {
    writeRaw(folder / "a/b/file", kOld);
    const auto stamp = text::stampOf(folder / name, true);
    EXPECT_EQ(text::saveFile(folder / name, text::Snapshot(kNew), {{}, stamp}).error, "") << name;
    EXPECT_EQ(readRaw(folder / "a/b/file"), kNew);
  }
  for (const char* name : {"a/relative", "absolute", "folder", "winding"}) EXPECT_TRUE(fs::is_symlink(folder / name));
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"a", "absolute", "folder", "winding"}));

  fs::create_symlink("a/b/not yet there", folder / "dangling");
  EXPECT_EQ(text::saveFile(folder / "dangling", text::Snapshot(kNew), {}).error, "");
  EXPECT_TRUE(fs::is_symlink(folder / "dangling"));
  EXPECT_EQ(readRaw(folder / "a/b/not yet there"), kNew);

  fs::create_symlink("two", folder / "one");
  fs::create_symlink("one", folder / "two");
  EXPECT_EQ(text::saveFile(folder / "one", text::Snapshot(kNew), {}).error, "Too many levels of symbolic links");
  EXPECT_TRUE(fs::is_symlink(folder / "one"));
}

TEST(SaveShapes, S11_WhatIsNoRegularFileIsNeverReplaced) {
  TempFolder folder;
  fs::create_directory(folder / "folder");
  ::mkfifo((folder / "fifo").c_str(), 0600);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, (folder / "socket").c_str(), sizeof address.sun_path - 1);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  const std::tuple<std::string, std::string, fs::file_type> rows[] = {
      {folder / "folder", "Is a folder, not a file", fs::file_type::directory},
      {folder / "folder/", "Is a directory", fs::file_type::directory},
      {folder / "fifo", "Is a FIFO, not a regular file", fs::file_type::fifo},
      {folder / "socket", "Is a socket, not a regular file", fs::file_type::socket},
      {"/dev/null", "Is a device, not a regular file", fs::file_type::character},
      {folder / "missing/file", "No such file or directory", fs::file_type::not_found},
      {folder / "fifo/file", "Not a directory", fs::file_type::not_found},
      {"", "No such file or directory", fs::file_type::not_found},
  };
  const auto before = folder.names();
  for (const auto& [path, error, type] : rows) {
    EXPECT_EQ(text::saveFile(path, text::Snapshot(kNew), {}).error, error) << path;
    EXPECT_EQ(text::saveBytes(path, kNew).error, error) << path;
    std::error_code none;
    EXPECT_EQ(fs::symlink_status(path, none).type(), type) << path;
  }
  EXPECT_EQ(folder.names(), before);
  ::close(socket);
}

TEST(SaveShapes, NewFilesTakeTheirModeFromMaskAndFolder) {
  TempFolder folder;
  EXPECT_EQ(inChild([&] {
              ::umask(027);
              EXPECT_EQ(text::saveFile(folder / "text", text::Snapshot(kNew), {}).error, "");
              EXPECT_EQ(text::saveBytes(folder / "bytes", kNew, 0600).error, "");
              EXPECT_EQ(::chdir(folder.path().c_str()), 0);
              EXPECT_EQ(text::saveFile("relative", text::Snapshot(kNew), {}).error, "");
              EXPECT_EQ(text::saveFile("./-odd \n\xff%1", text::Snapshot(kNew), {}).error, "");
              EXPECT_EQ(text::saveFile(std::string(255, 'n'), text::Snapshot(kNew), {}).error, "");
              EXPECT_EQ(text::saveFile(std::string(255, 'n'), text::Snapshot(kOld), {}).error, "");
              EXPECT_EQ(text::saveFile(std::string(256, 'n'), text::Snapshot(kNew), {}).error, "File name too long");
            }),
            0);
  EXPECT_EQ(shapeOf(folder / "text").mode & 07777, 0640u);
  EXPECT_EQ(shapeOf(folder / "bytes").mode & 07777, 0600u);
  EXPECT_EQ(readRaw(folder / "relative"), kNew);
  EXPECT_EQ(readRaw(folder / "-odd \n\xff%1"), kNew);
  EXPECT_EQ(readRaw(folder / std::string(255, 'n')), kOld);
  EXPECT_EQ(folder.names().size(), 5u);
}

}   // namespace
