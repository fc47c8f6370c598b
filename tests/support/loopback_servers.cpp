#include "tests/support/loopback_servers.h"

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

#include <fstream>
#include <sstream>
#include <utility>

#include "tests/support/eventually.h"

namespace engine_test {
namespace {

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

bool ScriptedServer::isAsked(std::chrono::milliseconds patience) const {
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
