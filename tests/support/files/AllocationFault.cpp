#include "tests/support/files/AllocationFault.h"

#include <cstdlib>
#include <new>

namespace {

thread_local long left = 0;   // allocations until the failing one; 0: none fails
thread_local std::size_t least = 0;
thread_local bool always = false, failed = false;

void* allocate(std::size_t size) {
  if (left > 0 && size >= least && --left == 0) {
    failed = true;
    if (always) left = 1;
    throw std::bad_alloc();
  }
  if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}

}   // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace testing_files {

AllocationFault::AllocationFault(long n, bool forEver, std::size_t atLeast) {
  left = n;
  least = atLeast;
  always = forEver;
  failed = false;
}

AllocationFault::~AllocationFault() { left = 0; }

bool AllocationFault::hit() const { return failed; }

}   // namespace testing_files
