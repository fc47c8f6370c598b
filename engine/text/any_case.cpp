#include "engine/text/any_case.h"

#include <algorithm>

namespace engine {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

bool startsWithAnyCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() &&
         std::equal(start.begin(), start.end(), text.begin(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

}  // namespace engine
