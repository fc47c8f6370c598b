#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>

#include "directory/transfer_win.h"

// Directory requests to the demo radio, which answers badly when it is asked to.
namespace directory {
namespace {

using Outcome = TransferResult::Outcome;

constexpr TransferLimits kQuick{1000, 400, 1500};

std::string url(const std::string& target) {
  return std::getenv("KESTREL_RADIO_URL") + target;
}

std::string page(const std::string& habit) {
  return url("/bad/" + habit + "/directory/index.phtml?sgenre=Jazz&maxbitrate=999&numresult=5");
}

bool isWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

TEST(Transfer, SendsTheAddressAsItStands) {
  WinHttpTransfer transfer;
  EXPECT_EQ(transfer.get(url("/nowhere?s=two words&b=%20'x'")).outcome, Outcome::completed);
  // Wine's library encodes a blank even when told not to.
  const std::string blank = isWine() ? "%20" : " ";
  const std::string log = transfer.get(url("/control/log?clear=1")).body;
  EXPECT_EQ(log.substr(0, log.rfind('/')),
            "GET\t/nowhere?s=two" + blank + "words&b=%20'x'\tKestrel");
}

TEST(Transfer, BringsWhatIsWholeAndTellsWhatWentWrong) {
  // Wine's library tells of a head that it could not wait for as of one that broke off.
  const Outcome half_a_head = isWine() ? Outcome::failed : Outcome::timed_out;
  const std::tuple<std::string, Outcome, std::size_t> cases[] = {
      {page("garbage"), Outcome::completed, 50'000},
      {page("empty"), Outcome::completed, 0},
      {page("redirect-loop"), Outcome::failed, 0},
      {page("short-body"), Outcome::failed, 0},
      {page("reset"), Outcome::failed, 0},
      {page("huge"), Outcome::failed, 0},
      {page("hang"), Outcome::timed_out, 0},
      {page("hang-body"), Outcome::timed_out, 0},
      {page("slow-drip-10"), Outcome::timed_out, 0},  // a byte every 100 ms
      {page("hang-headers"), half_a_head, 0},
      {page("hang-headers-100"), Outcome::failed, 0},
      {page("hang-headers-100,reset"), Outcome::failed, 0},
      {"http://127.0.0.1:1/", Outcome::failed, 0},  // refuses the connection
      {"ftp://127.0.0.1/", Outcome::failed, 0},
      {"", Outcome::failed, 0},
  };
  for (const auto& [address, outcome, size] : cases) {
    const bool waits = outcome == Outcome::timed_out || address.find("hang") != address.npos;
    WinHttpTransfer transfer(waits ? kQuick : TransferLimits());
    const auto result = transfer.get(address);
    EXPECT_EQ(result.outcome, outcome) << address;
    EXPECT_EQ(result.body.size(), size) << address;
  }
}

TEST(Transfer, ASlowAnswerIsNoSlowConnection) {
  WinHttpTransfer transfer({.connect = 500, .silence = 2000, .overall = 4000});
  const auto start = GetTickCount64();
  EXPECT_EQ(transfer.get(page("hang")).outcome, Outcome::timed_out);
  EXPECT_GT(GetTickCount64() - start, 1200u) << "it was given up as a connection";
}

std::function<void()> pending;

void CALLBACK doPending(HWND, UINT, UINT_PTR id, DWORD) {
  KillTimer(nullptr, id);
  pending();
}

// Does it from the message loop of the request that waits by then.
void doFromThePump(std::function<void()> what) {
  pending = std::move(what);
  SetTimer(nullptr, 0, 50, doPending);
}

TEST(Transfer, ANewerRequestFromThePumpEndsTheWaitingOne) {
  WinHttpTransfer transfer;
  (void)transfer.get(url("/control/log?clear=1"));
  TransferResult inner;
  doFromThePump([&] { inner = transfer.get(page("garbage")); });
  EXPECT_EQ(transfer.get(page("hang")).outcome, Outcome::superseded);
  EXPECT_EQ(inner.body.size(), 50'000u);
  const std::string log = transfer.get(url("/control/log")).body;
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2) << log;
}

TEST(Transfer, ShutDownEndsTheWaitAtOnceAndForGood) {
  WinHttpTransfer transfer;
  doFromThePump([&] { transfer.shutDown(); });
  const auto start = GetTickCount64();
  EXPECT_EQ(transfer.get(page("hang")).outcome, Outcome::ended);
  EXPECT_LT(GetTickCount64() - start, 5000u) << "the time limit ended it, not the shut-down";
  EXPECT_EQ(transfer.get(page("empty")).outcome, Outcome::ended);
}

}  // namespace
}  // namespace directory
