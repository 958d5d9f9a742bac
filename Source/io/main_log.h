// The MainLog (".mou"): every report of the run goes here, line by line.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace quintor {

class MainLog {
 public:
  MainLog() = default;
  MainLog(const MainLog&) = delete;
  MainLog& operator=(const MainLog&) = delete;
  // A new session takes a fresh log in place of the closed one.
  MainLog(MainLog&& other) noexcept;
  MainLog& operator=(MainLog&& other) noexcept;
  ~MainLog();

  bool Open(const std::string& path);   // false when the file can not be created
  bool IsOpen() const { return file_ != nullptr; }
  const std::string& Path() const { return path_; }

  void Line(std::string_view text = {});  // text and a line end
  void Text(std::string_view text);       // text, the line stays open
  void EndLine();                         // ends an open line, if any
  void Flush();
  // Text written before the file was opened (start-up messages) is kept and
  // written here, at the place the run chooses.
  void WritePending();
  // Closes the file; with `remove` the file is deleted (the /NOLOG scratch log).
  void Close(bool remove = false);
  // The lines written that begin " WARNING", in order, for the results a
  // script reads.
  const std::vector<std::string>& Warnings() const { return warnings_; }
  const std::string& FirstWarning() const {
    static const std::string none;
    return warnings_.empty() ? none : warnings_.front();
  }

 private:
  std::FILE* file_ = nullptr;
  std::string path_;
  bool lineOpen_ = false;
  std::string pending_;
  std::vector<std::string> warnings_;
};

}  // namespace quintor
