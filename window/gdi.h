#pragma once

#include <windows.h>

#include "base/unique_handle_win.h"

namespace window {

/// BeginPaint to EndPaint.
class PaintScope {
 public:
  explicit PaintScope(HWND window) : window_(window) { BeginPaint(window_, &paint_); }
  ~PaintScope() { EndPaint(window_, &paint_); }
  PaintScope(const PaintScope&) = delete;
  PaintScope& operator=(const PaintScope&) = delete;

  [[nodiscard]] HDC dc() const { return paint_.hdc; }
  [[nodiscard]] const RECT& dirty() const { return paint_.rcPaint; }

 private:
  HWND window_;
  PAINTSTRUCT paint_{};
};

/// The device context of a window's client area, or of the whole screen for null.
class WindowDc {
 public:
  explicit WindowDc(HWND window) : window_(window), dc_(GetDC(window)) {}
  ~WindowDc() { ReleaseDC(window_, dc_); }
  WindowDc(const WindowDc&) = delete;
  WindowDc& operator=(const WindowDc&) = delete;

  [[nodiscard]] HDC get() const { return dc_; }

 private:
  HWND window_;
  HDC dc_;
};

/// Selects an object into a device context and puts the former one back.
class SelectScope {
 public:
  SelectScope(HDC dc, HGDIOBJ object) : dc_(dc), former_(SelectObject(dc, object)) {}
  ~SelectScope() { SelectObject(dc_, former_); }
  SelectScope(const SelectScope&) = delete;
  SelectScope& operator=(const SelectScope&) = delete;

 private:
  HDC dc_;
  HGDIOBJ former_;
};

/// A bitmap to paint into, compatible with `like`: double buffering and tests.
class MemoryCanvas {
 public:
  MemoryCanvas(HDC like, SIZE size)
      : dc_(CreateCompatibleDC(like)),
        bitmap_(CreateCompatibleBitmap(like, size.cx, size.cy)),
        selected_(dc_.get(), bitmap_.get()) {}

  [[nodiscard]] HDC dc() const { return dc_.get(); }
  [[nodiscard]] HBITMAP bitmap() const { return bitmap_.get(); }

 private:
  base::UniqueDc dc_;
  base::UniqueBitmap bitmap_;
  SelectScope selected_;  // last: undone before bitmap and context go
};

}  // namespace window
