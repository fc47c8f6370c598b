#include <winsock2.h>
// After winsock2.h, which must come first.
#include <mswsock.h>
#include <windows.h>

#include <array>

#include "engine/net/network_watch.h"

namespace engine {
namespace {

/// The system's list of this machine's addresses of one family.
class AddressList {
 public:
  explicit AddressList(int family);
  ~AddressList();
  AddressList(const AddressList&) = delete;
  AddressList& operator=(const AddressList&) = delete;

  HANDLE changed() const { return question_->hEvent; }
  /// Asks to be told of the next change.
  void ask();

 private:
  SOCKET socket_;
  /// What the system writes to until it has answered.
  std::unique_ptr<OVERLAPPED> question_ = std::make_unique<OVERLAPPED>();
  bool asked_ = false;
};

AddressList::AddressList(int family)
    : socket_(WSASocketW(family, SOCK_DGRAM, 0, nullptr, 0,
                         WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT)) {
  question_->hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ask();
}

void AddressList::ask() {
  ResetEvent(changed());
  DWORD length = 0;
  asked_ = socket_ != INVALID_SOCKET &&
           WSAIoctl(socket_, SIO_ADDRESS_LIST_CHANGE, nullptr, 0, nullptr, 0, &length,
                    question_.get(), nullptr) != 0 &&
           WSAGetLastError() == WSA_IO_PENDING;
}

AddressList::~AddressList() {
  const HANDLE event = changed();
  if (asked_) CancelIoEx(reinterpret_cast<HANDLE>(socket_), question_.get());
  if (socket_ != INVALID_SOCKET) closesocket(socket_);
  // A few bytes lost are better than an answer into other people's memory.
  if (asked_ && WaitForSingleObject(event, 1000) != WAIT_OBJECT_0) {
    [[maybe_unused]] OVERLAPPED* const left = question_.release();
    return;
  }
  CloseHandle(event);
}

}  // namespace

struct NetworkWatch::System {
  std::array<AddressList, 2> lists{AddressList(AF_INET), AddressList(AF_INET6)};
};

NetworkWatch::NetworkWatch() : system_(std::make_unique<System>()) {}

NetworkWatch::~NetworkWatch() = default;

NetworkWatch::Woken NetworkWatch::wait(const Interrupt& interrupt, std::chrono::milliseconds time) {
  auto& lists = system_->lists;
  const HANDLE all[] = {interrupt.native(), lists[0].changed(), lists[1].changed()};
  const DWORD woken =
      WaitForMultipleObjects(3, all, FALSE, static_cast<DWORD>(time.count())) - WAIT_OBJECT_0;
  if (woken == 0) return Woken::by_interrupt;
  if (woken > lists.size()) return Woken::by_time;
  lists[woken - 1].ask();
  return Woken::by_change;
}

}  // namespace engine
