#include "demo_radio/radio.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "demo_radio/pages.h"
#include "demo_radio/world_names.h"

namespace demo_radio {
namespace {

constexpr std::string_view kDirectoryPath = "/directory/index.phtml";
constexpr std::string_view kPlaylistPath = "/sbin/kestrel-playlist.pls";
constexpr std::string_view kPlaylistFolder = "/playlist/";
constexpr std::string_view kStreamFolder = "/stream/";
constexpr std::size_t kLongestLog = std::size_t{8} << 20U;

/// What the habit switch calls it; empty for addresses it does not know.
std::string kindOf(const Target& target) {
  if (target.path == kDirectoryPath) return "directory";
  if (target.path == kPlaylistPath || target.path.starts_with(kPlaylistFolder)) return "playlist";
  if (target.path.starts_with(kStreamFolder)) return "stream";
  return {};
}

/// The mount of "/stream/MOUNT" and of its relays, "/stream/MOUNT/relay-2".
std::string_view mountOf(std::string_view path) {
  path.remove_prefix(kStreamFolder.size());
  return path.substr(0, path.find('/'));
}

Document notFound() {
  return {404, "text/html", unrelatedPage("404 Not Found"), {}};
}
Document plainText(std::string text) {
  return {200, "text/plain", std::move(text), {}};
}

}  // namespace

RequestLog::RequestLog(const std::string& file) {
  if (file.empty()) return;
  file_ = std::fopen(file.c_str(), "ab");
  if (file_ == nullptr) throw std::runtime_error("cannot write " + file);
}

RequestLog::~RequestLog() {
  if (file_ != nullptr) std::fclose(file_);
}

void RequestLog::add(const Request& request) {
  const std::string line = request.method + '\t' + request.target + '\t' +
                           request.header("user-agent") + '\t' + request.header("icy-metadata") +
                           '\n';
  const std::lock_guard lock(mutex_);
  if (text_.size() < kLongestLog) text_ += line;
  if (file_ == nullptr) return;
  std::fwrite(line.data(), 1, line.size(), file_);
  std::fflush(file_);
}

std::string RequestLog::text() {
  const std::lock_guard lock(mutex_);
  return text_;
}

void RequestLog::clear() {
  const std::lock_guard lock(mutex_);
  text_.clear();
}

Radio::Radio(int stations_per_genre, Broadcast::Options options, const std::string& log_file)
    : world_(stations_per_genre), broadcast_(std::move(options)), log_(log_file) {}

void Radio::serve(Socket& socket) {
  RequestReader reader(socket);
  bool more = true;
  while (more) {
    const std::optional<Request> request = reader.next();
    if (!request) return;
    more = answer(socket, *request);
  }
  socket.finish();
}

bool Radio::answer(Socket& socket, const Request& request) {
  const std::optional<Asked> asked = askedHabits(request.target);
  const Target target = parseTarget(asked ? asked->target : request.target);
  if (target.path.starts_with("/control"))
    return sendDocument(socket, control(target), {}, request.keepsAlive());
  // Before the log: who sees the request there may set the switch for the next one.
  const std::string kind = asked ? kindOf(target) : "";
  const int times = switch_.times(kind);
  const Habits habits = asked && asked->habits ? *asked->habits : switch_.take(kind);
  log_.add(request);
  if (!asked)
    return sendDocument(socket, {400, "text/plain", "Habits: " + Habits::known() + "\n", {}}, {},
                        false);
  if (request.method != "GET")
    return sendDocument(socket, {405, "text/html", unrelatedPage("405"), {}}, {}, false);
  while (habits.has(Habit::hold) && switch_.times(kind) == times)
    if (!socket.pause(Milliseconds(10))) return false;
  if (kind == "stream") {
    if (const Station* station = world_.byMount(mountOf(target.path)))
      return answerStream(socket, *station, request, habits);
  }
  Document document = notFound();
  if (kind == "directory") document = directory(target, habits);
  if (kind == "playlist") document = playlist(target, request);
  return answerDocument(socket, std::move(document), request, habits);
}

bool Radio::answerDocument(Socket& socket, Document document, const Request& request,
                           const Habits& habits) {
  const std::string host = "http://" + request.header("host");
  if (habits.has(Habit::not_found)) document = notFound();
  if (habits.has(Habit::server_error))
    document = {500, "text/html", unrelatedPage("500 Internal Server Error"), {}};
  if (habits.has(Habit::html)) document = {200, "text/html", unrelatedPage("Gone fishing"), {}};
  if (habits.has(Habit::empty)) document.body.clear();
  if (habits.has(Habit::garbage)) document.body = noise(50000);
  if (habits.has(Habit::redirect))
    document = {302, "text/html", {}, host + "/good" + askedHabits(request.target)->target};
  if (habits.has(Habit::redirect_loop)) document = {302, "text/html", {}, host + request.target};
  return sendDocument(socket, document, habits, request.keepsAlive());
}

bool Radio::answerStream(Socket& socket, const Station& station, const Request& request,
                         const Habits& habits) {
  for (const Habit habit : {Habit::not_found, Habit::server_error, Habit::html, Habit::empty,
                            Habit::redirect, Habit::redirect_loop, Habit::icy_error})
    if (habits.has(habit))
      return answerDocument(socket, {200, "audio/mpeg", {}, {}}, request, habits);
  broadcast_.listen(socket, station, request, habits);
  return false;
}

Document Radio::directory(const Target& target, const Habits& habits) const {
  if (habits.has(Habit::huge)) return {200, "text/html", hugeDirectoryPage(world_), {}};
  const int max_kbit = target.number("maxbitrate", 999);
  const auto limit = static_cast<std::size_t>(target.number("numresult", 25));
  const std::string genre = target.value("sgenre"), words = target.value("s");
  std::vector<const Station*> stations;
  if (!habits.has(Habit::no_stations))
    stations = genre.empty() ? world_.search(words, max_kbit, limit)
                             : world_.genre(genre, max_kbit, limit);
  const std::string heading = genre.empty() ? "Stations for: " + words : "Genre: " + genre;
  return {200, "text/html", directoryPage(stations, heading), {}};
}

Document Radio::playlist(const Target& target, const Request& request) const {
  const std::string host = request.header("host");
  if (target.path == kPlaylistPath) {
    const Station* station = world_.byId(target.number("rn", 0));
    if (station == nullptr) return notFound();
    return {200, "audio/x-scpls", plsPlaylist(*station, host), {}};
  }
  const std::string name = target.path.substr(kPlaylistFolder.size());
  const std::size_t dot = std::min(name.rfind('.'), name.size());
  const Station* station = world_.byMount(name.substr(0, dot));
  const std::string extension = name.substr(dot);
  if (station != nullptr && extension == ".m3u")
    return {200, "audio/x-mpegurl", m3uPlaylist(*station, host), {}};
  if (station != nullptr && extension == ".pls")
    return {200, "audio/x-scpls", plsPlaylist(*station, host), {}};
  return notFound();
}

Document Radio::control(const Target& target) {
  if (target.path == "/control/log") {
    std::string text = log_.text();
    if (target.number("clear", 0) != 0) log_.clear();
    return plainText(std::move(text));
  }
  if (target.path == "/control/stations") return plainText(stationTable());
  if (target.path == "/control/listeners")
    return plainText(std::to_string(broadcast_.listeners()) + "\n");
  return target.path == "/control" ? setHabit(target) : notFound();
}

Document Radio::setHabit(const Target& target) {
  const std::string kind = target.value("for");
  std::optional<Habits> habits = Habits::parse(target.value("habit"));
  if (!habits || (kind != "directory" && kind != "playlist" && kind != "stream"))
    return {400,
            "text/plain",
            "/control?for=directory|playlist|stream&habit=NAMES&count=N\nHabits: " +
                Habits::known() + "\n",
            {}};
  switch_.set(kind, std::move(*habits), target.number("count", 0));
  return plainText("ok\n");
}

std::string Radio::stationTable() const {
  std::string table;
  for (const Station& station : world_.all()) {
    const Format format = station.format();
    table += std::string(kGenres[static_cast<std::size_t>(station.genre)].key) + '\t' +
             std::to_string(station.id) + '\t' + station.mount + '\t' +
             (format.codec == Codec::mp3 ? "mp3" : "aac") + '\t' + std::to_string(format.kbit) +
             '\t' + std::to_string(toneHz(station.tone)) + '\t' +
             std::to_string(format.sample_rate) + '\t' + station.name + '\n';
  }
  return table;
}

}  // namespace demo_radio
