#include "requestreply/memory_calls.hpp"

#include <dlfcn.h>
#include <dds/memory.hpp>
#include <dds/sample_info.hpp>
#include <dds/write_params.hpp>

#include <utility>

namespace requestreply_test {
namespace {

thread_local MemoryCalls* current = nullptr;

/// Carries a call out, noting it unless another one makes it.
template <class Function, class... Arguments>
auto pass_on(const char* symbol, const char* name, Arguments... arguments) {
  MemoryCalls* const observer = std::exchange(current, nullptr);
  if (observer != nullptr) { observer->note(name); }
  struct Restore {
    ~Restore() { current = observer; }
    MemoryCalls* observer;
  } const restore{observer};
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol))(arguments...);
}

bool fails_now(bool allocates) { return allocates && current != nullptr && current->fails_now(); }

void count(bool made, bool released) {
  if (current != nullptr) { current->count(made, released); }
}

}  // namespace

MemoryCalls::MemoryCalls(int failing) : outer_(std::exchange(current, this)), failing_(failing) {}
MemoryCalls::~MemoryCalls() { current = outer_; }

}  // namespace requestreply_test

using requestreply_test::count;
using requestreply_test::fails_now;
using requestreply_test::pass_on;

char* DDS_String_replace(char** target, const char* source) {
  const bool released = *target != nullptr;
  if (fails_now(source != nullptr)) { source = nullptr; }
  char* copy = pass_on<char*(char**, const char*)>("_Z18DDS_String_replacePPcPKc", "replace", target, source);
  count(copy != nullptr, released);
  return copy;
}

void DDS_String_free(char* string) {
  count(false, string != nullptr);
  pass_on<void(char*)>("_Z15DDS_String_freePc", "free_string", string);
}

DDS_Octet* DDS_OctetBuffer_dup(const DDS_Octet* buffer, std::size_t size) {
  if (fails_now(buffer != nullptr)) { buffer = nullptr; }
  auto* copy = pass_on<DDS_Octet*(const DDS_Octet*, std::size_t)>("_Z19DDS_OctetBuffer_dupPKhm", "dup", buffer, size);
  count(copy != nullptr, false);
  return copy;
}

void DDS_OctetBuffer_free(DDS_Octet* buffer) {
  count(false, buffer != nullptr);
  pass_on<void(DDS_Octet*)>("_Z20DDS_OctetBuffer_freePh", "free_octets", buffer);
}

void DDS_SampleInfo_initialize(DDS_SampleInfo* info) {
  pass_on<void(DDS_SampleInfo*)>("_Z25DDS_SampleInfo_initializeP14DDS_SampleInfo", "initialize", info);
}

void DDS_SampleInfo_copy(DDS_SampleInfo* destination, const DDS_SampleInfo* source) {
  pass_on<void(DDS_SampleInfo*, const DDS_SampleInfo*)>("_Z19DDS_SampleInfo_copyP14DDS_SampleInfoPKS_", "copy",
                                                        destination, source);
}

void DDS_SampleInfo_finalize(DDS_SampleInfo* info) {
  pass_on<void(DDS_SampleInfo*)>("_Z23DDS_SampleInfo_finalizeP14DDS_SampleInfo", "finalize", info);
}

void DDS_WriteParams_t_initialize(DDS_WriteParams_t* params) {
  pass_on<void(DDS_WriteParams_t*)>("_Z28DDS_WriteParams_t_initializeP17DDS_WriteParams_t", "initialize", params);
}

DDS_ReturnCode_t DDS_WriteParams_t_copy(DDS_WriteParams_t* destination, const DDS_WriteParams_t* source) {
  if (fails_now(source->cookie.value.length() > 0)) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  return pass_on<DDS_ReturnCode_t(DDS_WriteParams_t*, const DDS_WriteParams_t*)>(
      "_Z22DDS_WriteParams_t_copyP17DDS_WriteParams_tPKS_", "copy", destination, source);
}

// The destructor of write parameters counts as this.
void DDS_WriteParams_t_finalize(DDS_WriteParams_t* params) {
  pass_on<void(DDS_WriteParams_t*)>("_Z26DDS_WriteParams_t_finalizeP17DDS_WriteParams_t", "finalize", params);
}

DDS_WriteParams_t::~DDS_WriteParams_t() { DDS_WriteParams_t_finalize(this); }
