#pragma once

#include <windows.h>

namespace base {

/// A function of a loaded system library that older Windows versions lack; null
/// there. `Function` is the type of its declaration: decltype(&::GetDpiForWindow).
template <typename Function>
Function systemFunction(const wchar_t* library, const char* name) {
  const HMODULE module = GetModuleHandleW(library);
  if (module == nullptr) return nullptr;
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace base
