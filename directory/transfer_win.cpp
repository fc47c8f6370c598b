#include "directory/transfer_win.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

#include "base/utf.h"
#include "window/message_pump.h"

namespace directory {
namespace {

using Outcome = TransferResult::Outcome;

constexpr std::size_t kBodyCap = 16u << 20;  // a directory page is some 20 kB

constexpr DWORD kSocketTimeout = 10'060;  // WSAETIMEDOUT, which Wine reports as it is

Outcome outcomeOf(DWORD error) {
  return error == ERROR_WINHTTP_TIMEOUT || error == kSocketTimeout ? Outcome::timed_out
                                                                   : Outcome::failed;
}

/// Wine takes a head that breaks off for a whole one, and crashes reading on behind it;
/// only the missing empty line tells.
bool brokeOffInItsHead(HINTERNET request) {
  static const bool is_wine =
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  if (!is_wine) return false;
  DWORD size = 0;
  WinHttpQueryHeaders(request, WINHTTP_QUERY_RAW_HEADERS_CRLF, WINHTTP_HEADER_NAME_BY_INDEX,
                      nullptr, &size, WINHTTP_NO_HEADER_INDEX);
  std::wstring head(size / sizeof(wchar_t), L'\0');
  if (!WinHttpQueryHeaders(request, WINHTTP_QUERY_RAW_HEADERS_CRLF, WINHTTP_HEADER_NAME_BY_INDEX,
                           head.data(), &size, WINHTTP_NO_HEADER_INDEX)) {
    return true;
  }
  head.resize(size / sizeof(wchar_t));
  return !head.ends_with(L"\r\n\r\n");
}

}  // namespace

/// One request and its answer. WinHTTP's threads fill it until the event is set;
/// from then on it is the waiting caller's. It keeps itself alive until WinHTTP
/// has let go of its handle, since an abandoned read still owns the buffer.
class WinHttpTransfer::Request : public std::enable_shared_from_this<Request> {
 public:
  static std::shared_ptr<Request> start(HINTERNET connection, const Url& url) {
    auto request = std::make_shared<Request>();
    return request->open(connection, url) ? request : nullptr;
  }

  HANDLE finished() const { return finished_.get(); }
  ULONGLONG lastProgress() const { return last_progress_; }
  bool sent() const { return sent_; }

  /// Lets go of the handle; what still arrives is dropped.
  void close() {
    if (handle_ != nullptr) WinHttpCloseHandle(std::exchange(handle_, nullptr));
  }

  TransferResult takeResult() { return {outcome_, std::move(body_)}; }

 private:
  bool open(HINTERNET connection, const Url& url) {
    const std::wstring target = url.target.empty() ? L"/" : base::toWide(url.target);
    const DWORD flags = WINHTTP_FLAG_ESCAPE_DISABLE | WINHTTP_FLAG_ESCAPE_DISABLE_QUERY |
                        (url.secure ? WINHTTP_FLAG_SECURE : 0);
    finished_.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    handle_ = WinHttpOpenRequest(connection, L"GET", target.c_str(), nullptr, WINHTTP_NO_REFERER,
                                 WINHTTP_DEFAULT_ACCEPT_TYPES, flags);
    if (handle_ == nullptr || !finished_) return false;
    request_ = handle_;

    DWORD_PTR context = reinterpret_cast<DWORD_PTR>(this);
    WinHttpSetOption(handle_, WINHTTP_OPTION_CONTEXT_VALUE, &context, sizeof context);
    DWORD redirect = WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS;
    WinHttpSetOption(handle_, WINHTTP_OPTION_REDIRECT_POLICY, &redirect, sizeof redirect);
    const auto previous = WinHttpSetStatusCallback(handle_, onStatus,
                                                   WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS |
                                                       WINHTTP_CALLBACK_FLAG_SEND_REQUEST |
                                                       WINHTTP_CALLBACK_FLAG_HANDLES,
                                                   0);
    if (previous == WINHTTP_INVALID_STATUS_CALLBACK) {
      close();
      return false;
    }
    self_ = shared_from_this();
    noteProgress();
    if (!WinHttpSendRequest(handle_, WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0,
                            0, context)) {
      finish(outcomeOf(GetLastError()));
    }
    return true;
  }

  static void CALLBACK onStatus(HINTERNET, DWORD_PTR context, DWORD status, void* info,
                                DWORD length) noexcept {
    auto* const request = reinterpret_cast<Request*>(context);
    if (request == nullptr) return;
    try {
      request->handleStatus(status, info, length);
    } catch (...) {
      request->finish(Outcome::failed);
    }
  }

  void handleStatus(DWORD status, void* info, DWORD length) {
    noteProgress();
    switch (status) {
      case WINHTTP_CALLBACK_STATUS_REQUEST_SENT:
        sent_ = true;  // Wine completes the sending only with the answer's first byte
        return;
      case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
        sent_ = true;
        if (!WinHttpReceiveResponse(request_, nullptr)) finish(outcomeOf(GetLastError()));
        return;
      case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
        return readHeaders();
      case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
        return takeBlock(length);
      case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
        return finish(outcomeOf(static_cast<WINHTTP_ASYNC_RESULT*>(info)->dwError));
      case WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING: {
        const auto last_owner = std::move(self_);  // may delete this on return
        return;
      }
      default:
        return;
    }
  }

  void readHeaders() {
    if (brokeOffInItsHead(request_)) return finish(Outcome::failed);
    DWORD length = 0;
    DWORD size = sizeof length;
    has_length_ =
        WinHttpQueryHeaders(request_, WINHTTP_QUERY_CONTENT_LENGTH | WINHTTP_QUERY_FLAG_NUMBER,
                            WINHTTP_HEADER_NAME_BY_INDEX, &length, &size, WINHTTP_NO_HEADER_INDEX);
    announced_length_ = length;
    if (has_length_ && announced_length_ > kBodyCap) return finish(Outcome::failed);
    readBlock();
  }

  void readBlock() {
    if (!WinHttpReadData(request_, block_.data(), static_cast<DWORD>(block_.size()), nullptr)) {
      finish(outcomeOf(GetLastError()));
    }
  }

  void takeBlock(DWORD length) {
    if (length == 0) {
      // WinHTTP reports a body that breaks off as a complete one.
      const bool whole = !has_length_ || body_.size() == announced_length_;
      return finish(whole ? Outcome::completed : Outcome::failed);
    }
    if (body_.size() + length > kBodyCap) return finish(Outcome::failed);
    body_.append(block_.data(), length);
    readBlock();
  }

  void finish(Outcome outcome) {
    if (std::exchange(done_, true)) return;
    if (outcome != Outcome::completed) body_.clear();
    outcome_ = outcome;
    SetEvent(finished_.get());
  }

  void noteProgress() { last_progress_ = GetTickCount64(); }

  std::shared_ptr<Request> self_;  // WinHTTP's share, until its handle is gone
  base::UniqueHandle<HANDLE, CloseHandle> finished_;
  HINTERNET handle_ = nullptr;   // the caller's, null once closed
  HINTERNET request_ = nullptr;  // the same for the callbacks
  std::atomic<ULONGLONG> last_progress_ = 0;
  std::atomic<bool> sent_ = false;
  std::array<char, 16384> block_;
  std::string body_;
  std::size_t announced_length_ = 0;
  bool has_length_ = false;
  bool done_ = false;
  Outcome outcome_ = Outcome::failed;
};

WinHttpTransfer::~WinHttpTransfer() = default;

bool WinHttpTransfer::openSession() {
  if (session_) return true;
  session_.reset(WinHttpOpen(base::toWide("Kestrel/" KESTREL_VERSION).c_str(),
                             WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY, WINHTTP_NO_PROXY_NAME,
                             WINHTTP_NO_PROXY_BYPASS, WINHTTP_FLAG_ASYNC));
  if (!session_) return false;
  const int connect_ms = static_cast<int>(limits_.connect);
  const int silence_ms = static_cast<int>(limits_.silence);
  WinHttpSetTimeouts(session_.get(), connect_ms, connect_ms, silence_ms, silence_ms);
  DWORD response_ms = limits_.silence;  // not covered by the call above
  WinHttpSetOption(session_.get(), WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &response_ms,
                   sizeof response_ms);
  return true;
}

HINTERNET WinHttpTransfer::connection(const Url& url) {
  const std::string key = std::string(url.host) + ':' + std::to_string(url.port);
  auto& handle = connections_[key];
  if (!handle) {
    handle.reset(WinHttpConnect(session_.get(), base::toWide(url.host).c_str(), url.port, 0));
  }
  return handle.get();
}

TransferResult WinHttpTransfer::get(std::string_view address) {
  const std::uint64_t generation = ++generation_;
  if (shut_down_) return {Outcome::ended, {}};
  const auto url = splitUrl(address);
  if (!url || !openSession()) return {};
  const HINTERNET host = connection(*url);
  if (host == nullptr) return {};
  const auto request = Request::start(host, *url);
  if (!request) return {};
  TransferResult result = wait(*request, generation);
  request->close();
  return result;
}

TransferResult WinHttpTransfer::wait(Request& request, std::uint64_t generation) {
  const ULONGLONG start = GetTickCount64();
  const HANDLE finished = request.finished();
  for (;;) {
    if (shut_down_) return {Outcome::ended, {}};
    if (generation != generation_) return {Outcome::superseded, {}};
    if (WaitForSingleObject(finished, 0) == WAIT_OBJECT_0) return request.takeResult();

    const ULONGLONG now = GetTickCount64();
    const ULONGLONG silence =
        request.lastProgress() + (request.sent() ? limits_.silence : limits_.connect);
    const ULONGLONG limit = std::min(start + limits_.overall, silence);
    if (now >= limit) return {Outcome::timed_out, {}};
    MsgWaitForMultipleObjectsEx(1, &finished, static_cast<DWORD>(limit - now), QS_ALLINPUT,
                                MWMO_INPUTAVAILABLE);
    if (!window::dispatchPending()) shut_down_ = true;
  }
}

void WinHttpTransfer::shutDown() {
  shut_down_ = true;
  PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);  // wakes a waiting get()
}

}  // namespace directory
