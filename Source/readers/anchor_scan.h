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
  }
  int Id(char c) const { return id_[static_cast<unsigned char>(c)]; }

  // Whether any of the 16 characters at d is a key character.
  bool InChunk(const char* d) const {
#if defined(__GNUC__) || defined(__clang__)
    using Chunk = unsigned char __attribute__((vector_size(16)));
    Chunk v, m{};
    std::memcpy(&v, d, sizeof v);
    for (size_t i = 0; i < count_; ++i) {
      Chunk k;
      for (int j = 0; j < 16; ++j) k[j] = keys_[i];
      m |= (v == k);
    }
    std::uint64_t lo, hi;
    std::memcpy(&lo, &m, 8);
    std::memcpy(&hi, reinterpret_cast<const char*>(&m) + 8, 8);
    return (lo | hi) != 0;
#else
    for (int j = 0; j < 16; ++j)
      if (Id(d[j])) return true;
    return false;
#endif
  }

 private:
  std::array<unsigned char, 256> id_{};
  std::array<unsigned char, 5> keys_{};
  size_t count_ = 0;
};

// Calls at(p, id) for every key character of the line, in order.
template <class AtKey>
void ForEachKey(std::string_view line, const KeyChars& keys, AtKey&& at) {
  const size_t n = line.size();
  size_t p = 0;
  for (; p + 16 <= n; p += 16)
    if (keys.InChunk(line.data() + p))
      for (size_t k = p; k < p + 16; ++k)
        if (int id = keys.Id(line[k])) at(k, id);
  for (; p < n; ++p)
    if (int id = keys.Id(line[p])) at(p, id);
}

// Whether `anchor` stands in `line` with its character number `at` (0-based)
// at position p.
inline bool Around(std::string_view line, size_t p, std::string_view anchor, size_t at) {
  return p >= at && p - at + anchor.size() <= line.size() && line.compare(p - at, anchor.size(), anchor) == 0;
}

}  // namespace quintor
