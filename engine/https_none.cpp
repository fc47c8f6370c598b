#include "engine/byte_source.h"

namespace engine {

OpenedSource openHttps(const Url& /*url*/, const Interrupt& /*interrupt*/,
                       const StatusSink& /*status*/, const ByteRange& /*range*/) {
  return {nullptr, NetError::unsupported};
}

}  // namespace engine
