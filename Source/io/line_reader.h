// Streams an input file line by line, with the line number for messages.
// Lines are cut at 255 columns and lose their line end (also a DOS "\r").
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

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
  bool IsOpen() const { return file_ != nullptr; }
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

  std::FILE* file_ = nullptr;
  std::string path_;
  std::vector<char> buf_;
  size_t begin_ = 0, end_ = 0;
  bool eof_ = false;
  std::string long_;     // a line that spans buffer refills
  long lineNo_ = 0;
  long long consumed_ = 0;
};

}  // namespace quintor
