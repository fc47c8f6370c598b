#include <windows.h>
// After windows.h, which it builds on.
#include <winhttp.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <string_view>

#include "engine/net/byte_source.h"

namespace engine {
namespace {

constexpr DWORD kAnswerTime = 16'000;   // ms, connecting included
constexpr DWORD kSilenceTime = 10'000;  // ms

std::wstring wide(const std::string& text) {
  return {text.begin(), text.end()};
}

std::wstring headers(const ByteRange& range) {
  const std::wstring usual = L"Icy-MetaData: 1\r\nAccept: */*\r\n";
  return usual + wide(range.header());
}

/// One request as its callbacks see it. They may come until its handle has told
/// that it is closing, so it frees itself then.
struct Exchange {
  HANDLE done = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  std::atomic<DWORD> error{0};
  std::atomic<DWORD> got{0};
  std::array<uint8_t, 16 * 1024> bytes;

  Exchange() = default;
  ~Exchange() { CloseHandle(done); }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;
};

void CALLBACK onStatus(HINTERNET, DWORD_PTR context, DWORD status, void* data, DWORD length) {
  auto* exchange = reinterpret_cast<Exchange*>(context);
  if (exchange == nullptr) return;
  switch (status) {
    case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
      exchange->error = static_cast<const WINHTTP_ASYNC_RESULT*>(data)->dwError;
      break;
    case WINHTTP_CALLBACK_STATUS_DATA_AVAILABLE:
      exchange->got = *static_cast<const DWORD*>(data);
      break;
    case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
      exchange->got = length;
      break;
    case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
    case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
      break;
    case WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING:
      delete exchange;
      return;
    default:
      return;
  }
  SetEvent(exchange->done);
}

/// Wine takes a head that breaks off for a whole one, and crashes reading on behind it;
/// only the missing empty line tells.
bool brokeOff(std::wstring_view head) {
  static const bool is_wine =
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  return is_wine && !head.ends_with(L"\r\n\r\n");
}

NetError netError(DWORD code) {
  switch (code) {
    case ERROR_WINHTTP_TIMEOUT:
      return NetError::timeout;
    case ERROR_WINHTTP_NAME_NOT_RESOLVED:
      return NetError::name;
    default:
      return NetError::failed;
  }
}

struct CloseInternet {
  void operator()(void* handle) const { WinHttpCloseHandle(handle); }
};
using Internet = std::unique_ptr<void, CloseInternet>;

/// A stream over TLS with the system's certificate checks and proxy.
class HttpsSource final : public ByteSource {
 public:
  explicit HttpsSource(const Interrupt& interrupt) : interrupt_(interrupt) {}

  NetError open(const Url& url, const Asking& asking);
  const ResponseHead& head() const override { return head_; }
  NetError read(uint8_t* to, size_t room, size_t& got) override;

 private:
  bool prepare(const Url& url, bool newer);
  NetError wait(DWORD milliseconds);
  NetError readHead();
  NetError fetchMore(DWORD patience);

  const Interrupt& interrupt_;
  Internet session_, connection_, request_;  // closed from the last to the first
  Exchange* exchange_ = nullptr;             ///< the request's
  ResponseHead head_;
  bool asked_ = false;  ///< how much there is, and the answer was not taken yet
  size_t filled_ = 0;   ///< bytes in the exchange
  size_t taken_ = 0;    ///< of them
};

bool HttpsSource::prepare(const Url& url, bool newer) {
  session_.reset(WinHttpOpen(L"Kestrel/" KESTREL_VERSION, WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY,
                             nullptr, nullptr, WINHTTP_FLAG_ASYNC));
  if (!session_) return false;
  WinHttpSetTimeouts(session_.get(), 6000, 6000, 10'000, static_cast<int>(kSilenceTime));
  connection_.reset(WinHttpConnect(session_.get(), wide(url.host).c_str(), url.port, 0));
  if (!connection_) return false;
  // 1.0, which forbids chunks: Wine keeps a chunk to itself until the next one begins,
  // and may block meanwhile.
  request_.reset(WinHttpOpenRequest(connection_.get(), L"GET", wide(url.path).c_str(),
                                    newer ? L"HTTP/1.1" : L"HTTP/1.0", nullptr, nullptr,
                                    WINHTTP_FLAG_SECURE));
  if (!request_) return false;
  // Redirects are followed where plain ones are, which may lead from one to the other.
  DWORD never = WINHTTP_DISABLE_REDIRECTS;
  WinHttpSetOption(request_.get(), WINHTTP_OPTION_DISABLE_FEATURE, &never, sizeof never);
  auto exchange = std::make_unique<Exchange>();
  auto context = reinterpret_cast<DWORD_PTR>(exchange.get());
  if (!WinHttpSetOption(request_.get(), WINHTTP_OPTION_CONTEXT_VALUE, &context, sizeof context) ||
      WinHttpSetStatusCallback(
          request_.get(), onStatus,
          WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS | WINHTTP_CALLBACK_FLAG_HANDLES,
          0) == WINHTTP_INVALID_STATUS_CALLBACK) {
    return false;
  }
  exchange_ = exchange.release();
  return true;
}

NetError HttpsSource::wait(DWORD milliseconds) {
  const HANDLE both[2] = {interrupt_.native(), exchange_->done};
  const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  do {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    const auto step = std::clamp(left, std::chrono::milliseconds(0), kWaitStep);
    switch (WaitForMultipleObjects(2, both, FALSE, static_cast<DWORD>(step.count()))) {
      case WAIT_OBJECT_0:
        return NetError::interrupted;
      case WAIT_OBJECT_0 + 1:
        return exchange_->error == 0 ? NetError::none : netError(exchange_->error);
      default:
        break;
    }
  } while (Clock::now() < deadline);
  return NetError::timeout;
}

NetError HttpsSource::open(const Url& url, const Asking& asking) {
  if (!prepare(url, asking.newer)) return NetError::failed;
  if (!WinHttpSendRequest(request_.get(), headers(asking.range).c_str(), static_cast<DWORD>(-1),
                          nullptr, 0, 0, reinterpret_cast<DWORD_PTR>(exchange_))) {
    return netError(GetLastError());
  }
  if (const NetError error = wait(kAnswerTime); error != NetError::none) return error;
  if (!WinHttpReceiveResponse(request_.get(), nullptr)) return netError(GetLastError());
  if (const NetError error = wait(kAnswerTime); error != NetError::none) return error;
  return readHead();
}

NetError HttpsSource::readHead() {
  DWORD size = 0;
  WinHttpQueryHeaders(request_.get(), WINHTTP_QUERY_RAW_HEADERS_CRLF, nullptr, nullptr, &size,
                      nullptr);
  std::wstring text(size / sizeof(wchar_t), L'\0');
  if (!WinHttpQueryHeaders(request_.get(), WINHTTP_QUERY_RAW_HEADERS_CRLF, nullptr, text.data(),
                           &size, nullptr)) {
    return NetError::failed;
  }
  text.resize(size / sizeof(wchar_t));
  if (brokeOff(text)) return NetError::failed;
  // A byte a character, as the server sent them.
  std::string bytes;
  for (const wchar_t c : text) bytes += static_cast<char>(c);
  auto head = parseHead(bytes);
  if (!head) return NetError::unsupported;
  head_ = std::move(*head);
  return NetError::none;
}

// Asks first how much there is: a read waits until all it asked for has come.
NetError HttpsSource::fetchMore(DWORD patience) {
  if (exchange_->error != 0) return netError(exchange_->error);
  if (!asked_ && !WinHttpQueryDataAvailable(request_.get(), nullptr)) {
    return netError(GetLastError());
  }
  asked_ = true;
  if (const NetError error = wait(patience); error != NetError::none) return error;
  asked_ = false;
  taken_ = 0;
  filled_ = std::min<size_t>(exchange_->got, exchange_->bytes.size());
  if (filled_ == 0) return NetError::none;
  if (!WinHttpReadData(request_.get(), exchange_->bytes.data(), static_cast<DWORD>(filled_),
                       nullptr)) {
    filled_ = 0;
    return netError(GetLastError());
  }
  const NetError error = wait(kSilenceTime);
  filled_ = error == NetError::none ? exchange_->got.load() : 0;
  return error;
}

// Takes all that is here: pieces may be small, and whoever asks may sleep between two
// questions.
NetError HttpsSource::read(uint8_t* to, size_t room, size_t& got) {
  got = 0;
  while (got < room) {
    if (taken_ == filled_) {
      const NetError error = fetchMore(got == 0 ? kSilenceTime : 0);
      // What is wrong now, the next call will see as well.
      if (error != NetError::none) return got == 0 ? error : NetError::none;
      if (filled_ == 0) break;
    }
    const size_t length = std::min(room - got, filled_ - taken_);
    std::memcpy(to + got, exchange_->bytes.data() + taken_, length);
    taken_ += length;
    got += length;
  }
  return NetError::none;
}

}  // namespace

OpenedSource openHttps(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                       const Asking& asking) {
  status(std::string("connecting...") + '\0');
  auto source = std::make_unique<HttpsSource>(interrupt);
  const NetError error = source->open(url, asking);
  if (error != NetError::none) return {nullptr, error};
  return {std::move(source), NetError::none};
}

}  // namespace engine
