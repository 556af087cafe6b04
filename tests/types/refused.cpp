// A request with a member of the type MEMBER, which is not carried, or REQUEST itself if that is defined.

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <zemtra/type_traits.hpp>

namespace calculator {

enum Open { open };
struct Empty {};
struct Inner {
  std::string text;
  char name[20];
};
class Closed {
  int value_;
};

#ifdef REQUEST
using Request = REQUEST;
#else
struct Request {
  std::string first;
  MEMBER;
  int last;
};
#endif

}  // namespace calculator

const char* const name = zemtra::dds_type_traits<calculator::Request>::register_type(nullptr, nullptr);
