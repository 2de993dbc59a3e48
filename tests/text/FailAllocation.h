// Makes an allocation of this thread fail. The operators new that do it stand in OutOfMemory.cpp.
#pragma once

namespace test {

// While it lives, the nth (1-based) allocation from now on throws std::bad_alloc; with forEver all later ones too.
class FailAllocation {
 public:
  explicit FailAllocation(long nth, bool forEver = false);
  ~FailAllocation();
  FailAllocation(const FailAllocation&) = delete;
  FailAllocation& operator=(const FailAllocation&) = delete;
  bool happened() const;
};

}  // namespace test
