#pragma once

#include <string>
#include <utility>
#include <vector>

#include <requestreply/requestreply.hpp>

#include "replier.hpp"
#include "strings.hpp"
#include "support/dds_values.hpp"
#include "support/thread.hpp"
#include "two_sides.hpp"

namespace end_to_end {

using support::milliseconds;
using support::Thread;
using Strings = std::vector<std::string>;

/// A front end to a requester, as thin as a typed one.
class Requester : public zemtra::details::RequesterUntypedImpl {
 public:
  explicit Requester(const zemtra::RequesterParams& params)
      : RequesterUntypedImpl(params, &register_strings, &register_strings, sizeof(char*), false) {}

  DDS_SampleIdentity_t send(const std::string& text) {
    DDS_WriteParams_t write_params;
    const char* sample = text.c_str();
    send_sample(&sample, write_params);
    return write_params.identity;
  }
  Strings take(const DDS_SampleIdentity_t& request) {
    void** data = nullptr;
    int count = 0;
    DDS_SampleInfoSeq infos;
    get_reply_loaned(&data, &count, infos, DDS_LENGTH_UNLIMITED, request, true);
    Strings result;
    for (int i = 0; i < count; ++i) {
      EXPECT_TRUE(infos[i].valid_data);
      result.push_back(text_of(data[i]));
    }
    if (count > 0) { return_loan(data, infos); }
    return result;
  }
  /// Waits for as many replies as it takes, then takes all that are there.
  Strings await(const DDS_SampleIdentity_t& request, int min_count = 1) {
    EXPECT_TRUE(wait_for_replies(DDS_DURATION_INFINITE, min_count, request));
    return take(request);
  }
};

class ServiceTest : public TwoSides {
 protected:
  zemtra::RequesterParams requester_params() { return zemtra::RequesterParams(participant()).service_name("Calc"); }
  std::unique_ptr<Replier> make_replier(const ReplierKind& kind = {}) {
    return make_other([&kind](auto&& where) { return create_replier(where, kind); });
  }
};

}  // namespace end_to_end
