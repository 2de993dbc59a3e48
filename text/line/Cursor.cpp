#include "text/line/Cursor.h"

#include <algorithm>
#include <cstring>

namespace text {

std::string_view Cursor::ahead() {
  if (at_ >= size_) return {};
  if (at_ < chunkBegin_ || at_ >= chunkBegin_ + static_cast<std::int64_t>(chunk_.size())) {
    chunk_ = text_->chunkAt(at());
    chunkBegin_ = at_;
  }
  return chunk_.substr(static_cast<std::size_t>(at_ - chunkBegin_));
}

std::string_view Cursor::behind() {
  if (at_ <= 0) return {};
  if (at_ <= chunkBegin_ || at_ > chunkBegin_ + static_cast<std::int64_t>(chunk_.size())) {
    chunk_ = text_->chunkBefore(at());
    chunkBegin_ = at_ - static_cast<std::int64_t>(chunk_.size());
  }
  return chunk_.substr(0, static_cast<std::size_t>(at_ - chunkBegin_));
}

Char Cursor::peek() {
  const auto view = ahead();
  if (view.empty() || view.size() >= 4 || static_cast<unsigned char>(view[0]) < 0x80) return decode(view);
  char bytes[4];   // the character may continue in the next block
  const auto count = static_cast<std::size_t>(std::min<std::int64_t>(4, size_ - at_));
  for (std::size_t i = 0; i < count; ++i) bytes[i] = text_->at(at() + static_cast<std::int64_t>(i));
  return decode({bytes, count});
}

Char Cursor::peekBefore() {
  const auto view = behind();
  if (view.empty() || view.size() >= 4 || static_cast<unsigned char>(view.back()) < 0x80) return decodeLast(view);
  char bytes[4];
  const auto count = static_cast<std::size_t>(std::min<std::int64_t>(4, at_));
  for (std::size_t i = 0; i < count; ++i) bytes[i] = text_->at(at() - static_cast<std::int64_t>(count - i));
  return decodeLast({bytes, count});
}

Char Cursor::next() {
  const Char c = peek();
  at_ += c.bytes;
  return c;
}

Char Cursor::previous() {
  const Char c = peekBefore();
  at_ -= c.bytes;
  return c;
}

bool Cursor::toByte(char b) {
  for (auto view = ahead(); !view.empty(); view = ahead()) {
    if (const void* hit = std::memchr(view.data(), b, view.size())) {
      at_ += static_cast<const char*>(hit) - view.data();
      return true;
    }
    at_ += static_cast<std::int64_t>(view.size());
  }
  return false;
}

bool Cursor::backToByte(char b) {
  for (auto view = behind(); !view.empty(); view = behind()) {
    if (const auto hit = view.rfind(b); hit != std::string_view::npos) {
      at_ -= static_cast<std::int64_t>(view.size() - hit - 1);
      return true;
    }
    at_ -= static_cast<std::int64_t>(view.size());
  }
  return false;
}

}   // namespace text
