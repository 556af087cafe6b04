#include "text.hpp"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>

std::string read_text(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) { throw std::runtime_error("cannot read " + path + ": " + std::generic_category().message(errno)); }
  std::string text;
  try {
    text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  } catch (const std::ios_base::failure& fault) {
    throw std::runtime_error("cannot read " + path + ": " + fault.what());
  }
  if (text.find('\0') != std::string::npos) { throw std::runtime_error(path + " is no text: it has a NUL character"); }
  return text;
}

std::vector<std::string> paragraphs_of(const std::string& text) {
  std::vector<std::string> paragraphs;
  std::string paragraph;
  const auto end_paragraph = [&] {
    if (!paragraph.empty()) { paragraphs.push_back(std::move(paragraph)); }
    paragraph.clear();
  };
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.find_first_not_of(" \t\r\f\v") == std::string::npos) {
      end_paragraph();
    } else {
      paragraph += line + '\n';
    }
  }
  end_paragraph();
  return paragraphs;
}

std::vector<std::string> default_files() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator("/usr/share/common-licenses")) {
    if (entry.is_regular_file() && !entry.is_symlink()) { files.push_back(entry.path().string()); }
  }
  std::sort(files.begin(), files.end());
  return files;
}
