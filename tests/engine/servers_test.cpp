// Servers that do wrong: what the listener hears and is told, and that leaving them
// is always quick and clean.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>

#include "tests/engine/harness.h"
#include "tests/engine/web.h"

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
  std::string bytes(length, '\0');
  std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
  return bytes;
}

/// In pieces of all lengths, with words behind the lengths.
std::string chunks(const std::string& bytes) {
  std::string all;
  for (size_t at = 0, length = 1; at < bytes.size(); at += length, length = 1 + at % 3001) {
    const std::string piece = bytes.substr(at, length);
    char size[32];
    std::snprintf(size, sizeof size, "%zX;x=y\r\n", piece.size());
    all += size + piece + "\r\n";
  }
  return all;
}

struct Server {
  const char* name;
  std::string answer;            ///< after which it closes
  int code;                      ///< 0: it plays
  const char* status = nullptr;  ///< that the listener is told
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
      {"has no such stream", "HTTP/1.0 404 Not Found\r\n\r\n", BASS_ERROR_FILEOPEN,
       "HTTP/1.0 404 Not Found"},
      {"is at fault", "HTTP/1.0 500 Oh\r\n\r\n" + sound(), BASS_ERROR_FILEOPEN, "HTTP/1.0 500 Oh"},
      {"refuses in its own protocol", "ICY 401 Full\r\n\r\n", BASS_ERROR_FILEOPEN, "ICY 401 Full"},
      {"leads to itself", "HTTP/1.0 302 Found\r\nLocation: live\r\n\r\n", BASS_ERROR_FILEOPEN,
       "HTTP/1.0 302 Found"},
      {"has a long head", kOk + long_line + "\r\n" + sound(), 0},
      {"has a head without end", kOk + long_line + long_line + long_line, BASS_ERROR_FILEOPEN},
      {"sends the head only", kOk + "\r\n", BASS_ERROR_FILEFORM, "HTTP/1.0 200 OK"},
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
      {"has odd chunks", chunked + chunks(head) + "zz\r\n", 0},
      {"speaks its own protocol", "ICY 200 OK\r\nicy-name:Here\r\n\r\n" + sound(), 0, "ICY 200 OK"},
  };
}

TEST(Servers, ThatDoWrongAreHeardOrToldOfAndLeftAtOnce) {
  WebServer web;
  Session session;
  for (const Server& server : servers()) {
    Listener listener;
    web.putRaw("/live", server.answer);
    const HSTREAM stream = listener.play(web.url("/live"));
    EXPECT_EQ(server.code, BASS_ErrorGetCode()) << server.name;
    EXPECT_EQ(server.code == 0, stream != 0) << server.name;
    if (stream != 0) {
      session.listen(0);
      EXPECT_GT(rootMeanSquare(session.listen(0.8)), 0.01) << server.name;
    }
    if (server.status != nullptr) {
      EXPECT_LE(1u, listener.count(server.status)) << server.name;
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
      server.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + chunks(sound()) +
                  "0\r\n\r\n");
    });
    EXPECT_NE(0u, listener.play(server.url())) << refusal;
    serving.join();
    EXPECT_GT(rootMeanSquare(session.listen(0.8)), 0.01) << refusal;
    EXPECT_TRUE(listener.hears(sound()));
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
