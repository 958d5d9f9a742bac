// Streams an input file line by line, with the line number for messages.
// Lines are cut at 255 columns and lose their line end (also a DOS "\r").
// The file is seen through a window of the page cache mapped into memory,
// moved along the file, so that no byte is copied and memory stays bounded.
#pragma once

#include <string>
#include <string_view>

namespace quintor {

class LineReader {
 public:
  static constexpr size_t kMaxColumns = 255;

  LineReader() = default;
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  ~LineReader();

  bool Open(const std::string& path);  // false when it can not be opened or is no regular file
  void Close();
  bool IsOpen() const { return fd_ >= 0; }
  const std::string& Path() const { return path_; }

  // Next line; false at the end of the file. The view stays valid until the
  // next call.
  bool Next(std::string_view& line);
  // Skips n lines; false when the file ended first.
  bool Skip(int n);
  void Rewind();
  long LineNumber() const { return lineNo_; }
  long long BytesRead() const { return consumed_; }

 private:
  bool Fill();

  void Unmap();

  int fd_ = -1;
  std::string path_;
  long long size_ = 0;       // of the file
  long long windowAt_ = 0;   // file offset of the next window
  const char* data_ = nullptr;
  void* map_ = nullptr;
  size_t mapLen_ = 0;
  size_t begin_ = 0, end_ = 0;
  bool eof_ = false;
  std::string long_;     // a line that spans buffer refills
  long lineNo_ = 0;
  long long consumed_ = 0;
};

}  // namespace quintor
