// Directory requests against a server of this process that answers badly.
#include <winsock2.h>
// winsock2.h comes before windows.h
#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "directory/transfer_win.h"

namespace directory {
namespace {

using Outcome = TransferResult::Outcome;

/// Accepts connections one after the other and hands each with its request head
/// to the given answer.
class Server {
 public:
  using Answer = std::function<void(SOCKET, const std::string& head)>;

  explicit Server(Answer answer) : answer_(std::move(answer)) {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    bind(listener_, reinterpret_cast<sockaddr*>(&address), size);
    listen(listener_, 5);
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::jthread([this](std::stop_token stop) { serve(stop); });
  }
  ~Server() {
    thread_.request_stop();
    thread_.join();
    closesocket(listener_);
    WSACleanup();
  }

  std::string url(const std::string& target) const {
    return "http://127.0.0.1:" + std::to_string(port_) + target;
  }

 private:
  static bool readable(SOCKET socket) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(socket, &set);
    timeval wait{0, 20'000};
    return select(0, &set, nullptr, nullptr, &wait) > 0;
  }

  void serve(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      if (!readable(listener_)) continue;
      const SOCKET peer = accept(listener_, nullptr, nullptr);
      std::string head;
      char byte;
      while (head.find("\r\n\r\n") == head.npos && recv(peer, &byte, 1, 0) == 1) head += byte;
      answer_(peer, head);
      closesocket(peer);
    }
  }

  Answer answer_;
  SOCKET listener_ = INVALID_SOCKET;
  unsigned port_ = 0;
  std::jthread thread_;
};

void say(SOCKET peer, const std::string& bytes) {
  send(peer, bytes.data(), static_cast<int>(bytes.size()), 0);
}

std::string page(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

TransferLimits quick() {
  return {1000, 400, 1500};
}

TEST(Transfer, BringsTheBodyOfAnyStatusAndSendsTheAddressAsItStands) {
  std::string head;
  Server server([&](SOCKET peer, const std::string& request) {
    head = request;
    say(peer,
        "HTTP/1.1 404 Not Found\r\nContent-Length: 3\r\nConnection: close\r\n\r\n\xe4"
        "bc");
  });
  WinHttpTransfer transfer(quick());
  const auto result = transfer.get(server.url("/index.phtml?s=two words&b=%20'x'"));
  EXPECT_EQ(result.outcome, Outcome::completed);
  EXPECT_EQ(result.body,
            "\xe4"
            "bc");
  // Wine's library encodes a blank even when told not to.
  const std::string line = head.substr(0, head.find("\r\n"));
  const std::string blank =
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr ? "%20" : " ";
  EXPECT_EQ(line, "GET /index.phtml?s=two" + blank + "words&b=%20'x' HTTP/1.1");
  EXPECT_NE(head.find("User-Agent: Kestrel/"), head.npos);
}

TEST(Transfer, TellsWhatWentWrong) {
  struct Case {
    const char* name;
    Server::Answer answer;
    Outcome outcome;
  };
  const Case cases[] = {
      {"closes without an answer", [](SOCKET, const std::string&) {}, Outcome::failed},
      {"not HTTP", [](SOCKET peer, const std::string&) { say(peer, "hello\r\n\r\n"); },
       Outcome::failed},
      {"breaks off",
       [](SOCKET peer, const std::string&) {
         say(peer, "HTTP/1.1 200 OK\r\nContent-Length: 100\r\nConnection: close\r\n\r\nabc");
       },
       Outcome::failed},
      {"announces too much",
       [](SOCKET peer, const std::string&) {
         say(peer, "HTTP/1.1 200 OK\r\nContent-Length: 99999999\r\n\r\nabc");
       },
       Outcome::failed},
      {"never answers", [](SOCKET, const std::string&) { Sleep(600); }, Outcome::timed_out},
      {"hangs in the body",
       [](SOCKET peer, const std::string&) {
         say(peer, "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
         Sleep(600);
       },
       Outcome::timed_out},
      {"drips for ever",
       [](SOCKET peer, const std::string&) {
         say(peer, "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n");
         for (int i = 0; i < 17; ++i) {
           say(peer, "x");
           Sleep(100);
         }
       },
       Outcome::timed_out},
      {"empty body", [](SOCKET peer, const std::string&) { say(peer, page("")); },
       Outcome::completed},
  };
  for (const auto& c : cases) {
    Server server(c.answer);
    WinHttpTransfer transfer(quick());
    const auto result = transfer.get(server.url("/"));
    EXPECT_EQ(result.outcome, c.outcome) << c.name;
    EXPECT_EQ(result.body, "") << c.name;
  }
  WinHttpTransfer transfer(quick());
  EXPECT_EQ(transfer.get("http://127.0.0.1:1/").outcome, Outcome::failed) << "refused";
  EXPECT_EQ(transfer.get("ftp://127.0.0.1/").outcome, Outcome::failed) << "other scheme";
  EXPECT_EQ(transfer.get("").outcome, Outcome::failed) << "empty";
}

TEST(Transfer, ASlowAnswerIsNoSlowConnection) {
  Server slow([](SOCKET peer, const std::string&) {
    Sleep(500);
    say(peer, page("late"));
  });
  WinHttpTransfer transfer({.connect = 200, .silence = 2000, .overall = 4000});
  EXPECT_EQ(transfer.get(slow.url("/")).body, "late");
}

/// Runs a closure from the message loop of the waiting request.
class FromThePump {
 public:
  explicit FromThePump(std::function<void()> action) {
    pending() = std::move(action);
    SetTimer(nullptr, 0, 50, run);
  }

 private:
  static void CALLBACK run(HWND, UINT, UINT_PTR id, DWORD) {
    KillTimer(nullptr, id);
    std::exchange(pending(), nullptr)();
  }
  static std::function<void()>& pending() {
    static std::function<void()> action;
    return action;
  }
};

TEST(Transfer, ANewerRequestFromThePumpEndsTheWaitingOne) {
  std::atomic<int> answered = 0;
  Server slow([](SOCKET, const std::string&) { Sleep(600); });
  Server server([&](SOCKET peer, const std::string&) {
    ++answered;
    say(peer, page("inner"));
  });
  WinHttpTransfer transfer(quick());
  TransferResult inner;
  FromThePump nested([&] { inner = transfer.get(server.url("/inner")); });
  const auto outer = transfer.get(slow.url("/outer"));
  EXPECT_EQ(inner.body, "inner");
  EXPECT_EQ(outer.outcome, Outcome::superseded);
  EXPECT_EQ(answered, 1);
}

TEST(Transfer, ShutDownEndsTheWaitAtOnceAndForGood) {
  Server slow([](SOCKET, const std::string&) { Sleep(600); });
  WinHttpTransfer transfer(quick());
  FromThePump nested([&] { transfer.shutDown(); });
  const auto start = GetTickCount64();
  EXPECT_EQ(transfer.get(slow.url("/")).outcome, Outcome::ended);
  EXPECT_LT(GetTickCount64() - start, 350u) << "the time limit ended it, not the shut-down";
  EXPECT_EQ(transfer.get(slow.url("/")).outcome, Outcome::ended);
}

}  // namespace
}  // namespace directory
