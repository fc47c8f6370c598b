#pragma once

#include <windows.h>

#include <utility>

namespace base {

/// Owns one handle and closes it with `Close`: UniqueHandle<HMENU, DestroyMenu>.
/// Null is "none"; a call that fails with INVALID_HANDLE_VALUE must be tested by
/// its caller before the value gets here.
template <typename Handle, auto Close>
class UniqueHandle {
 public:
  UniqueHandle() = default;
  explicit UniqueHandle(Handle handle) : handle_(handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~UniqueHandle() { reset(); }

  [[nodiscard]] Handle get() const { return handle_; }
  [[nodiscard]] explicit operator bool() const { return handle_ != Handle{}; }

  /// Gives the ownership away.
  [[nodiscard]] Handle release() { return std::exchange(handle_, Handle{}); }

  /// Closes the present handle and owns `handle` instead.
  void reset(Handle handle = Handle{}) {
    const Handle old = std::exchange(handle_, handle);
    if (old != Handle{} && old != handle) Close(old);
  }

 private:
  Handle handle_{};
};

using UniqueMenu = UniqueHandle<HMENU, DestroyMenu>;
using UniqueIcon = UniqueHandle<HICON, DestroyIcon>;
using UniqueFont = UniqueHandle<HFONT, DeleteObject>;
using UniqueBitmap = UniqueHandle<HBITMAP, DeleteObject>;
using UniqueBrush = UniqueHandle<HBRUSH, DeleteObject>;
using UniqueDc = UniqueHandle<HDC, DeleteDC>;
using UniqueKernel = UniqueHandle<HANDLE, CloseHandle>;

}  // namespace base
