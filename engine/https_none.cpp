#include "engine/byte_source.h"

namespace engine {

OpenedSource openHttps(const Url& /*url*/, const Interrupt& /*interrupt*/,
                       const StatusSink& /*status*/, uint64_t /*from*/) {
  return {nullptr, NetError::unsupported};
}

}  // namespace engine
