// Registers a type that is generated from IDL and one that is not.

#include <cstdio>
#include <string>

#include <zemtra/participant.hpp>
#include <zemtra/type_traits.hpp>

#include "greeting.h"

namespace consumer {

struct Answer {
  std::string text;
};

}  // namespace consumer

int main() {
  zemtra::Participant participant;
  std::printf("%s %s\n", zemtra::dds_type_traits<consumer::Greeting>::register_type(nullptr, participant),
              zemtra::dds_type_traits<consumer::Answer>::register_type(nullptr, participant));
}
