#include "support/tag.hpp"

#include <cstdlib>
#include <cstring>
#include <iostream>

namespace bench {

std::uint64_t tag_of(const unsigned char* octets) {
  std::uint64_t tag = 0;
  std::memcpy(&tag, octets, sizeof tag);
  return tag;
}

void check_tag(std::uint64_t tag, std::uint64_t expected) {
  if (tag == expected) { return; }
  std::cerr << "tag " << tag << " in place of " << expected << '\n';
  fail("a round trip went wrong");
}

void fail(const char* reason) {
  std::cerr << "benchmark failed: " << reason << std::endl;
  std::_Exit(EXIT_FAILURE);
}

}  // namespace bench
