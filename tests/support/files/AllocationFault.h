// Makes allocations of this thread fail, to see what happens when memory runs out. Linking it replaces the program's
// operator new; without an AllocationFault alive that changes nothing.
#pragma once

#include <cstddef>

namespace testing_files {

class AllocationFault {
 public:
  // The n-th allocation from now on (from 1) throws std::bad_alloc; with forEver each one behind it too.
  // Those below atLeast bytes neither count nor fail.
  explicit AllocationFault(long n, bool forEver = false, std::size_t atLeast = 0);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;
  bool hit() const;   // an allocation has failed
};

}   // namespace testing_files
