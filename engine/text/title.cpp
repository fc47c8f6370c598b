#include "engine/text/title.h"

#include <algorithm>

#include "engine/text/any_case.h"
#include "engine/text/utf8.h"

namespace engine {
namespace {

constexpr std::string_view kField = "StreamTitle=";
// As long as a title block can be: what Ogg and ID3 tags hold may be far longer.
constexpr size_t kLongestTitle = 255 * 16;
// The Greek question mark: looks like a semicolon in every font that has it, and
// is its very equivalent.
constexpr std::string_view kLikeSemicolon = "\xcd\xbe";

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isNameCharacter(char c) {
  return isLetter(c) || (c >= '0' && c <= '9') || c == '_';
}

bool isQuote(char c) {
  return c == '\'' || c == '"';
}

std::string_view trimmed(std::string_view text) {
  const auto from = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  return text.substr(from, text.find_last_not_of(" \t\r\n") + 1 - from);
}

// Whether a further field begins there. Only names that all servers use need no
// quote behind them: anything may stand in a title.
bool isField(std::string_view text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isNameCharacter);
  if (end == text.begin() || end == text.end() || *end != '=') return false;
  const auto value = text.substr(static_cast<size_t>(end - text.begin()) + 1);
  return startsWithAnyCase(text, "Stream") || (!value.empty() && isQuote(value.front()));
}

// Whether the title may end with the quote before `rest`.
bool endsTitle(std::string_view rest) {
  rest = trimmed(rest);
  if (rest.empty()) return true;
  if (rest.front() != ';') return startsWithAnyCase(rest, "Stream") && isField(rest);
  rest = trimmed(rest.substr(1));
  // The last: a block that was cut in the middle of the next field's name.
  return rest.empty() || isField(rest) || std::string_view("StreamUrl='").starts_with(rest);
}

struct Fields {
  std::string_view title, rest;
};

// No quoting exists in title blocks: a quote within a title looks like the one at
// its end, and is known only by what follows.
Fields splitQuoted(std::string_view text, char quote) {
  for (size_t end = text.find(quote); end != text.npos; end = text.find(quote, end + 1)) {
    const std::string_view rest = text.substr(end + 1);
    if (!endsTitle(rest)) continue;
    const std::string_view next = trimmed(rest);
    return {text.substr(0, end), next.starts_with(';') ? trimmed(next.substr(1)) : next};
  }
  return {text, {}};
}

Fields splitPlain(std::string_view text) {
  for (size_t end = text.find(';'); end != text.npos; end = text.find(';', end + 1)) {
    const std::string_view next = trimmed(text.substr(end + 1));
    if (next.empty() || isField(next)) return {text.substr(0, end), next};
  }
  return {text, {}};
}

// Where the title's field begins: at the start or behind another field.
size_t findField(std::string_view text) {
  for (size_t at = 0; at < text.size(); ++at) {
    const bool begins = at == 0 || text[at - 1] == ';' || text[at - 1] == ' ';
    if (begins && startsWithAnyCase(text.substr(at), kField)) return at;
  }
  return text.npos;
}

// A lone byte at the end of a text that is plain otherwise is more likely an old
// 8-bit letter than the beginning of a character.
std::string_view withoutLikelyCut(std::string_view title) {
  const std::string_view rest = withoutCutCharacter(title);
  const bool plain = std::all_of(rest.begin(), rest.end(), [](char c) { return (c & 0x80) == 0; });
  return plain && title.size() - rest.size() < 2 ? title : rest;
}

// Without what would break a line.
std::string plain(std::string_view text) {
  std::string clean(text);
  for (char& c : clean) {
    if (static_cast<unsigned char>(c) < ' ' || c == 0x7f) c = ' ';
  }
  return clean;
}

std::string shown(std::string_view title) {
  std::string text = plain(trimmed(title));
  if (text.size() > kLongestTitle) {
    text = withoutLikelyCut(std::string_view(text).substr(0, kLongestTitle));
  }
  if (text.find(';') == text.npos) return text;
  if (!isUtf8(text)) text = utf8FromWindows1252(text);
  for (size_t at = 0; (at = text.find(';', at)) != text.npos; at += kLikeSemicolon.size()) {
    text.replace(at, 1, kLikeSemicolon);
  }
  return text;
}

}  // namespace

std::optional<std::string> titleTag(std::string_view block) {
  const std::string_view text = block.substr(0, block.find('\0'));
  const size_t field = findField(text);
  if (field == text.npos) return std::nullopt;
  const std::string_view value = text.substr(field + kField.size());
  const bool quoted = !value.empty() && isQuote(value.front());
  Fields fields = quoted ? splitQuoted(value.substr(1), value.front()) : splitPlain(value);
  const bool reaches_end = fields.title.end() == text.end();
  if (reaches_end && text.size() == block.size()) {
    // No end and no room for one: the block was too short for it.
    fields.title = withoutCutCharacter(fields.title);
  } else if (reaches_end && quoted && fields.title.ends_with(';')) {
    fields.title.remove_suffix(1);
  }
  std::string tag = "StreamTitle='" + shown(withoutLikelyCut(fields.title)) + "';";
  return tag.append(plain(fields.rest));
}

std::string titleTagOf(std::string_view title) {
  return "StreamTitle='" + shown(title) + "';";
}

}  // namespace engine
