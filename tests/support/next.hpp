#pragma once

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace support {

/// The function that would have been called but for its stand-in in this program. It has the name under which the
/// program exports the stand-in, which may be a member function, but no virtual one.
template <auto stand_in>
auto next() {
  static const auto real = [] {
    auto function = stand_in;
    void* address = nullptr;
    std::memcpy(&address, &function, sizeof address);
    Dl_info info;
    void* found = dladdr(address, &info) != 0 && info.dli_saddr == address ? dlsym(RTLD_NEXT, info.dli_sname) : nullptr;
    if (found == nullptr) {
      std::fprintf(stderr, "nothing behind a stand-in\n");
      std::abort();
    }
    std::memcpy(static_cast<void*>(&function), &found, sizeof found);
    return function;
  }();
  return real;
}

}  // namespace support
