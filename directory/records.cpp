#include "directory/records.h"

#include "base/text.h"

namespace directory {

void appendRecord(std::string& text, std::string_view title, std::string_view url) {
  text.append(title).append(kFieldSeparator).append(url).append("\r\n");
}

void appendOwnRecord(std::string& text, std::string_view title, std::string_view url) {
  appendRecord(text, base::replaceIgnoringCase(base::oneLine(title), kFieldSeparator, "%# $"),
               base::replaceIgnoringCase(base::oneLine(url), kFieldSeparator, "%25#$"));
}

}  // namespace directory
