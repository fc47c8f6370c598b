#pragma once

#include <windows.h>
// Needs windows.h first.
#include <objbase.h>

namespace base {

/// COM on this thread until the end of the scope, whoever else has it.
class ComScope {
 public:
  ComScope() : mine_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
  ~ComScope() {
    if (mine_) CoUninitialize();
  }
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;

 private:
  bool mine_;
};

/// A COM interface, released at the end of the scope. Null when there is none.
template <typename Interface>
class ComPointer {
 public:
  ComPointer() = default;
  ~ComPointer() {
    if (pointer_ != nullptr) pointer_->Release();
  }
  ComPointer(const ComPointer&) = delete;
  ComPointer& operator=(const ComPointer&) = delete;

  [[nodiscard]] Interface* get() const { return pointer_; }
  Interface* operator->() const { return pointer_; }
  /// Where a call puts the interface that it gives.
  Interface** out() { return &pointer_; }
  void** outVoid() { return reinterpret_cast<void**>(&pointer_); }

 private:
  Interface* pointer_ = nullptr;
};

}  // namespace base
