#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

// Code that is generated from IDL includes this for its bounded strings.

namespace eprosima {
namespace fastrtps {

/// A string of at most `N` characters. A longer one is refused with `std::length_error`.
template <std::size_t N>
class fixed_string {
 public:
  static constexpr std::size_t max_size = N;

  fixed_string() = default;
  fixed_string(std::string_view text) : text_(checked(text)) {}
  fixed_string(const std::string& text) : fixed_string(std::string_view(text)) {}
  fixed_string(const char* text) : fixed_string(std::string_view(text)) {}
  fixed_string& operator=(std::string_view text) {
    text_ = checked(text);
    return *this;
  }
  fixed_string& operator=(const std::string& text) { return *this = std::string_view(text); }
  fixed_string& operator=(const char* text) { return *this = std::string_view(text); }

  const char* c_str() const noexcept { return text_.c_str(); }
  std::size_t size() const noexcept { return text_.size(); }
  bool empty() const noexcept { return text_.empty(); }
  const std::string& to_string() const noexcept { return text_; }
  operator std::string_view() const noexcept { return text_; }

  /// For Fast CDR, when the string is an element of something.
  template <class Cdr>
  void serialize(Cdr& cdr) const {
    cdr << text_.c_str();
  }

  friend bool operator==(const fixed_string& a, const fixed_string& b) noexcept { return a.text_ == b.text_; }
  friend bool operator!=(const fixed_string& a, const fixed_string& b) noexcept { return a.text_ != b.text_; }
  friend bool operator<(const fixed_string& a, const fixed_string& b) noexcept { return a.text_ < b.text_; }

 private:
  static std::string_view checked(std::string_view text) {
    if (text.size() > N) { throw std::length_error("too long for a bounded string"); }
    return text;
  }

  std::string text_;
};

}  // namespace fastrtps
}  // namespace eprosima
