#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <new>

#include "engine/net/http_source.h"

namespace engine {
namespace {

template <auto function>
struct Free {
  template <class T>
  void operator()(T* object) const {
    function(object);
  }
};
using TlsContext = std::unique_ptr<SSL_CTX, Free<SSL_CTX_free>>;
using Tls = std::unique_ptr<SSL, Free<SSL_free>>;
using BioMethod = std::unique_ptr<BIO_METHOD, Free<BIO_meth_free>>;

template <class T>
T* notNull(T* object) {
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

/// TLS over a socket of ours, which OpenSSL reads and writes through a BIO, so that
/// its waits are the socket's. The handshake is part of the first sending.
class TlsLink final : public Link {
 public:
  TlsLink(const std::string& host, const Interrupt& interrupt);

  NetError connect(const Address& address, Clock::time_point deadline) override {
    return socket_.connect(address, deadline);
  }
  NetError sendAll(std::string_view bytes, Clock::time_point deadline) override;
  NetError receive(uint8_t* to, size_t room, Clock::time_point deadline, size_t& got) override;

 private:
  void expect(const std::string& host);
  NetError read(uint8_t* to, size_t room, Clock::time_point deadline, size_t& got);
  static TlsLink& of(BIO* bio) { return *static_cast<TlsLink*>(BIO_get_data(bio)); }
  static int readSocket(BIO* bio, char* to, size_t room, size_t* got);
  static int writeSocket(BIO* bio, const char* bytes, size_t size, size_t* written);
  static long control(BIO* bio, int command, long number, void* pointer);

  const Interrupt& interrupt_;
  Socket socket_;
  Clock::time_point deadline_;       ///< of the call under way
  NetError error_ = NetError::none;  ///< the socket's
  bool ended_ = false;               ///< so is the socket
  const BioMethod method_;
  const Tls tls_;
};

// One for each connection: a certificate that was added to the system counts at
// once, and nothing outlives the stream.
TlsContext makeContext() {
  TlsContext context(notNull(SSL_CTX_new(TLS_client_method())));
  // Where these are is known to the library, and SSL_CERT_FILE and SSL_CERT_DIR may
  // say otherwise.
  SSL_CTX_set_default_verify_paths(context.get());
  SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
  SSL_CTX_set_read_ahead(context.get(), 1);
  return context;
}

TlsLink::TlsLink(const std::string& host, const Interrupt& interrupt)
    : interrupt_(interrupt),
      socket_(interrupt),
      method_(notNull(BIO_meth_new(BIO_TYPE_SOURCE_SINK, "engine socket"))),
      tls_(notNull(SSL_new(makeContext().get()))) {
  BIO_meth_set_read_ex(method_.get(), readSocket);
  BIO_meth_set_write_ex(method_.get(), writeSocket);
  BIO_meth_set_ctrl(method_.get(), control);
  BIO* bio = notNull(BIO_new(method_.get()));
  BIO_set_data(bio, this);
  BIO_set_init(bio, 1);
  SSL_set_bio(tls_.get(), bio, bio);  // which owns it now
  SSL_set_connect_state(tls_.get());
  expect(host);
}

// The certificate must be for that host. An address is not a name, and is not named
// to the server (RFC 6066, 3).
void TlsLink::expect(const std::string& host) {
  if (X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(tls_.get()), host.c_str()) == 1) return;
  SSL_set_hostflags(tls_.get(), X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
  if (SSL_set1_host(tls_.get(), host.c_str()) != 1 ||
      SSL_set_tlsext_host_name(tls_.get(), host.c_str()) != 1) {
    throw std::bad_alloc();
  }
}

int TlsLink::readSocket(BIO* bio, char* to, size_t room, size_t* got) {
  TlsLink& self = of(bio);
  BIO_clear_retry_flags(bio);
  self.error_ = self.socket_.receive(reinterpret_cast<uint8_t*>(to), room, self.deadline_, *got);
  // The rest of a record may come with a later call.
  if (self.error_ == NetError::timeout) BIO_set_retry_read(bio);
  self.ended_ = self.error_ == NetError::none && *got == 0;
  return self.error_ == NetError::none && *got != 0 ? 1 : 0;
}

int TlsLink::writeSocket(BIO* bio, const char* bytes, size_t size, size_t* written) {
  TlsLink& self = of(bio);
  self.error_ = self.socket_.sendAll({bytes, size}, self.deadline_);
  if (self.error_ != NetError::none) return 0;
  *written = size;
  return 1;
}

long TlsLink::control(BIO* /*bio*/, int command, long /*number*/, void* /*pointer*/) {
  return command == BIO_CTRL_FLUSH ? 1 : 0;  // nothing is kept back
}

NetError TlsLink::sendAll(std::string_view bytes, Clock::time_point deadline) {
  deadline_ = deadline;
  error_ = NetError::none;
  ERR_clear_error();
  size_t written = 0;
  if (SSL_write_ex(tls_.get(), bytes.data(), bytes.size(), &written) == 1) return NetError::none;
  return error_ != NetError::none ? error_ : NetError::failed;
}

// Takes all that is here: records may be small, and whoever asks may sleep between
// two questions.
NetError TlsLink::receive(uint8_t* to, size_t room, Clock::time_point deadline, size_t& got) {
  NetError error = read(to, room, deadline, got);
  size_t more = got;
  while (error == NetError::none && more != 0 && got < room) {
    error = read(to + got, room - got, Clock::time_point(), more);
    got += more;
  }
  // What is wrong now, the next call will see as well.
  return got != 0 ? NetError::none : error;
}

NetError TlsLink::read(uint8_t* to, size_t room, Clock::time_point deadline, size_t& got) {
  got = 0;
  if (interrupt_.isSet()) return NetError::interrupted;
  deadline_ = deadline;
  error_ = NetError::none;
  ERR_clear_error();
  const int result = SSL_read_ex(tls_.get(), to, room, &got);
  if (result == 1) return NetError::none;
  got = 0;
  if (error_ != NetError::none) return error_;
  // Many radio servers close without TLS's own end, and whoever cuts a stream gains
  // nothing by it: it is asked for again, as after any other end.
  const bool closed = ended_ || SSL_get_error(tls_.get(), result) == SSL_ERROR_ZERO_RETURN;
  return closed ? NetError::none : NetError::failed;
}

}  // namespace

OpenedSource openHttps(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                       const Asking& asking) {
  return openOver(std::make_unique<TlsLink>(url.host, interrupt), url, interrupt, status, asking);
}

}  // namespace engine
