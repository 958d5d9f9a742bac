#include "io/line_reader.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include <cstring>

namespace quintor {

namespace {
// 4 MiB of the file at a time: large enough that moving the window costs
// nothing, small enough that the mapped pages stay few.
constexpr long long kWindow = 4LL << 20;

std::string_view Clean(std::string_view s) {
  if (!s.empty() && s.back() == '\r') s.remove_suffix(1);
  if (s.size() > LineReader::kMaxColumns) s = s.substr(0, LineReader::kMaxColumns);
  return s;
}
}  // namespace

LineReader::~LineReader() { Close(); }

bool LineReader::Open(const std::string& path) {
  Close();
  fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) return false;
  // Only regular files: a directory, a device or a pipe could end nowhere.
  struct stat st {};
  if (::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode)) {
    Close();
    return false;
  }
  path_ = path;
  size_ = st.st_size;
  Rewind();
  return true;
}

void LineReader::Unmap() {
  if (map_) ::munmap(map_, mapLen_);
  map_ = nullptr;
  data_ = nullptr;
  mapLen_ = 0;
}

void LineReader::Close() {
  Unmap();
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

void LineReader::Rewind() {
  if (fd_ < 0) return;
  Unmap();
  windowAt_ = 0;
  begin_ = end_ = 0;
  eof_ = false;
  lineNo_ = 0;
  consumed_ = 0;
}

bool LineReader::Fill() {
  if (eof_ || fd_ < 0) return false;
  Unmap();
  begin_ = end_ = 0;
  if (windowAt_ >= size_) {
    eof_ = true;
    return false;
  }
  const size_t len = static_cast<size_t>(std::min(kWindow, size_ - windowAt_));
  void* m = ::mmap(nullptr, len, PROT_READ, MAP_PRIVATE, fd_, static_cast<off_t>(windowAt_));
  if (m == MAP_FAILED) {  // as if the file ended here
    eof_ = true;
    return false;
  }
  ::madvise(m, len, MADV_SEQUENTIAL);
  ::madvise(m, len, MADV_WILLNEED);
  map_ = m;
  mapLen_ = len;
  data_ = static_cast<const char*>(m);
  end_ = len;
  windowAt_ += static_cast<long long>(len);
  return true;
}

bool LineReader::Next(std::string_view& line) {
  if (fd_ < 0) return false;
  long_.clear();
  bool spanned = false;
  for (;;) {
    if (begin_ == end_ && !Fill()) {
      if (!spanned) return false;  // nothing left at all
      ++lineNo_;
      line = Clean(long_);         // last line without a line end
      return true;
    }
    const char* start = data_ + begin_;
    const char* nl = static_cast<const char*>(std::memchr(start, '\n', end_ - begin_));
    if (nl) {
      size_t len = static_cast<size_t>(nl - start);
      begin_ += len + 1;
      consumed_ += static_cast<long long>(len + 1);
      ++lineNo_;
      if (!spanned) {
        line = Clean(std::string_view(start, len));
      } else {
        if (long_.size() < 2 * kMaxColumns) long_.append(start, len);
        line = Clean(long_);
      }
      return true;
    }
    // The line goes on past the buffer: keep only what a reader can see.
    size_t len = end_ - begin_;
    if (long_.size() < 2 * kMaxColumns) long_.append(start, std::min(len, 2 * kMaxColumns));
    consumed_ += static_cast<long long>(len);
    begin_ = end_;
    spanned = true;
  }
}

bool LineReader::Skip(int n) {
  std::string_view line;
  for (int i = 0; i < n; ++i)
    if (!Next(line)) return false;
  return true;
}

}  // namespace quintor
