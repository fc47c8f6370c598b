#pragma once

#include <string>

#include "engine/net/byte_source.h"

namespace engine {

/// The whole document at an address, of at most `limit` bytes; `url` becomes the
/// address that it was found at. Larger ones fail as of a wrong format.
NetError fetchDocument(Url& url, const Interrupt& interrupt, size_t limit, std::string& document);

/// Reads on to the end of an open answer, within time and limit.
NetError readDocument(ByteSource& source, size_t limit, std::string& document);

}  // namespace engine
