// The line scan of the line-driven readers. Every anchor of a reader holds
// one of a few key characters; a line is scanned once for them, sixteen
// characters at a time, and only around a key character is the text compared
// with the anchors that carry it there. An anchor stands in the line exactly
// when it stands around one of its key characters, so this is the plain
// substring search, done in one pass without allocation.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace quintor {

class KeyChars {
 public:
  // Up to five key characters; the id of keys[i] is i + 1, 0 for any other.
  constexpr explicit KeyChars(std::string_view keys) {
    for (size_t i = 0; i < keys.size() && i < keys_.size(); ++i) {
      keys_[i] = static_cast<unsigned char>(keys[i]);
      id_[keys_[i]] = static_cast<unsigned char>(i + 1);
      count_ = i + 1;
    }
    for (size_t i = count_; i < keys_.size(); ++i) keys_[i] = keys_[0];  // repeats find nothing new
  }
  int Id(char c) const { return id_[static_cast<unsigned char>(c)]; }
  unsigned char Key(size_t i) const { return keys_[i]; }

 private:
  std::array<unsigned char, 256> id_{};
  std::array<unsigned char, 5> keys_{};
  size_t count_ = 0;
};

// Calls at(p, id) for every key character of the line, in order. Sixteen
// characters are compared with the keys at once, and only the positions that
// hit are visited.
template <class AtKey>
void ForEachKey(std::string_view line, const KeyChars& keys, AtKey&& at) {
  const size_t n = line.size();
  size_t p = 0;
#if defined(__SSE2__)
  const __m128i k0 = _mm_set1_epi8(static_cast<char>(keys.Key(0)));
  const __m128i k1 = _mm_set1_epi8(static_cast<char>(keys.Key(1)));
  const __m128i k2 = _mm_set1_epi8(static_cast<char>(keys.Key(2)));
  const __m128i k3 = _mm_set1_epi8(static_cast<char>(keys.Key(3)));
  const __m128i k4 = _mm_set1_epi8(static_cast<char>(keys.Key(4)));
  for (; p + 16 <= n; p += 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(line.data() + p));
    const __m128i hit = _mm_or_si128(
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, k0), _mm_cmpeq_epi8(v, k1)),
                     _mm_or_si128(_mm_cmpeq_epi8(v, k2), _mm_cmpeq_epi8(v, k3))),
        _mm_cmpeq_epi8(v, k4));
    for (unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(hit)); mask != 0; mask &= mask - 1) {
      const size_t k = p + static_cast<size_t>(__builtin_ctz(mask));
      at(k, keys.Id(line[k]));
    }
  }
#endif
  for (; p < n; ++p)
    if (int id = keys.Id(line[p])) at(p, id);
}

// Whether `anchor` stands in `line` with its character number `at` (0-based)
// at position p. The anchors are literals: their length is known when the
// code is compiled, and the comparison becomes a few word compares.
template <size_t N>
inline bool Around(std::string_view line, size_t p, const char (&anchor)[N], size_t at) {
  constexpr size_t n = N - 1;
  return p >= at && p - at + n <= line.size() && std::memcmp(line.data() + p - at, anchor, n) == 0;
}
// The same for an anchor chosen at run time.
inline bool AroundText(std::string_view line, size_t p, std::string_view anchor, size_t at) {
  return p >= at && p - at + anchor.size() <= line.size() && line.compare(p - at, anchor.size(), anchor) == 0;
}

}  // namespace quintor
