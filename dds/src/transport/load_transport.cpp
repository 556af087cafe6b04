#include "transport/load_transport.hpp"

#include <dlfcn.h>

#include <cstring>
#include <string>

#include "in_process/in_process_transport.hpp"
#include "log/log.hpp"
#include "util/mutex.hpp"

namespace dds {

namespace {

constexpr char kObject[] = "libzemtra_dds_rtps.so";

// Beside the shared object that this code is in: what was built together is used together.
std::string path_of_object() {
  Dl_info here{};
  if (dladdr(reinterpret_cast<const void*>(&path_of_object), &here) == 0 || here.dli_fname == nullptr) {
    return kObject;
  }
  const std::string own = here.dli_fname;
  const std::size_t slash = own.rfind('/');
  return slash == std::string::npos ? kObject : own.substr(0, slash + 1) + kObject;
}

// The object stays loaded: threads and objects of it may outlive the participants.
MakeTransport* load(const char* context) {
  static Mutex mutex;
  static MakeTransport* loaded = nullptr;
  const MutexLock lock(mutex);
  if (loaded != nullptr) { return loaded; }
  void* object = dlopen(path_of_object().c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  void* symbol = object == nullptr ? nullptr : dlsym(object, "zemtra_dds_make_transport");
  if (symbol == nullptr) {
    DDS_LOG_FAILURE(context, QVX_LOG_CREATION_FAILURE_s,
                    "transport \"rtps\": install %s beside libzemtra_dds.so, and Debian's package libddsc0debian (%s)",
                    kObject, dlerror());  // NOLINT(concurrency-mt-unsafe): glibc's is thread-safe
    return nullptr;
  }
  loaded = reinterpret_cast<MakeTransport*>(symbol);
  return loaded;
}

}  // namespace

std::unique_ptr<Transport> make_transport(DDS_DomainId_t domain, const DDS_DomainParticipantQos& qos,
                                          const char* context) {
  const DDS_Property_t* chosen = DDSPropertyQosPolicyHelper::lookup_property(qos.property, "dds.transport");
  if (chosen == nullptr || std::strcmp(chosen->value, "in_process") == 0) {
    return std::make_unique<InProcessTransport>();
  }
  MakeTransport* make = load(context);
  return std::unique_ptr<Transport>(make == nullptr ? nullptr : make(domain, qos, context));
}

}  // namespace dds
