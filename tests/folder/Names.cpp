// Which file comes first while its name is typed.
#include "folder/Names.h"

#include <gtest/gtest.h>

namespace {

std::string first(const folder::NameTable& table, std::string_view typed, std::size_t most = 1, const folder::NameTies& ties = {}) {
  std::string names;
  for (const auto& one : folder::rankNames({&table}, folder::parseNameQuery(typed), ties, most))
    names += (names.empty() ? "" : " ") + std::string(table.path(one.index));
  return names;
}

}   // namespace

TEST(Names, BestFitFirst) {
  folder::NameTable table("/top");
  for (const char* path :
       {"rtl/alu.sv", "rtl/alu_pkg.sv", "rtl/salute.sv", "rtl/malu.sv", "alu/top.sv", "a/long/unit.v", "tb/alu_tb.sv",
        "rtl/Zähler.v", "x/fifo_sync.sv", "y/fifo_sync.sv", "y/my_fifo.sv", "sync/fifo.c", "rtl/f_i_f_o.v"})
    table.add(path);
  // A whole name, a whole word, a word's beginning, any piece, folders, scattered letters.
  EXPECT_EQ(first(table, "alu", 9), "rtl/alu.sv tb/alu_tb.sv rtl/alu_pkg.sv rtl/malu.sv rtl/salute.sv alu/top.sv a/long/unit.v");
  EXPECT_EQ(first(table, "sync fifo", 9), first(table, "FIFO Sync", 9));
  EXPECT_EQ(first(table, "sync fifo", 3), "x/fifo_sync.sv y/fifo_sync.sv sync/fifo.c");
  EXPECT_EQ(first(table, "fifo y/", 1), "y/my_fifo.sv");
  EXPECT_EQ(first(table, "ZÄHL"), "rtl/Zähler.v");
  EXPECT_EQ(first(table, "qqq"), "");
  // Ties only: what was used last and what is near come first among equals, and never before a better fit.
  folder::NameTies ties;
  ties.near = "y";
  EXPECT_EQ(first(table, "fifo_sync", 1, ties), "y/fifo_sync.sv");
  ties.recency = [&](std::uint32_t, std::uint32_t i) {
    return table.path(i) == "x/fifo_sync.sv" || table.path(i) == "rtl/f_i_f_o.v" ? 0u : 9u;
  };
  EXPECT_EQ(first(table, "fifo_sync", 1, ties), "x/fifo_sync.sv");
  EXPECT_EQ(first(table, "fifo", 1, ties), "sync/fifo.c");
  const auto query = folder::parseNameQuery("alu rtl:120:5");
  EXPECT_EQ(query.line, 120);
  EXPECT_EQ(query.column, 5);
  EXPECT_EQ(query.parts, (std::vector<std::string>{"alu", "rtl"}));
  EXPECT_EQ(folder::parseNameQuery("a:b").line, 0);
  EXPECT_EQ(folder::namePlaces("rtl/alu.sv", query), (std::vector<std::pair<std::size_t, std::size_t>>{{0, 3}, {4, 3}}));
}
