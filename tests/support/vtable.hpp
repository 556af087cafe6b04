#pragma once

#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace support {

/// The demangled name of the function in a slot of the object's first virtual table, without its parameters. A virtual
/// destructor takes two slots.
inline std::string virtual_function(const void* object, int slot) {
  void* const* const table = *static_cast<void* const* const*>(object);
  Dl_info info;
  if (dladdr(table[slot], &info) == 0 || info.dli_saddr != table[slot]) { return "(not exported)"; }
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status),
                                                         &std::free);
  const std::string full = status == 0 ? name.get() : info.dli_sname;
  return full.substr(0, full.find('('));
}

}  // namespace support
