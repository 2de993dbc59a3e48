// File lists of simulators as users write them.
#include "folder/FileList.h"

#include <gtest/gtest.h>
#include <cerrno>
#include <cstring>

#include <cstdlib>
#include <filesystem>

#include "tests/support/files/TempFolder.h"

namespace fs = std::filesystem;
using testing_files::TempFolder;
using testing_files::writeRaw;

TEST(FileList, NamesWhatTheDesignIsMadeOf) {
  const TempFolder top;
  for (const char* folder : {"/sim", "/rtl", "/ip/lib", "/inc1", "/inc2", "/sp ace"}) fs::create_directories(top.path() + folder);
  for (const char* file : {"/rtl/a.v", "/rtl/c.v", "/ip/lib/l1.sv", "/ip/lib/l2.vlib", "/ip/core.v", "/inc1/only1.svh",
                           "/inc2/only2.svh", "/inc2/defs.svh", "/sp ace/s.v", "/cells.v"})
    writeRaw(top.path() + file, "");
  writeRaw(top / "rtl/b.sv",
           "// `include \"no.svh\"\n/* `include \"no.svh\" */ \"`include\"\n`include \"defs.svh\"\n`include <only2.svh>\n");
  writeRaw(top / "inc1/defs.svh", "`include \"only1.svh\"\n");   // the first of two folders counts
  ::setenv("IP", (top / "ip").c_str(), 1);
  ::unsetenv("NOT_SET");
  writeRaw(top / "sim/all.f",
           "// first\n"
           "+incdir+inc1+inc2 +define+SIM+W=8 -timescale 1ns/1ps -sv\n"
           "rtl/a.v /* rtl/c.v\n*/ rtl/b.sv # rtl/c.v\n"
           "rtl/a.v rtl/../rtl/a.v\n"
           "\"sp ace/s.v\"\n"
           "$IP/core.v ${IP}/core.v\n"
           "-v cells.v -y $(IP)/lib +libext+.sv+.vlib\n"
           "-F sim/sub.f\n"
           "rtl/missing.v\n"
           "$NOT_SET/x.v\n"
           "-f sim/all.f\n"
           "-y nowhere\n"
           "rtl\n"
           "-f");
  writeRaw(top / "sim/sub.f", "../rtl/c.v -f more.f\n");
  writeRaw(top / "sim/more.f", "rtl/b.sv");   // from the working folder again
  const folder::FileList list = folder::readFileList(top / "sim/all.f", top.path(), false);
  const auto in = [&](std::initializer_list<const char*> names) {
    std::vector<std::string> paths;
    for (const char* name : names) paths.push_back(top / name);
    return paths;
  };
  EXPECT_EQ(list.files, in({"rtl/a.v", "rtl/b.sv", "sp ace/s.v", "ip/core.v", "cells.v", "rtl/c.v", "ip/lib/l1.sv",
                            "ip/lib/l2.vlib", "inc1/defs.svh", "inc2/only2.svh", "inc1/only1.svh"}));
  EXPECT_EQ(list.lists, in({"sim/all.f", "sim/sub.f", "sim/more.f"}));
  EXPECT_EQ(list.defines, (std::vector<std::string>{"SIM", "W=8"}));
  const std::string missing = std::string(std::strerror(ENOENT)) + '\n';
  std::string problems;
  for (const auto& problem : list.problems)
    problems += fs::path(problem.list).filename().string() + ':' + std::to_string(problem.line) + ": " + problem.text + '\n';
  EXPECT_EQ(problems, "all.f:10: " + top / "rtl/missing.v: " + missing + "all.f:11: the variable NOT_SET is not set\n" +
                          "all.f:12: " + top / "sim/all.f is being read already: a list cannot hold itself\n" +
                          "all.f:13: " + top / "nowhere: " + missing + "all.f:14: " + top / "rtl: Is a folder, not a file\n" +
                          "all.f:15: -f needs a value\n");
  EXPECT_EQ(folder::likelyWorkingFolder(top / "sim/all.f"), top.path());
  EXPECT_EQ(folder::readFileList(top / "no.f", top.path(), true).problems.size(), 1u);
}
