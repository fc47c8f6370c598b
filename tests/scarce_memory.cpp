#include "tests/scarce_memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int> refusals = 0;
thread_local bool spared = false;

}  // namespace

void refuseMemory(int times) {
  spared = true;
  refusals = times;
}

int memoryRefusalsLeft() {
  return refusals;
}

void* operator new(std::size_t size) {
  const bool refused = !spared && refusals > 0 && refusals-- > 0;
  void* const memory = refused ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
