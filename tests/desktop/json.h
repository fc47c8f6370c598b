#pragma once

#include <windows.h>

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "base/utf.h"

namespace desktop_test {

/// A JSON text, written front to back.
class Json {
 public:
  Json& open(char bracket) { return separate(), out_ += bracket, fresh_ = true, *this; }
  Json& close(char bracket) { return out_ += bracket, fresh_ = false, *this; }
  Json& key(std::string_view name) {
    separate();
    quote(name);
    out_ += ':';
    fresh_ = true;
    return *this;
  }
  /// NAME, VALUE, NAME, VALUE ...
  template <typename Value, typename... Rest>
  Json& fields(std::string_view name, const Value& first, const Rest&... rest) {
    key(name).value(first);
    if constexpr (sizeof...(rest) > 0) fields(rest...);
    return *this;
  }
  Json& value(long long number) { return separate(), out_ += std::to_string(number), *this; }
  Json& value(std::string_view utf8) { return separate(), quote(utf8), *this; }
  Json& value(std::wstring_view text) { return value(std::string_view(base::toNarrow(text))); }
  Json& value(bool truth) { return separate(), out_ += truth ? "true" : "false", *this; }
  Json& value(const RECT& r) {
    return open('[')
        .value(0LL + r.left)
        .value(0LL + r.top)
        .value(0LL + r.right)
        .value(0LL + r.bottom)
        .close(']');
  }
  /// A finished JSON text.
  Json& raw(std::string_view json) { return separate(), out_ += json, *this; }

  [[nodiscard]] const std::string& text() const { return out_; }

 private:
  void separate() {
    if (!fresh_) out_ += ',';
    fresh_ = false;
  }
  void quote(std::string_view text) {
    out_ += '"';
    for (const char c : text) {
      if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20) {
        std::array<char, 8> escape{};
        std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
        out_ += escape.data();
      } else {
        out_ += c;
      }
    }
    out_ += '"';
  }

  std::string out_;
  bool fresh_ = true;
};

/// A handle as a number.
inline long long handle(const void* handle) {
  return reinterpret_cast<INT_PTR>(handle);
}

inline std::wstring className(HWND window) {
  std::array<wchar_t, 128> name{};
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  return name.data();
}

/// Where the agent within a process answers.
inline std::wstring agentPipe(DWORD process) {
  return L"\\\\.\\pipe\\kestrel-agent-" + std::to_wstring(process);
}

}  // namespace desktop_test
