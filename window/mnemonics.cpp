#include "window/mnemonics.h"

#include <windows.h>

#include <cstddef>

#include "base/utf.h"

namespace window {
namespace {

wchar_t upper(wchar_t letter) {
  CharUpperBuffW(&letter, 1);
  return letter;
}

bool beginsWord(const std::wstring& text, std::size_t at) {
  return at == 0 || IsCharAlphaNumericW(text[at - 1]) == 0;
}

/// With "&" before the letter at a place; none beyond the end.
std::string marked(const std::wstring& text, std::size_t at) {
  std::wstring shown;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i == at || text[i] == L'&') shown += L'&';
    shown += text[i];
  }
  return base::toNarrow(shown);
}

}  // namespace

std::string Mnemonics::mark(std::string_view caption) {
  const std::wstring text = base::toWide(caption);
  for (const bool any_letter : {false, true}) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (IsCharAlphaNumericW(text[i]) == 0 || (!any_letter && !beginsWord(text, i))) continue;
      const wchar_t letter = upper(text[i]);
      if (taken_.find(letter) != std::wstring::npos) continue;
      taken_ += letter;
      return marked(text, i);
    }
  }
  return plain(caption);
}

std::string Mnemonics::plain(std::string_view caption) {
  const std::wstring text = base::toWide(caption);
  return marked(text, text.size());
}

}  // namespace window
