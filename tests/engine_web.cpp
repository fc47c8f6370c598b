#include "tests/engine_web.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/engine_harness.h"

namespace engine_test {

WebServer::WebServer() {
  listener_ = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(0, bind(listener_, reinterpret_cast<sockaddr*>(&address), size));
  EXPECT_EQ(0, listen(listener_, 16));
  getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
  port_ = ntohs(address.sin_port);
  accepting_ = std::thread([this] { accept(); });
}

WebServer::~WebServer() {
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
    for (const int client : clients_) shutdown(client, SHUT_RDWR);
  }
  shutdown(listener_, SHUT_RDWR);
  accepting_.join();
  for (std::thread& each : serving_) each.join();
  for (const int client : clients_) ::close(client);
  ::close(listener_);
}

std::string WebServer::url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void WebServer::put(const std::string& path, const std::string& body, const std::string& type) {
  putRaw(path, "HTTP/1.0 200 OK\r\n" + (type.empty() ? "" : "Content-Type: " + type + "\r\n") +
                   "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
}

void WebServer::putRaw(const std::string& path, const std::string& answer) {
  const std::lock_guard lock(mutex_);
  answers_[path] = answer;
}

std::vector<std::string> WebServer::asked() const {
  const std::lock_guard lock(mutex_);
  return asked_;
}

void WebServer::accept() {
  for (;;) {
    const int client = ::accept(listener_, nullptr, nullptr);
    const std::lock_guard lock(mutex_);
    if (over_ || client < 0) {
      if (client >= 0) ::close(client);
      return;
    }
    clients_.push_back(client);
    serving_.emplace_back([this, client] { serve(client); });
  }
}

void WebServer::serveRanges() {
  const std::lock_guard lock(mutex_);
  ranges_ = true;
}

std::string WebServer::answerTo(const std::string& request) {
  const std::string sign = "\r\nRange: bytes=";
  std::string method, path, range;
  std::istringstream(request) >> method >> path;
  if (const size_t at = request.find(sign); at != request.npos) {
    std::istringstream(request.substr(at + sign.size())) >> range;
  }
  const std::lock_guard lock(mutex_);
  asked_.push_back(range.empty() ? path : path + " " + range);
  const auto found = answers_.find(path);
  if (found == answers_.end()) return "HTTP/1.0 404 Not Found\r\n\r\n";
  size_t from = 0, last = 0;
  if (!ranges_ || std::sscanf(range.c_str(), "%zu-%zu", &from, &last) != 2) return found->second;
  const std::string body = found->second.substr(found->second.find("\r\n\r\n") + 4);
  return "HTTP/1.0 206 Partial Content\r\nContent-Range: bytes " + range + "/" +
         std::to_string(body.size()) + "\r\n\r\n" + body.substr(from, last + 1 - from);
}

void WebServer::serve(int client) {
  std::string request;
  char some[1024];
  while (request.find("\r\n\r\n") == std::string::npos) {
    const ssize_t got = recv(client, some, sizeof some, 0);
    if (got <= 0) break;
    request.append(some, static_cast<size_t>(got));
  }
  const std::string answer = answerTo(request);
  for (size_t done = 0; done < answer.size();) {
    const ssize_t sent = send(client, answer.data() + done, answer.size() - done, MSG_NOSIGNAL);
    if (sent <= 0) break;
    done += static_cast<size_t>(sent);
  }
  shutdown(client, SHUT_WR);
  // What the client still says must not reset what it has not read yet.
  while (recv(client, some, sizeof some, 0) > 0) continue;
}

std::map<std::string, std::string> filesOf(const std::string& command) {
  const Folder folder;
  EXPECT_EQ(0, std::system(("cd " + folder.path() + " && " + command).c_str())) << command;
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    std::ifstream in(entry.path(), std::ios::binary);
    files[entry.path().filename()] = {std::istreambuf_iterator<char>(in), {}};
  }
  return files;
}

std::string sineInput(int frequency, double seconds) {
  return "ffmpeg -nostdin -loglevel error -f lavfi -i sine=frequency=" + std::to_string(frequency) +
         ":sample_rate=48000:duration=" + std::to_string(seconds) + " -bitexact ";
}

std::string encodedSine(int frequency, double seconds, const std::string& words,
                        const std::string& file) {
  return filesOf(sineInput(frequency, seconds) + words + " " + file)[file];
}

void hear440(Session& session, HSTREAM stream, BASS_DWORD type, double seconds) {
  ASSERT_NE(0u, stream) << BASS_ErrorGetCode();
  session.listen(0.3);
  EXPECT_GT(toneShare(session.listen(seconds), 440), 0.95);
  BASS_CHANNELINFO info;
  ASSERT_TRUE(BASS_ChannelGetInfo(stream, &info));
  EXPECT_EQ(type, info.ctype);
}

}  // namespace engine_test
