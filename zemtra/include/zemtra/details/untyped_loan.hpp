#pragma once

#include <dds/sample_info.hpp>

namespace zemtra {
namespace details {

/// A loan on its way from the untyped core to a typed container; nothing was lent when `data` is null.
struct UntypedLoan {
  void** data = nullptr;
  int count = 0;
  DDS_SampleInfoSeq infos;
};

}  // namespace details
}  // namespace zemtra
