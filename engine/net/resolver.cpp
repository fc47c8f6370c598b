#include <algorithm>
#include <cstring>
#include <thread>

#include "base/mutex.h"
#include "engine/net/socket_system.h"

namespace engine {
namespace {

// Shared with a lookup that may outlive whoever asked for it.
struct Lookup {
  std::string host;
  std::string port;
  Interrupt done;
  base::Mutex mutex;
  int result GUARDED_BY(mutex) = EAI_AGAIN;
  std::vector<Address> addresses GUARDED_BY(mutex);
};

int lookUp(const std::string& host, const std::string& port, int flags,
           std::vector<Address>& addresses) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* found = nullptr;
  const int result = getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
  for (const addrinfo* each = found; result == 0 && each != nullptr; each = each->ai_next) {
    Address address;
    if (each->ai_addrlen > address.bytes.size()) continue;
    std::memcpy(address.bytes.data(), each->ai_addr, each->ai_addrlen);
    address.length = static_cast<int>(each->ai_addrlen);
    address.family = each->ai_family;
    addresses.push_back(address);
  }
  if (found != nullptr) freeaddrinfo(found);
  return result;
}

void runLookup(const std::shared_ptr<Lookup>& lookup) {
  std::vector<Address> addresses;
  const int result = lookUp(lookup->host, lookup->port, 0, addresses);
  {
    const base::Lock lock(lookup->mutex);
    lookup->result = result;
    lookup->addresses = std::move(addresses);
  }
  lookup->done.set();
}

}  // namespace

NetError resolveHost(const std::string& host, uint16_t port, const Interrupt& interrupt,
                     Clock::time_point deadline, std::vector<Address>& addresses) {
  const std::string port_text = std::to_string(port);
  if (lookUp(host, port_text, AI_NUMERICHOST, addresses) == 0) return NetError::none;
  addresses.clear();

  // A hung name server cannot be interrupted; so another thread does the asking.
  const auto lookup = std::make_shared<Lookup>();
  lookup->host = host;
  lookup->port = port_text;
  std::thread([lookup] { runLookup(lookup); }).detach();
  while (!lookup->done.wait(std::chrono::milliseconds(20))) {
    const bool late = Clock::now() >= deadline;
    if (!late && !interrupt.isSet()) continue;
    pinModule();
    return late ? NetError::timeout : NetError::interrupted;
  }
  const base::Lock lock(lookup->mutex);
  addresses = lookup->addresses;
  return lookup->result == 0 && !addresses.empty() ? NetError::none : NetError::name;
}

}  // namespace engine
