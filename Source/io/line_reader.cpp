#include "io/line_reader.h"

#include <sys/stat.h>

#include <cstring>

namespace quintor {

namespace {
constexpr size_t kBuffer = 1 << 20;

std::string_view Clean(std::string_view s) {
  if (!s.empty() && s.back() == '\r') s.remove_suffix(1);
  if (s.size() > LineReader::kMaxColumns) s = s.substr(0, LineReader::kMaxColumns);
  return s;
}
}  // namespace

LineReader::~LineReader() { Close(); }

bool LineReader::Open(const std::string& path) {
  Close();
  file_ = std::fopen(path.c_str(), "rb");
  if (!file_) return false;
  // Only regular files: a directory, a device or a pipe could end nowhere.
  struct stat st {};
  if (::fstat(::fileno(file_), &st) != 0 || !S_ISREG(st.st_mode)) {
    Close();
    return false;
  }
  path_ = path;
  buf_.resize(kBuffer);
  Rewind();
  return true;
}

void LineReader::Close() {
  if (file_) std::fclose(file_);
  file_ = nullptr;
}

void LineReader::Rewind() {
  if (!file_) return;
  std::rewind(file_);
  begin_ = end_ = 0;
  eof_ = false;
  lineNo_ = 0;
  consumed_ = 0;
}

bool LineReader::Fill() {
  if (eof_ || !file_) return false;
  begin_ = 0;
  end_ = std::fread(buf_.data(), 1, buf_.size(), file_);
  if (end_ == 0) eof_ = true;
  return end_ > 0;
}

bool LineReader::Next(std::string_view& line) {
  if (!file_) return false;
  long_.clear();
  bool spanned = false;
  for (;;) {
    if (begin_ == end_ && !Fill()) {
      if (!spanned) return false;  // nothing left at all
      ++lineNo_;
      line = Clean(long_);         // last line without a line end
      return true;
    }
    const char* start = buf_.data() + begin_;
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
