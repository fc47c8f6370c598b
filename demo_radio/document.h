#pragma once

#include <string>

#include "demo_radio/habits.h"
#include "demo_radio/socket.h"

namespace demo_radio {

/// An answer that has an end.
struct Document {
  int status = 200;
  std::string type = "text/html";
  std::string body;
  std::string location;  ///< where a 302 leads
};

/// Sends it with the habits. True when the connection can take another request.
bool sendDocument(Socket& socket, const Document& document, const Habits& habits, bool keep_alive);

/// Sends bytes slowly, in ten portions a second. False when the client left.
bool drip(Socket& socket, std::string_view bytes, int bytes_per_second);

/// Reproducible bytes that are nothing.
std::string noise(std::size_t size);

}  // namespace demo_radio
