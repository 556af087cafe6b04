#pragma once

#include <string>
#include <vector>

/// The content of a text file. Throws `std::runtime_error`, whose text names the file, when it cannot be read or is no
/// text (a message of the string type cannot carry a NUL character).
std::string read_text(const std::string& path);

/// The paragraphs of a text: runs of lines, separated by lines of white space.
std::vector<std::string> paragraphs_of(const std::string& text);

/// Texts that every Debian system has: the licenses in /usr/share/common-licenses.
std::vector<std::string> default_files();
