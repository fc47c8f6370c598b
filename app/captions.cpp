#include "app/captions.h"

#include <utility>

namespace app {

Captions::Captions() : texts_(englishCaptions()) {}

const std::string& Captions::get(std::string_view key) const {
  static const std::string none;
  const auto found = texts_.find(key);
  return found == texts_.end() ? none : found->second;
}

void Captions::set(std::string_view key, std::string text) {
  const auto place = texts_.insert_or_assign(std::string(key), std::move(text)).first;
  for (const auto& [id, listener] : listeners_) listener(place->first);
}

int Captions::listen(Listener listener) {
  listeners_.emplace(next_listener_, std::move(listener));
  return next_listener_++;
}

void Captions::forget(int listener) {
  listeners_.erase(listener);
}

}  // namespace app
