#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace zemtra {

/// The text of a loaned string, which stays where it is; valid until the loan is given back. It is copied when it is
/// converted to a std::string, and only then. The text of a sample without data is empty.
class StringData {
 public:
  StringData() noexcept = default;
  /// Null is taken for the empty string.
  explicit StringData(const char* string) noexcept : string_(string != nullptr ? string : "") {}

  /// Never null.
  const char* c_str() const noexcept { return string_; }
  std::string_view view() const noexcept { return string_; }
  /// Counts the characters, up to the first NUL.
  std::size_t size() const noexcept { return view().size(); }
  bool empty() const noexcept { return *string_ == '\0'; }
  operator std::string() const { return str(); }
  std::string str() const { return std::string(string_); }

  friend bool operator==(StringData a, StringData b) noexcept { return a.view() == b.view(); }
  friend bool operator!=(StringData a, StringData b) noexcept { return a.view() != b.view(); }
  friend bool operator==(StringData a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator!=(StringData a, std::string_view b) noexcept { return a.view() != b; }
  friend bool operator==(std::string_view a, StringData b) noexcept { return a == b.view(); }
  friend bool operator!=(std::string_view a, StringData b) noexcept { return a != b.view(); }
  template <class Traits>
  friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out, StringData text) {
    return out << text.string_;
  }

 private:
  const char* string_ = "";  // not owned
};

}  // namespace zemtra
