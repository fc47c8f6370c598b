// A stream goes on whatever becomes of its connection.
#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>

#include "tests/engine/harness.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Note = Listener::Note;
using Clock = std::chrono::steady_clock;

const std::string kGood = "HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\n";
const std::string kStation = kGood + "icy-name:Here\r\n\r\n";
// A second and a half each.
const size_t kPart = 24'000;

std::string part(size_t number) {
  return soundBytes("bells-00.mp3").substr(number * kPart, kPart);
}

/// A listener whose server has sent the first part of its sound.
class Recovery : public testing::Test {
 protected:
  HSTREAM playFirstPart(const std::string& head = kStation) {
    return listener.play(server, head + part(0));
  }

  Listener listener;
  Session session;
  ScriptedServer server;
};

TEST_F(Recovery, GoesOnWhereTheConnectionBroke) {
  std::string all = part(0);
  ASSERT_NE(0u, playFirstPart(kGood + "icy-metaint:24000\r\n\r\n"));
  const std::string title = titleBlock("First");
  server.send(title);
  server.close();
  // Another interval, and the same title again.
  server.answer(kGood + "icy-metaint:12000\r\n\r\n" + part(1).substr(0, 12'000) + title +
                part(1).substr(12'000));
  all += part(1);
  EXPECT_TRUE(listener.hears(all));
  server.reset();
  // This one announces more than it sends.
  server.answer(kGood + "icy-name:Here\r\nContent-Length: 99999999\r\n\r\n" + part(2));
  server.close();
  all += part(2);
  server.answer(kStation + part(3));
  all += part(3);
  EXPECT_TRUE(listener.hears(all));
  EXPECT_EQ(1u, listener.notes(Note::title).size());
  EXPECT_TRUE(listener.notes(Note::end).empty());
  EXPECT_GE(session.listen(5).size(), 5 * Tape::kRate);
}

TEST_F(Recovery, TriesAtGrowingIntervals) {
  ASSERT_NE(0u, playFirstPart());
  server.close();
  const auto start = Clock::now();
  std::vector<Clock::duration> tries;
  for (int i = 0; i < 3; ++i) {
    server.accept();
    tries.push_back(Clock::now() - start);
    server.close();
  }
  EXPECT_GE(tries[0], 450ms);
  EXPECT_GE(tries[1] - tries[0], 950ms);
  EXPECT_GE(tries[2] - tries[1], 1900ms);
  EXPECT_GE(listener.count("reconnecting..."), 3u);
  // A connection that brings sound ends the growth.
  server.answer(kStation + part(1));
  EXPECT_TRUE(listener.hears(part(0) + part(1)));
  server.leave();
  server.comeBack();
  EXPECT_TRUE(server.isAsked(4s));  // and not only in 8
}

TEST_F(Recovery, WaitsForAServerThatHasNothingToSay) {
  ASSERT_NE(0u, playFirstPart());
  server.close();
  const std::string page = "HTTP/1.0 200 OK\r\nContent-Type: text/html\r\n\r\n<html>";
  // Behind a page at the root the stream itself is looked for at once.
  for (const std::string& answer :
       {"HTTP/1.0 503 Full\r\n\r\n"s, "ICY 404 No source\r\n\r\n"s, page, page}) {
    server.answer(answer);
    server.close();
  }
  server.answer(kStation + part(1));
  EXPECT_TRUE(listener.hears(part(0) + part(1)));
  EXPECT_EQ(1u, listener.count("HTTP/1.0 503 Full"));
}

TEST_F(Recovery, EndsWhenTheServerKnowsOfNoSuchStream) {
  for (const std::string status : {"HTTP/1.0 404 Not Found", "HTTP/1.0 410 Gone"}) {
    Listener one;
    const HSTREAM stream = one.play(server, kStation + part(0));
    server.close();
    server.answer(status + "\r\n\r\n");
    EXPECT_TRUE(one.waitFor(Note::end, 1)) << status;
    EXPECT_EQ(1u, one.count(status));
    EXPECT_EQ(part(0), one.bytes());
    BASS_StreamFree(stream);
  }
}

TEST_F(Recovery, TakesASilentConnectionForALostOne) {
  ASSERT_NE(0u, playFirstPart());
  EXPECT_TRUE(server.isAsked(20s));
  server.answer(kStation + part(1));
  EXPECT_TRUE(listener.hears(part(0) + part(1)));
}

TEST_F(Recovery, StopsAtOnceWhileItTries) {
  const std::function<void()> cases[] = {
      [] {},
      [&] { ASSERT_TRUE(server.isAsked(10s)); },
      [&] { server.accept(); },
      [&] { server.answer("HTTP/1.0 200 "); },
  };
  for (const auto& happens : cases) {
    Listener one;
    const HSTREAM stream = one.play(server, kStation + part(0));
    ASSERT_NE(0u, stream);
    server.close();
    happens();
    const auto start = Clock::now();
    EXPECT_TRUE(BASS_ChannelStop(stream));
    EXPECT_TRUE(BASS_StreamFree(stream));
    EXPECT_LT(Clock::now() - start, 1s);
    while (server.isAsked(0ms)) server.accept();
  }
}

// A network of this test's own, as far as this thread and those that it starts see.
bool haveOwnNetwork() {
  return unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
}

void setUp(short up) {
  const int control = socket(AF_INET, SOCK_DGRAM, 0);
  ifreq loopback = {};
  std::strcpy(loopback.ifr_name, "lo");
  loopback.ifr_flags = up;
  EXPECT_EQ(0, ioctl(control, SIOCSIFFLAGS, &loopback));
  close(control);
}

TEST(NetworkChange, EndsALongPause) {
  std::thread([] {
    if (!haveOwnNetwork()) GTEST_SKIP() << "only root may have a network of its own";
    setUp(IFF_UP);
    Listener listener;
    const Session session;
    ScriptedServer server;
    ASSERT_NE(0u, listener.play(server, kStation + part(0)));
    server.close();
    server.leave();
    EXPECT_TRUE(eventually([&] { return listener.count("reconnecting...") >= 5; }));
    server.comeBack();
    setUp(0);
    setUp(IFF_UP);
    EXPECT_TRUE(server.isAsked(4s));  // and not only in 8
    server.answer(kStation + part(1));
    EXPECT_TRUE(listener.hears(part(0) + part(1)));
  }).join();
}

TEST_F(Recovery, LetsAFileEnd) {
  ASSERT_NE(0u, playFirstPart(kGood + "Content-Length: 24000\r\n\r\n"));
  server.close();
  EXPECT_TRUE(listener.waitFor(Note::end, 1));
  EXPECT_FALSE(server.isAsked(1s));
  EXPECT_EQ(part(0), listener.bytes());
  EXPECT_GE(session.listen(1.3).size(), 1.3 * Tape::kRate);
}

TEST_F(Recovery, FetchesTheRestOfAFile) {
  const std::string file = "ETag: \"one\"\r\nContent-Length: 72000\r\n\r\n";
  ASSERT_NE(0u, playFirstPart(kGood + file));
  server.reset();
  std::string request = server.answer(
      "HTTP/1.0 206 Partial Content\r\nContent-Range: bytes 24000-71999/72000\r\n\r\n" + part(1));
  EXPECT_NE(std::string::npos, request.find("\r\nRange: bytes=24000-\r\n"));
  server.close();
  // This time the server cannot.
  request = server.answer(kGood + file + part(0) + part(1) + part(2));
  EXPECT_NE(std::string::npos, request.find("\r\nRange: bytes=48000-\r\n"));
  server.close();
  EXPECT_TRUE(listener.waitFor(Note::end, 1));
  EXPECT_EQ(part(0) + part(1) + part(2), listener.bytes());
}

}  // namespace
}  // namespace engine_test
