#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "end_to_end/two_sides.hpp"
#include "ends.hpp"
#include "support/await.hpp"
#include "support/log_recorder.hpp"
#include "support/thread.hpp"

namespace typed {

using namespace std::chrono_literals;
using support::Thread;

class TypedService : public end_to_end::TwoSides {
 protected:
  using Requester = zemtra::Requester<Question, Answer>;
  using Replier = zemtra::Replier<Question, Answer>;
  using HandlerReplier = zemtra::HandlerReplier<Question, Answer>;

  Requester make_requester() { return {participant(), "Calc"}; }
  Replier make_replier() { return {participant(), "Calc"}; }
  template <class... Arguments>
  HandlerReplier make_handler_replier(Arguments... arguments) {
    return {participant(), "Calc", std::move(arguments)...};
  }
  std::unique_ptr<OtherRequester> make_other_requester() {
    return make_other([](auto&& where) { return create_requester(where); });
  }
  std::unique_ptr<OtherReplier> make_other_replier(const ReplierKind& kind = {}) {
    return make_other([&kind](auto&& where) { return create_replier(where, kind); });
  }
};

}  // namespace typed
