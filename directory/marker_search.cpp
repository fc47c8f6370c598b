#include "directory/marker_search.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "base/text.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace directory {
namespace {

// The marker's hyphen is rare in a page and has no other case.
constexpr std::size_t kHyphen = kMarker.find('-');

bool markerAt(const char* text) {
  return std::equal(kMarker.begin(), kMarker.end(), text,
                    [](char want, char have) { return base::lower(have) == want; });
}

// `last` is the highest position where a marker could begin.
std::size_t findByHyphen(const char* text, std::size_t from, std::size_t last) {
  while (from <= last) {
    const void* hyphen = std::memchr(text + from + kHyphen, '-', last - from + 1);
    if (hyphen == nullptr) break;
    const std::size_t at =
        static_cast<std::size_t>(static_cast<const char*>(hyphen) - text) - kHyphen;
    if (markerAt(text + at)) return at;
    from = at + 1;
  }
  return std::string_view::npos;
}

#ifdef __SSE2__
constexpr std::size_t kVector = sizeof(__m128i);
constexpr std::size_t kBlock = 4 * kVector;

// For each of the 16 positions from `text` on: all bits set where the marker's
// first letter and its hyphen are both in place.
__m128i candidates(const char* text) {
  const auto load = [](const char* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  };
  const __m128i letters = _mm_or_si128(load(text), _mm_set1_epi8(0x20));  // lower case
  const __m128i first = _mm_cmpeq_epi8(letters, _mm_set1_epi8(kMarker.front()));
  return _mm_and_si128(first, _mm_cmpeq_epi8(load(text + kHyphen), _mm_set1_epi8('-')));
}

// The first position in the 64 from `text` on where the marker stands, else 64.
std::size_t findInBlock(const char* text) {
  for (std::size_t part = 0; part < kBlock; part += kVector) {
    auto mask = static_cast<unsigned>(_mm_movemask_epi8(candidates(text + part)));
    for (; mask != 0; mask &= mask - 1) {
      const std::size_t at = part + static_cast<std::size_t>(std::countr_zero(mask));
      if (markerAt(text + at)) return at;
    }
  }
  return kBlock;
}
#endif

}  // namespace

std::size_t findMarker(std::string_view page, std::size_t from) {
  if (page.size() < kMarker.size()) return page.npos;
  const char* const text = page.data();
  const std::size_t last = page.size() - kMarker.size();
#ifdef __SSE2__
  // The last candidate of a block must leave room for the whole marker.
  for (; from + kBlock <= last + 1; from += kBlock) {
    const char* const block = text + from;
    const __m128i any = _mm_or_si128(
        _mm_or_si128(candidates(block), candidates(block + kVector)),
        _mm_or_si128(candidates(block + 2 * kVector), candidates(block + 3 * kVector)));
    if (_mm_movemask_epi8(any) == 0) continue;
    const std::size_t at = findInBlock(block);
    if (at < kBlock) return from + at;
  }
#endif
  return findByHyphen(text, from, last);
}

}  // namespace directory
