#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace desktop_test {

inline std::string narrow(std::wstring_view text) {
  const int units = static_cast<int>(text.size());
  const int bytes =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), units, result.data(), bytes, nullptr, nullptr);
  return result;
}

inline std::wstring wide(std::string_view text) {
  const int bytes = static_cast<int>(text.size());
  const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
  std::wstring result(static_cast<std::size_t>(units), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, result.data(), units);
  return result;
}

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
  Json& value(long long number) { return separate(), out_ += std::to_string(number), *this; }
  Json& value(std::string_view utf8) { return separate(), quote(utf8), *this; }
  Json& value(std::wstring_view text) { return value(narrow(text)); }
  Json& value(bool truth) { return separate(), out_ += truth ? "true" : "false", *this; }
  Json& value(const RECT& r) {
    return open('[')
        .value(0LL + r.left)
        .value(0LL + r.top)
        .value(0LL + r.right)
        .value(0LL + r.bottom)
        .close(']');
  }
  Json& value(const void* handle) {
    return value(static_cast<long long>(reinterpret_cast<INT_PTR>(handle)));
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
      if (c == '"' || c == '\\') {
        out_ += '\\';
        out_ += c;
      } else if (static_cast<unsigned char>(c) < 0x20) {
        static const char* const kHex = "0123456789abcdef";
        out_ += "\\u00";
        out_ += kHex[(c >> 4) & 15];
        out_ += kHex[c & 15];
      } else {
        out_ += c;
      }
    }
    out_ += '"';
  }

  std::string out_;
  bool fresh_ = true;
};

/// Where the agent within a process answers.
inline std::wstring agentPipe(DWORD process) {
  return L"\\\\.\\pipe\\kestrel-agent-" + std::to_wstring(process);
}

}  // namespace desktop_test
