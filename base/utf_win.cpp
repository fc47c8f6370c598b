#include "base/utf.h"

#include <windows.h>

namespace base {
namespace {

std::wstring convert(std::string_view text, UINT code_page, DWORD flags) {
  const int bytes = static_cast<int>(text.size());
  const int units = MultiByteToWideChar(code_page, flags, text.data(), bytes, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(units), L'\0');
  MultiByteToWideChar(code_page, flags, text.data(), bytes, wide.data(), units);
  return wide;
}

}  // namespace

std::wstring toWide(std::string_view text) {
  if (text.empty()) return {};
  std::wstring wide = convert(text, CP_UTF8, MB_ERR_INVALID_CHARS);
  return wide.empty() ? convert(text, 1252, 0) : wide;
}

std::string toNarrow(std::wstring_view text) {
  if (text.empty()) return {};
  const int units = static_cast<int>(text.size());
  const int bytes =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), units, narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

}  // namespace base
