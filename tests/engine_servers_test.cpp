// Servers that do wrong: what the listener hears and is told, and that leaving them
// is always quick and clean.
#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "tests/engine_harness.h"
#include "tests/engine_web.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

const std::string kOk = "HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\n";

const std::string& sound() {
  static const std::string bytes = soundBytes("bells-00.mp3").substr(0, 40'000);
  return bytes;
}

std::string noise(size_t length) {
  std::mt19937 random(7);
  std::string bytes;
  while (bytes.size() < length) bytes += static_cast<char>(random());
  return bytes;
}

std::string chunk(const std::string& bytes) {
  char size[16];
  std::snprintf(size, sizeof size, "%zx\r\n", bytes.size());
  return size + bytes + "\r\n";
}

struct Server {
  const char* name;
  std::string answer;  ///< after which it closes
  int code;            ///< 0: it plays
};

std::vector<Server> servers() {
  const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  const std::string head = sound().substr(0, 20'000);
  const std::string tail = sound().substr(20'000);
  const std::string long_line = "X-Long: " + std::string(30'000, 'x') + "\r\n";
  return {
      {"says nothing", "", BASS_ERROR_FILEOPEN},
      {"stops in the head", "HTTP/1.0 200 OK\r\nContent-", BASS_ERROR_FILEOPEN},
      {"is no web server", "220 mail.example ready\r\n\r\n", BASS_ERROR_FILEOPEN},
      {"has a long head", kOk + long_line + "\r\n" + sound(), 0},
      {"has a head without end", kOk + long_line + long_line + long_line, BASS_ERROR_FILEOPEN},
      {"sends the head only", kOk + "\r\n", BASS_ERROR_FILEFORM},
      {"sends noise", kOk + "\r\n" + noise(50'000), BASS_ERROR_FILEFORM},
      {"sends noise first", kOk + "\r\n" + noise(3000) + sound(), 0},
      {"sends noise in between", kOk + "\r\n" + head + noise(3000) + tail, 0},
      {"leaves bytes out", kOk + "\r\n" + head + sound().substr(20'123), 0},
      {"announces too little", kOk + "Content-Length: 100\r\n\r\n" + sound(), 0},
      {"announces too much", kOk + "Content-Length: 4000000000000\r\n\r\n" + sound(), 0},
      {"announces nonsense",
       kOk + "Content-Length: -1\r\nicy-metaint: -5\r\nicy-br: lots\r\n\r\n" + sound(), 0},
      {"forgets its titles", kOk + "icy-metaint: 1000\r\n\r\n" + sound(), 0},
      {"ends its chunks at once", chunked + "0\r\n\r\n", BASS_ERROR_FILEFORM},
      {"has odd chunks", chunked + chunk(head.substr(0, 1)) + chunk(head.substr(1)) + "zz\r\n", 0},
  };
}

TEST(Servers, ThatDoWrongAreHeardOrToldOfAndLeftAtOnce) {
  Listener listener;
  Session session;
  WebServer web;
  for (const Server& server : servers()) {
    web.putRaw("/live", server.answer);
    const HSTREAM stream = listener.play(web.url("/live"));
    EXPECT_EQ(server.code, BASS_ErrorGetCode()) << server.name;
    EXPECT_EQ(server.code == 0, stream != 0) << server.name;
    if (stream != 0) {
      session.listen(0);
      EXPECT_GT(rootMeanSquare(session.listen(0.8)), 0.01) << server.name;
    }
    const auto start = Clock::now();
    BASS_StreamFree(stream);
    EXPECT_LT(Clock::now() - start, 1s) << server.name;
  }
}

TEST(Servers, ThatRefuseTheOldProtocolAreAskedInTheNewOne) {
  for (const char* refusal : {"426 Upgrade Required", "505 Not Supported"}) {
    Listener listener;
    Session session;
    ScriptedServer server;
    std::thread serving([&] {
      EXPECT_NE(std::string::npos, server.accept().find("GET / HTTP/1.0\r\n"));
      server.send(std::string("HTTP/1.1 ") + refusal + "\r\n\r\n");
      server.close();
      EXPECT_NE(std::string::npos, server.accept().find("GET / HTTP/1.1\r\n"));
      server.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + chunk(sound()));
    });
    EXPECT_NE(0u, listener.play(server.url())) << refusal;
    serving.join();
    EXPECT_GT(rootMeanSquare(session.listen(0.8)), 0.01) << refusal;
  }
}

TEST(Servers, ThatStallForLessThanTheBufferAreNotHeardToDoSo) {
  Listener listener;
  Session session;
  ScriptedServer server;
  std::thread sending([&] {
    server.accept();
    // Three seconds in hand, and then what real time asks for, but uneven: all of it
    // waits for up to 1.2 s and comes at once.
    const std::string loop = soundBytes("bells-00.mp3");
    const std::string bytes = loop + loop + loop;
    constexpr size_t kSecond = 16'000;
    std::mt19937 random(1);
    size_t sent = 0;
    const auto start = Clock::now();
    server.send(kOk + "icy-name:Uneven\r\n\r\n");
    while (sent < 13 * kSecond) {
      const auto played = std::chrono::duration<double>(Clock::now() - start).count();
      const auto due = static_cast<size_t>((3 + played) * kSecond);
      server.send(bytes.substr(sent, due - sent));
      sent = due;
      std::this_thread::sleep_for(std::chrono::milliseconds(20 + random() % 1180));
    }
  });
  EXPECT_NE(0u, listener.play(server.url()));
  session.listen(9);
  sending.join();
  EXPECT_EQ(0, session.reel()->gaps);
}

}  // namespace
}  // namespace engine_test
