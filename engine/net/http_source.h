#pragma once

#include "engine/net/byte_source.h"

namespace engine {

/// One answer over that link, which nobody has connected yet.
OpenedSource openOver(std::unique_ptr<Link> link, const Url& url, const Interrupt& interrupt,
                      const StatusSink& status, const Asking& asking);

}  // namespace engine
