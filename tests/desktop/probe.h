#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "json.h"

namespace desktop_test {

/// Words of one request: the command and its arguments, UTF-8.
using Words = std::vector<std::string>;

/// Writes the answer's value; throws std::runtime_error where there is none.
using Command = void (*)(const Words& words, Json& answer);

using Commands = std::map<std::string, Command>;

extern const Commands kWindowCommands;
extern const Commands kProcessCommands;

/// A number argument, decimal or 0x...
inline long long number(const Words& words, std::size_t index) {
  return std::stoll(words.at(index), nullptr, 0);
}

[[noreturn]] inline void fail(const char* what) {
  throw std::runtime_error(std::string(what) + ": error " + std::to_string(GetLastError()));
}

}  // namespace desktop_test
