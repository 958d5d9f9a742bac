#include "io/file_names.h"

#include "io/fortran_io.h"

namespace quintor {

namespace {
size_t LastComponentStart(std::string_view name) {
  size_t slash = name.find_last_of('/');
  return slash == std::string_view::npos ? 0 : slash + 1;
}
}  // namespace

std::string ReplaceExtension(bool append, std::string_view name, std::string_view ext) {
  std::string result(TrimRight(name));
  size_t start = LastComponentStart(result);
  size_t dot = result.find_last_of('.');
  size_t at;
  if (dot != std::string::npos && dot >= start) at = dot;
  else if (append) at = result.size();
  else return result;
  for (size_t i = 0; i < ext.size(); ++i) {
    if (at + i < result.size()) result[at + i] = ext[i];
    else result.push_back(ext[i]);
  }
  return result;
}

std::string BaseName(std::string_view name) {
  name = TrimRight(name);
  size_t start = LastComponentStart(name);
  size_t dot = name.find('.', start);
  if (dot == std::string_view::npos) return {};
  size_t position = dot - start + 1;  // 1-based within the component
  if (position < 2 || position > 133) return {};
  return std::string(name.substr(0, dot));
}

std::string WithExtension(std::string_view name, std::string_view ext) {
  std::string result(TrimRight(name));
  const size_t start = LastComponentStart(result);
  const size_t dot = result.find_last_of('.');
  if (dot != std::string::npos && dot >= start) result.erase(dot);
  return result + std::string(ext);
}

std::string DerivedName(std::string_view inputName, std::string_view ext) {
  std::string name = WithExtension(inputName, ext);
  if (name == TrimRight(inputName)) name += "1";
  return name;
}

}  // namespace quintor
