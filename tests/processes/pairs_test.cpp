#include <list>

#include "processes.hpp"

namespace processes {

namespace {

constexpr int kAtOnce = 4;

struct Beginning {
  const char* name;
  const char* option;
};
void PrintTo(const Beginning& each, std::ostream* out) { *out << each.name; }

/// Fresh processes, started at the same moment. The requester sends its one request as soon as it can.
class FreshPair : public ProcessTest, public ::testing::WithParamInterface<Beginning> {};

TEST_P(FreshPair, LosesNoReply) {
  const int count = repetitions(20, 1000);
  for (int i = 0; i < count; i += kAtOnce) {
    std::list<Child> requesters, repliers;
    for (int k = 0; k < kAtOnce; ++k) {
      const std::string name = "service=" + service() + '_' + std::to_string(k);
      // Whoever is started first is not always ready first, but often.
      const bool replier_first = (i / kAtOnce + k) % 2 == 0;
      if (replier_first) { repliers.push_back(start("replier", {name})); }
      requesters.push_back(start("requester", {name, "count=1", std::string("begin=") + GetParam().option}));
      if (!replier_first) { repliers.push_back(start("replier", {name})); }
    }
    for (Child& requester : requesters) {
      EXPECT_EQ(requester.await("done"), "1 1 0");
      requester.finish();
    }
    for (Child& replier : repliers) { replier.finish(); }
    support::extend_watchdog();
  }
}

INSTANTIATE_TEST_SUITE_P(When, FreshPair,
                         ::testing::Values(Beginning{"TheServiceIsThere", "service"},
                                           Beginning{"TheRequestWriterIsMatched", "writer"}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace

}  // namespace processes
