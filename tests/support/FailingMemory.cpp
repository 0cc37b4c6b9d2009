#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

thread_local std::int64_t succeeding = 0;  // so many still succeed before
thread_local std::int64_t failing = 0;     // so many fail
thread_local bool hasFailed = false;
thread_local bool isExempt = false;
std::atomic<bool> othersFail{false};

}  // namespace

FailingMemory::FailingMemory(std::int64_t count, std::int64_t failures) {
  succeeding = count;
  failing = failures;
  hasFailed = false;
}

FailingMemory::~FailingMemory() {
  failing = 0;
}

bool FailingMemory::HasFailed() const {
  return hasFailed;
}

FailingMemoryOfOthers::FailingMemoryOfOthers() {
  isExempt = othersFail = true;
}

FailingMemoryOfOthers::~FailingMemoryOfOthers() {
  isExempt = othersFail = false;
}

}  // namespace VELTRO::KELVO::Test

// The forms for arrays, and those that do not throw, come back to these.
void* operator new(std::size_t size) {
  using namespace VELTRO::KELVO::Test;
  if (othersFail && !isExempt) throw std::bad_alloc();
  if (failing > 0 && succeeding-- <= 0) {
    --failing;
    hasFailed = true;
    throw std::bad_alloc();
  }
  if (void* const memory = std::malloc(size > 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
