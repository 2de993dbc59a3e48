// The texts that were copied or cut last, newest first, for pasting an older one. Kept until the program ends.
#pragma once

#include <QString>
#include <vector>

struct CopiedText {
  QString text;
  bool block = false;   // a rectangular block
  bool operator==(const CopiedText&) const = default;
};

class PasteHistory {
 public:
  void add(const CopiedText& copied);   // a text that is known already becomes the newest; a larger one than kLargest is left out
  const std::vector<CopiedText>& texts() const { return texts_; }
  static constexpr std::size_t kMost = 20;
  static constexpr qsizetype kLargest = 1 << 20;   // UTF-16 units

 private:
  std::vector<CopiedText> texts_;
};

PasteHistory& pasteHistory();
