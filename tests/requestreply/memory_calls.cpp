#include "requestreply/memory_calls.hpp"

#include <dds/memory.hpp>
#include <dds/sample_info.hpp>
#include <dds/write_params.hpp>

#include <utility>

#include "support/next.hpp"

namespace requestreply_test {
namespace {

thread_local MemoryCalls* current = nullptr;

/// Carries a call out, noting it unless another one makes it.
template <auto stand_in, class... Arguments>
auto pass_on(const char* name, Arguments... arguments) {
  MemoryCalls* const observer = std::exchange(current, nullptr);
  if (observer != nullptr) { observer->note(name); }
  struct Restore {
    ~Restore() { current = observer; }
    MemoryCalls* observer;
  } const restore{observer};
  return support::next<stand_in>()(arguments...);
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
  char* copy = pass_on<&DDS_String_replace>("replace", target, source);
  count(copy != nullptr, released);
  return copy;
}

void DDS_String_free(char* string) {
  count(false, string != nullptr);
  pass_on<&DDS_String_free>("free_string", string);
}

DDS_Octet* DDS_OctetBuffer_dup(const DDS_Octet* buffer, std::size_t size) {
  if (fails_now(buffer != nullptr)) { buffer = nullptr; }
  auto* copy = pass_on<&DDS_OctetBuffer_dup>("dup", buffer, size);
  count(copy != nullptr, false);
  return copy;
}

void DDS_OctetBuffer_free(DDS_Octet* buffer) {
  count(false, buffer != nullptr);
  pass_on<&DDS_OctetBuffer_free>("free_octets", buffer);
}

void DDS_SampleInfo_initialize(DDS_SampleInfo* info) { pass_on<&DDS_SampleInfo_initialize>("initialize", info); }

void DDS_SampleInfo_copy(DDS_SampleInfo* destination, const DDS_SampleInfo* source) {
  pass_on<&DDS_SampleInfo_copy>("copy", destination, source);
}

void DDS_SampleInfo_finalize(DDS_SampleInfo* info) { pass_on<&DDS_SampleInfo_finalize>("finalize", info); }

void DDS_WriteParams_t_initialize(DDS_WriteParams_t* params) {
  pass_on<&DDS_WriteParams_t_initialize>("initialize", params);
}

DDS_ReturnCode_t DDS_WriteParams_t_copy(DDS_WriteParams_t* destination, const DDS_WriteParams_t* source) {
  if (fails_now(source->cookie.value.length() > 0)) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  return pass_on<&DDS_WriteParams_t_copy>("copy", destination, source);
}

// The destructor of write parameters counts as this.
void DDS_WriteParams_t_finalize(DDS_WriteParams_t* params) { pass_on<&DDS_WriteParams_t_finalize>("finalize", params); }

DDS_WriteParams_t::~DDS_WriteParams_t() { DDS_WriteParams_t_finalize(this); }
