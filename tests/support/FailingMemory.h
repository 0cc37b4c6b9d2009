// Allocations that fail when a test says so.
#pragma once

#include "support/Usual.h"

namespace VELTRO::KELVO::Test {

// As long as it lives, of the allocations of its thread the first `count` succeed, and the next `failing` throw
// std::bad_alloc; all of them unless told. A program that has one brings an operator new of its own, for the shared
// library, too.
class FailingMemory {
 public:
  explicit FailingMemory(std::int64_t count = 0, std::int64_t failing = INT64_MAX);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

  // Whether any has.
  bool HasFailed() const;
};

// As long as it lives, all allocations of all threads but its own fail.
struct FailingMemoryOfOthers {
  FailingMemoryOfOthers();
  ~FailingMemoryOfOthers();
};

}  // namespace VELTRO::KELVO::Test
