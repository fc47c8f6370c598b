#include "tests/engine_harness.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <future>
#include <numbers>
#include <sstream>
#include <utility>

#include "engine/engine.h"

namespace engine_test {
namespace {

using std::chrono::milliseconds;
using Time = std::chrono::steady_clock;

sockaddr_in loopback(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  return address;
}

/// A connected socket; -1 where nobody listens. One that does not wait is connected later.
int connectTo(int port, bool wait = true) {
  const int client = socket(AF_INET, SOCK_STREAM | (wait ? 0 : SOCK_NONBLOCK), 0);
  const sockaddr_in address = loopback(port);
  const int result = connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  if (result == 0 || !wait) return client;
  ::close(client);
  return -1;
}

void sendAll(int to, const std::string& bytes) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t sent = ::send(to, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (sent <= 0) return;  // the other side has left, which the test sees elsewhere
    done += static_cast<size_t>(sent);
  }
}

/// What comes until the other side closes, or this end of what is waited for has come.
std::string receive(int from, std::string_view end) {
  std::string all;
  char some[4096];
  while (end.empty() || all.find(end) == all.npos) {
    const ssize_t got = recv(from, some, sizeof some, 0);
    if (got <= 0) break;
    all.append(some, static_cast<size_t>(got));
  }
  return all;
}

class TapeOutput final : public engine::Output {
 public:
  TapeOutput(std::shared_ptr<Tape::Reel> reel, const engine::Interrupt& interrupt)
      : reel_(std::move(reel)), interrupt_(interrupt) {}

  unsigned rate() const override { return Tape::kRate; }

  bool write(std::span<const float>& samples) override {
    if (!reel_->has_device) return false;
    while (pendingMilliseconds() > 300) {
      if (interrupt_.wait(milliseconds(20))) return true;
    }
    keep(std::exchange(samples, {}));
    return true;
  }
  void flush() override {}
  void finish(std::span<const float> last) override {
    keep(last);
    std::this_thread::sleep_for(std::min(milliseconds(pendingMilliseconds()), kLongestEnd));
  }
  unsigned pendingMilliseconds() override {
    const auto left = std::chrono::duration_cast<milliseconds>(until_ - Time::now()).count();
    return left > 0 ? static_cast<unsigned>(left) : 0;
  }

 private:
  void keep(std::span<const float> samples) {
    const size_t frames = samples.size() / kChannels;
    reel_->frames += frames;
    if (reel_->swallows) return;
    const auto now = Time::now();
    if (until_ != Time::time_point{} && until_ < now) ++reel_->gaps;
    until_ = std::max(until_, now) + std::chrono::microseconds(frames * 1'000'000 / Tape::kRate);
    const std::lock_guard lock(reel_->mutex);
    for (size_t i = 0; i < samples.size(); i += kChannels) reel_->left.push_back(samples[i]);
  }

  std::shared_ptr<Tape::Reel> reel_;
  const engine::Interrupt& interrupt_;
  Time::time_point until_{};  ///< when what has been written will have sounded
};

}  // namespace

Process::Process(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t quiet;
  posix_spawn_file_actions_init(&quiet);
  posix_spawn_file_actions_addopen(&quiet, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
  const int failed = posix_spawnp(&id_, arguments[0], &quiet, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&quiet);
  if (failed != 0) throw std::runtime_error("cannot start " + words[0]);
}

Process::~Process() {
  kill(id_, SIGTERM);
  waitpid(id_, nullptr, 0);
}

std::string contents(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

int freePort() {
  // Not one of those that the system gives to connections and to who asks for any:
  // somebody could get it before the server does. Each process has sixteen of its own.
  constexpr int kFirst = 16'384, kPorts = 16'384, kEach = 16;
  static int taken = 0;
  for (;;) {
    const int port = kFirst + (getpid() * kEach + taken++ % kEach) % kPorts;
    const int one = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port);
    const int result = bind(one, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::close(one);
    if (result == 0) return port;
  }
}

std::string fetch(int port, const std::string& path, const std::string& headers) {
  const int client = connectTo(port);
  sendAll(client, "GET " + path + " HTTP/1.0\r\n" + headers + "\r\n");
  const std::string answer = receive(client, "");
  ::close(client);
  const size_t body = answer.find("\r\n\r\n");
  return body == std::string::npos ? "" : answer.substr(body + 4);
}

DemoRadio::DemoRadio()
    : process_({DEMO_RADIO, "--sounds", DEMO_SOUNDS, "--port-file", folder_.path() + "/port"}) {
  EXPECT_TRUE(eventually([&] {
    std::ifstream(folder_.path() + "/port") >> port_;
    return port_ != 0;
  }));
  std::istringstream table(fetch(port_, "/control/stations"));
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    std::string genre, id;
    Station station;
    fields >> genre >> id >> station.mount >> station.codec >> station.kbit >> station.tone >>
        station.rate;
    std::getline(fields >> std::ws, station.name);
    stations_.push_back(station);
  }
}

std::string DemoRadio::url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + path;
}

Station DemoRadio::station(const std::string& codec, unsigned rate) const {
  for (const Station& station : stations_) {
    if (station.codec == codec && station.rate == rate) return station;
  }
  ADD_FAILURE() << "no station sends " << codec << " at " << rate;
  return {};
}

std::string DemoRadio::stream(const Station& station, const std::string& habits) const {
  return url((habits.empty() ? "" : "/bad/" + habits) + "/stream/" + station.mount);
}

DemoRadio& radio() {
  static DemoRadio running;
  return running;
}

ScriptedServer::ScriptedServer(bool backlog_full) {
  listen(backlog_full ? 0 : 8);
  for (int i = 0; backlog_full && i < 4; ++i) fillers_.push_back(connectTo(port_, false));
}

void ScriptedServer::listen(int backlog) {
  listener_ = socket(AF_INET, SOCK_STREAM, 0);
  const int again = 1;
  setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &again, sizeof again);
  sockaddr_in address = loopback(port_);
  socklen_t size = sizeof address;
  EXPECT_EQ(0, bind(listener_, reinterpret_cast<sockaddr*>(&address), size));
  EXPECT_EQ(0, ::listen(listener_, backlog));
  getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
  port_ = ntohs(address.sin_port);
}

void ScriptedServer::leave() {
  close();
  ::close(std::exchange(listener_, -1));
}

void ScriptedServer::comeBack() {
  listen(8);
}

void ScriptedServer::stop() {
  shutdown(listener_, SHUT_RDWR);
}

ScriptedServer::~ScriptedServer() {
  close();
  for (int each : fillers_) ::close(each);
  if (listener_ >= 0) ::close(listener_);
}

bool ScriptedServer::isAsked(milliseconds patience) const {
  pollfd one = {listener_, POLLIN, 0};
  return poll(&one, 1, static_cast<int>(patience.count())) > 0;
}

std::string ScriptedServer::accept() {
  close();
  client_ = ::accept(listener_, nullptr, nullptr);
  return receive(client_, "\r\n\r\n");
}

void ScriptedServer::send(const std::string& bytes) const {
  sendAll(client_, bytes);
}

std::string ScriptedServer::answer(const std::string& bytes) {
  const std::string request = accept();
  send(bytes);
  return request;
}

void ScriptedServer::close() {
  if (client_ >= 0) ::close(client_);
  client_ = -1;
}

void ScriptedServer::reset() {
  const linger at_once = {1, 0};
  setsockopt(client_, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
  close();
}

std::vector<float> Tape::Reel::sound(size_t from) const {
  const std::lock_guard lock(mutex);
  return {left.begin() + static_cast<std::ptrdiff_t>(std::min(from, left.size())), left.end()};
}

std::unique_ptr<engine::Output> Tape::open(const engine::Interrupt& interrupt) {
  if (!reel_->has_device) return nullptr;
  ++reel_->opened;
  return std::make_unique<TapeOutput>(reel_, interrupt);
}

Session::Session() {
  auto tape = std::make_unique<Tape>();
  reel_ = tape->reel();
  engine::instance().useOutput(std::move(tape));
  EXPECT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
  BASS_SetConfig(BASS_CONFIG_MAXVOL, 10000);
  BASS_SetConfig(BASS_CONFIG_NET_PREBUF, 0);
  EXPECT_NE(0u, BASS_PluginLoad(AAC_PLUGIN, 0)) << BASS_ErrorGetCode();
}

Session::~Session() {
  EXPECT_TRUE(BASS_PluginFree(0));
  EXPECT_TRUE(BASS_Free());
}

std::vector<float> Session::listen(double seconds) {
  const auto wanted = heard_ + static_cast<size_t>(seconds * Tape::kRate);
  std::vector<float> sound;
  eventually([&] {
    sound = reel_->sound(heard_);
    return heard_ + sound.size() >= wanted;
  });
  heard_ += sound.size();
  return sound;
}

void Listener::download(const void* buffer, BASS_DWORD length, uintptr_t user) {
  auto& self = *reinterpret_cast<Listener*>(user);
  const std::lock_guard lock(self.mutex_);
  const size_t position = self.bytes_.size();
  if (length != 0) {
    self.bytes_.append(static_cast<const char*>(buffer), length);
  } else if (buffer != nullptr) {
    self.notes_.push_back({Note::status, static_cast<const char*>(buffer), position});
  } else {
    self.notes_.push_back({Note::end, {}, position});
  }
}

void Listener::titleSync(HSYNC, BASS_DWORD, uintptr_t data, uintptr_t user) {
  auto& self = *reinterpret_cast<Listener*>(user);
  const std::lock_guard lock(self.mutex_);
  self.notes_.push_back({Note::title, reinterpret_cast<const char*>(data), self.bytes_.size()});
}

HSTREAM Listener::create(const std::string& url) {
  return BASS_StreamCreateURL(url.c_str(), 0, BASS_STREAM_STATUS, &Listener::download,
                              reinterpret_cast<uintptr_t>(this));
}

void Listener::syncTitles(HSTREAM stream) {
  EXPECT_NE(0u, BASS_ChannelSetSync(stream, BASS_SYNC_META, 0, &Listener::titleSync,
                                    reinterpret_cast<uintptr_t>(this)));
}

HSTREAM Listener::play(ScriptedServer& server, const std::string& answer) {
  auto playing = std::async(std::launch::async, [&] { return play(server.url()); });
  server.answer(answer);
  return playing.get();
}

HSTREAM Listener::play(const std::string& url) {
  const HSTREAM stream = create(url);
  if (stream == 0) return 0;
  for (;;) {
    const BASS_DWORD total = BASS_StreamGetFilePosition(stream, BASS_FILEPOS_END);
    if (total == BASS_FILEPOS_ERROR) return 0;
    const BASS_DWORD downloaded = BASS_StreamGetFilePosition(stream, BASS_FILEPOS_DOWNLOAD);
    const BASS_DWORD current = BASS_StreamGetFilePosition(stream, BASS_FILEPOS_DECODE);
    if (std::lround((downloaded - current) * 100.0 / total) > 75) break;
    std::this_thread::sleep_for(milliseconds(50));
  }
  syncTitles(stream);
  EXPECT_TRUE(BASS_ChannelSetAttributes(stream, -1, 10000, -101));
  EXPECT_TRUE(BASS_ChannelPlay(stream, 0));
  return stream;
}

std::vector<Listener::Note> Listener::notes(Note::Kind kind) const {
  const std::lock_guard lock(mutex_);
  std::vector<Note> found;
  std::copy_if(notes_.begin(), notes_.end(), std::back_inserter(found),
               [&](const Note& note) { return note.kind == kind; });
  return found;
}

std::vector<std::string> Listener::texts(Note::Kind kind) const {
  std::vector<std::string> all;
  for (const Note& note : notes(kind)) all.push_back(note.text);
  return all;
}

size_t Listener::count(const std::string& status) const {
  const auto all = texts(Note::status);
  return static_cast<size_t>(std::count(all.begin(), all.end(), status));
}

std::string Listener::bytes() const {
  const std::lock_guard lock(mutex_);
  return bytes_;
}

bool Listener::waitFor(Note::Kind kind, size_t count) const {
  return eventually([&] { return notes(kind).size() >= count; });
}

bool Listener::hears(const std::string& bytes) const {
  eventually([&] { return this->bytes().size() >= bytes.size(); });
  return this->bytes() == bytes;
}

double rootMeanSquare(const std::vector<float>& samples) {
  double sum = 0;
  for (float sample : samples) sum += double{sample} * sample;
  return samples.empty() ? 0 : std::sqrt(sum / static_cast<double>(samples.size()));
}

double toneShare(const std::vector<float>& samples, double frequency) {
  // The sine and cosine of that frequency, correlated with the sound in short
  // pieces, so that a breath in between does not turn one against the other.
  constexpr size_t kPiece = 4800;
  double found = 0;
  double all = 0;
  for (size_t from = 0; from + kPiece <= samples.size(); from += kPiece) {
    double sine = 0;
    double cosine = 0;
    for (size_t i = from; i < from + kPiece; ++i) {
      const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(i) / Tape::kRate;
      sine += samples[i] * std::sin(phase);
      cosine += samples[i] * std::cos(phase);
      all += double{samples[i]} * samples[i];
    }
    found += (sine * sine + cosine * cosine) * 2 / kPiece;
  }
  return all > 0 ? found / all : 0;
}

bool hasTone(const std::vector<float>& samples, double frequency) {
  constexpr double kSemitone = 1.06;
  return rootMeanSquare(samples) > 0.01 &&
         toneShare(samples, frequency) > 4 * toneShare(samples, frequency * kSemitone);
}

std::vector<int> tonesIn(const std::vector<float>& sound, const std::vector<int>& known,
                         double least) {
  constexpr size_t kPiece = Tape::kRate / 10;
  std::vector<int> tones;
  int last = 0;
  int pieces = 0;
  for (size_t from = 0; from + kPiece <= sound.size(); from += kPiece) {
    const auto begin = sound.begin() + static_cast<std::ptrdiff_t>(from);
    const std::vector<float> piece(begin, begin + kPiece);
    int found = 0;
    for (const int tone : known) {
      if (rootMeanSquare(piece) > 0.01 && toneShare(piece, tone) > 0.8) found = tone;
    }
    pieces = found == last ? pieces + 1 : 1;
    last = found;
    const bool long_enough = pieces >= static_cast<int>(least * 10);
    if (long_enough && found != 0 && (tones.empty() || tones.back() != found)) {
      tones.push_back(found);
    }
  }
  return tones;
}

std::string titleBlock(const std::string& title) {
  if (title.empty()) return std::string(1, '\0');
  std::string text = "StreamTitle='" + title + "';";
  const size_t blocks = (text.size() + 15) / 16;
  text.resize(blocks * 16);
  return static_cast<char>(blocks) + text;
}

std::string soundBytes(const std::string& file) {
  return contents(DEMO_SOUNDS "/" + file);
}

}  // namespace engine_test
