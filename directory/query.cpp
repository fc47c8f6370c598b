#include "directory/query.h"

#include <algorithm>

#include "base/files.h"
#include "base/text.h"
#include "menu/genres.h"

namespace directory {
namespace {

using Outcome = TransferResult::Outcome;

constexpr int kTransferFailed = 11;
constexpr int kTransferCompleted = 12;

constexpr std::string_view kBadEntry = "Can't Connect. Error in Datafile";
constexpr std::string_view kTimeout = "Timeout Error";

// The tooltip says so as long as this lives.
class LoadingCaption {
 public:
  explicit LoadingCaption(app::TrayIcon& icon) : icon_(icon) { icon_.setCaption("Loading Data"); }
  ~LoadingCaption() { icon_.setCaption("Kestrel"); }
  LoadingCaption(const LoadingCaption&) = delete;
  LoadingCaption& operator=(const LoadingCaption&) = delete;

 private:
  app::TrayIcon& icon_;
};

bool isOvertaken(const TransferResult& result) {
  return result.outcome == Outcome::superseded || result.outcome == Outcome::ended;
}

// An address without a file name ends in things like "com/stream", one with a
// query in "pls?id=1": no file can be called that.
bool canEndFileName(std::string_view extension) {
  constexpr std::size_t kLongest = 64;
  const auto bad = [](char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f ||
           std::string_view("\\/:*?\"<>|").find(c) != std::string_view::npos;
  };
  return extension.size() <= kLongest && extension.back() != ' ' &&
         std::none_of(extension.begin(), extension.end(), bad);
}

// Every LF becomes CR LF, also one that follows a CR: the file's readers know it so.
std::string withCrLf(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 16 + 2);
  for (const char c : text) {
    if (c == '\n') result += '\r';
    result += c;
  }
  return result += "\r\n";
}

}  // namespace

TransferResult Query::get(const std::string& url) {
  TransferResult result = parts_.transfer.get(url);
  ended_ = ended_ || result.outcome == Outcome::ended;
  if (result.outcome == Outcome::completed) last_transfer_state_ = kTransferCompleted;
  // A server that keeps silent is as good as none to whoever reads the state.
  if (result.outcome == Outcome::failed || result.outcome == Outcome::timed_out) {
    last_transfer_state_ = kTransferFailed;
  }
  return result;
}

std::string Query::queryUrl(int slot, bool asSearch) const {
  std::size_t bitrate = 0;
  for (int i = 0; i <= parts_.tree.subbit.UBound(); ++i) {
    if (parts_.tree.subbit[i].Checked) bitrate = static_cast<std::size_t>(i);
  }
  const std::string key(menu::kGenreTable[static_cast<std::size_t>(slot)].key);
  std::string url = "http://" + parts_.hosts.directory + "/directory/index.phtml?";
  if (key == menu::kSearchKey) {
    url += "s=" + search_text_;
  } else {
    url += (asSearch ? "s=" : "sgenre=") + key;
  }
  return url.append(menu::kBitrateTable[bitrate].query) + "&numresult=" + parts_.settings.maxentry;
}

Query::Answer Query::refuse(std::string_view message) {
  parts_.desktop.messageBox(message);
  return Answer::failed;
}

Query::Answer Query::ladeonline(int slot, Mode mode, bool asSearch, const std::string& checked) {
  const TransferResult page = get(queryUrl(slot, asSearch));
  if (isOvertaken(page)) return Answer::superseded;
  if (page.outcome != Outcome::completed) return refuse(parts_.messages.msgnotonline);

  const LoadingCaption loading(parts_.icon);
  const std::string_view mark = mode == Mode::reload ? std::string_view() : checked;
  const bool found = parts_.lists.menueinlesen(page.body, parts_.hosts.directory, slot, mark);
  if (mode != Mode::reload) parts_.lists.finishCaches();  // who reloads all waits once
  parts_.tree.mainmenu.Enabled = true;
  return found ? Answer::done : Answer::no_station;
}

Query::Answer Query::refresh(int slot, Mode mode, const std::string& checked) {
  const Answer answer = ladeonline(slot, mode, false, checked);
  if (answer != Answer::no_station || slot == menu::kSearchGenre) return answer;
  return ladeonline(slot, mode, true, checked);
}

Query::Answer Query::ladeplaylist(const std::string& url) {
  const LoadingCaption loading(parts_.icon);
  return fetchPlaylist(url);
}

Query::Answer Query::fetchPlaylist(const std::string& url) {
  if (url.empty()) return refuse(kBadEntry);
  std::string extension(base::behindLast(url, '.'));
  if (extension.empty()) extension = "pls";
  if (!canEndFileName(extension)) {
    last_transfer_state_ = kTransferFailed;
    return refuse(parts_.messages.msgnotonline);
  }
  if (parts_.launcher.refuses(extension)) return refuse(kBadEntry);

  const TransferResult playlist = get(url);
  if (isOvertaken(playlist)) return Answer::superseded;
  if (playlist.outcome == Outcome::timed_out) return refuse(kTimeout);
  if (playlist.outcome == Outcome::failed) return refuse(parts_.messages.msgnotonline);

  const std::string file = parts_.paths.inData("\\tmpdata." + extension);
  if (!savePlaylist(playlist.body, file)) return refuse(kBadEntry);
  parts_.launcher.launch(url, file);
  return Answer::done;
}

bool Query::savePlaylist(std::string_view playlist, const std::string& file) const {
  for (const char* extension : {"pls", "m3u"}) {
    base::removeFile(parts_.paths.inData(std::string("\\tmpdata.") + extension));
  }
  return base::replaceFile(file, withCrLf(playlist), base::Keep::through_kill);
}

}  // namespace directory
