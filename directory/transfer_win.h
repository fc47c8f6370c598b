#pragma once

#include <windows.h>
#include <winhttp.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "base/unique_handle_win.h"
#include "directory/transfer.h"
#include "directory/url.h"

namespace directory {

/// A transfer's time limits in milliseconds.
struct TransferLimits {
  unsigned connect = 5'000;   ///< until the request is out
  unsigned silence = 15'000;  ///< without a byte after that
  unsigned overall = 30'000;
};

/// Transfer over WinHTTP in its asynchronous mode: the answer is put together on
/// WinHTTP's threads while the caller dispatches messages. All time limits are
/// kept by the waiting caller, which needs nothing of the library to give up.
class WinHttpTransfer final : public Transfer {
 public:
  explicit WinHttpTransfer(TransferLimits limits = {}) : limits_(limits) {}
  ~WinHttpTransfer() override;
  WinHttpTransfer(const WinHttpTransfer&) = delete;
  WinHttpTransfer& operator=(const WinHttpTransfer&) = delete;

  TransferResult get(std::string_view url) override;
  void shutDown() override;

 private:
  class Request;
  using InternetHandle = base::UniqueHandle<HINTERNET, WinHttpCloseHandle>;

  bool openSession();
  HINTERNET connection(const Url& url);
  TransferResult wait(Request& request, std::uint64_t generation);

  const TransferLimits limits_;
  InternetHandle session_;  // opened at the first request, kept for its connections
  std::map<std::string, InternetHandle, std::less<>> connections_;
  std::uint64_t generation_ = 0;  // of the newest request; a waiting older one gives up
  bool shut_down_ = false;
};

}  // namespace directory
