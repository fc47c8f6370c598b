// The tests' hands on the desktop, outside the program. Requests come as lines on
// the standard input: a command and its arguments, separated by tabs, UTF-8.
// Each is answered by one line: {"value": ...} or {"error": "..."}.
#include "probe.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>

namespace {

using namespace desktop_test;

bool readLine(std::string& line) {
  line.clear();
  for (int c = std::getchar(); c != EOF; c = std::getchar()) {
    if (c == '\n') return true;
    line += static_cast<char>(c);
  }
  return false;
}

Words wordsOf(const std::string& line) {
  Words words(1);
  for (const char c : line) {
    if (c == '\t')
      words.emplace_back();
    else
      words.back() += c;
  }
  return words;
}

std::string answer(const Words& words) {
  try {
    const auto& commands = kWindowCommands.contains(words[0]) ? kWindowCommands : kProcessCommands;
    Json json;
    json.open('{').key("value");
    commands.at(words[0])(words, json);
    return json.close('}').text();
  } catch (const std::exception& error) {
    return Json().open('{').key("error").value(std::string_view(error.what())).close('}').text();
  }
}

}  // namespace

int main() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  std::string line;
  while (readLine(line)) {
    std::puts(answer(wordsOf(line)).c_str());
    std::fflush(stdout);
  }
  return 0;
}
