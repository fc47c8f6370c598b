#include "tests/engine/web.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace engine_test {

WebServer::WebServer() : serving_([this] { serve(); }) {}

WebServer::~WebServer() {
  over_ = true;
  server_.stop();
  serving_.join();
}

void WebServer::put(const std::string& path, const std::string& body, const std::string& type) {
  putRaw(path, "HTTP/1.0 200 OK\r\n" + (type.empty() ? "" : "Content-Type: " + type + "\r\n") +
                   "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
}

void WebServer::putRaw(const std::string& path, const std::string& answer) {
  const std::lock_guard lock(mutex_);
  answers_[path] = answer;
}

size_t WebServer::timesAsked(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  return path.empty() ? asked_.size()
                      : static_cast<size_t>(std::count(asked_.begin(), asked_.end(), path));
}

void WebServer::serve() {
  for (;;) {
    const std::string request = server_.accept();
    if (over_) return;
    server_.send(answerTo(request));
    server_.close();
  }
}

std::string WebServer::answerTo(const std::string& request) {
  const std::string sign = "\r\nRange: bytes=";
  std::string method, path, range;
  std::istringstream(request) >> method >> path;
  if (const size_t at = request.find(sign); at != request.npos) {
    std::istringstream(request.substr(at + sign.size())) >> range;
  }
  const std::lock_guard lock(mutex_);
  asked_.push_back(path);
  const auto found = answers_.find(path);
  if (found == answers_.end()) return "HTTP/1.0 404 Not Found\r\n\r\n";
  std::string answer = ranges_ ? rangeOf(found->second, range) : found->second;
  const bool is_sound = !path.ends_with(".m3u8") && !path.ends_with("key");
  broke_ = breaks_ && is_sound && !broke_;
  if (broke_) answer.resize(answer.size() / 2);
  return answer;
}

std::string WebServer::rangeOf(const std::string& answer, const std::string& range) const {
  const std::string body = answer.substr(answer.find("\r\n\r\n") + 4);
  size_t from = 0, last = body.size() - 1;
  if (std::sscanf(range.c_str(), "%zu-%zu", &from, &last) < 1) return answer;
  return "HTTP/1.0 206 Partial Content\r\nContent-Range: bytes " + range + "/" +
         std::to_string(body.size()) + "\r\n\r\n" + body.substr(from, last + 1 - from);
}

std::map<std::string, std::string> filesOf(const std::string& command) {
  const TestFolder folder;
  EXPECT_EQ(0, std::system(("cd " + folder.path() + " && " + command).c_str())) << command;
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    files[entry.path().filename()] = contents(entry.path());
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
