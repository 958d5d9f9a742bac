#include "io/main_log.h"

#include <filesystem>
#include <utility>

namespace quintor {

MainLog::~MainLog() { Close(); }

MainLog::MainLog(MainLog&& other) noexcept
    : file_(std::exchange(other.file_, nullptr)),
      path_(std::move(other.path_)),
      lineOpen_(other.lineOpen_),
      pending_(std::move(other.pending_)),
      warnings_(std::move(other.warnings_)) {}

MainLog& MainLog::operator=(MainLog&& other) noexcept {
  if (this == &other) return *this;
  Close();
  file_ = std::exchange(other.file_, nullptr);
  path_ = std::move(other.path_);
  lineOpen_ = other.lineOpen_;
  pending_ = std::move(other.pending_);
  warnings_ = std::move(other.warnings_);
  return *this;
}

bool MainLog::Open(const std::string& path) {
  Close();
  file_ = std::fopen(path.c_str(), "w");
  if (!file_) return false;
  path_ = path;
  lineOpen_ = false;
  return true;
}

void MainLog::Text(std::string_view text) {
  if (!file_) {
    pending_ += text;
    return;
  }
  if (!text.empty()) std::fwrite(text.data(), 1, text.size(), file_);
  lineOpen_ = true;
}

void MainLog::Line(std::string_view text) {
  if (text.rfind(" WARNING", 0) == 0) warnings_.emplace_back(text);
  if (!file_) {
    pending_ += text;
    pending_ += '\n';
    return;
  }
  if (!text.empty()) std::fwrite(text.data(), 1, text.size(), file_);
  std::fputc('\n', file_);
  lineOpen_ = false;
}

void MainLog::EndLine() {
  if (lineOpen_) Line();
}

void MainLog::WritePending() {
  if (!file_ || pending_.empty()) return;
  std::fwrite(pending_.data(), 1, pending_.size(), file_);
  pending_.clear();
}

void MainLog::Flush() {
  if (file_) std::fflush(file_);
}

void MainLog::Close(bool remove) {
  if (!file_) return;
  EndLine();
  std::fclose(file_);
  file_ = nullptr;
  if (remove) {
    std::error_code ec;
    std::filesystem::remove(path_, ec);
  }
}

}  // namespace quintor
