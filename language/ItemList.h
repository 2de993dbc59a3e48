// The ordered list behind every collection of the language model. Positions count from 1. Items are shared by reference, have no
// keys, and may have equal names.
#pragma once

#include <memory>
#include <stdexcept>
#include <vector>

template <class T>
class ItemList {
 public:
  using Pointer = std::shared_ptr<T>;

  int Count() const { return static_cast<int>(items_.size()); }
  // The item at a position, 1 to Count(). Throws std::out_of_range elsewhere, as Remove does.
  const Pointer& Item(int index) const { return items_.at(checked(index)); }
  void Remove(int index) { items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(checked(index))); }
  // Inserts an existing item at a position, 1 to Count() + 1; later items move down.
  void Insert(int index, Pointer item) {
    if (index < 1 || index > Count() + 1) throw std::out_of_range("position outside the list");
    items_.insert(items_.begin() + (index - 1), std::move(item));
  }
  // Position of the first item whose `member` equals `value` exactly, 0 if none.
  template <class V>
  int IndexOf(V T::*member, const V& value) const {
    for (std::size_t i = 0; i < items_.size(); ++i)
      if ((*items_[i]).*member == value) return static_cast<int>(i) + 1;
    return 0;
  }

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 protected:
  const Pointer& append(Pointer item) {
    items_.push_back(std::move(item));
    return items_.back();
  }

 private:
  std::size_t checked(int index) const {
    if (index < 1 || index > Count()) throw std::out_of_range("position outside the list");
    return static_cast<std::size_t>(index) - 1;
  }
  std::vector<Pointer> items_;
};
