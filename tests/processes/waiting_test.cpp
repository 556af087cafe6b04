#include <csignal>
#include <cstdio>

#include "processes.hpp"

namespace processes {

namespace {

/// Writers with several threads, and readers in other processes that do not take.
class Waiting : public ProcessTest {
 protected:
  /// What has been written, or taken, in the order of the sequence numbers. All of one writer.
  static Words in_order(Words samples) {
    const auto number = [](const std::string& sample) { return numbers(sample.substr(sample.find(' ')))[1]; };
    std::sort(samples.begin(), samples.end(),
              [&](const std::string& a, const std::string& b) { return number(a) < number(b); });
    return samples;
  }
};

TEST_F(Waiting, EightThreadsNumberTheirSamplesAsTheyArrive) {
  const int count = repetitions(1000, 20000);
  Child reader = start_endpoints({"reader Topic -1 0"});
  Child writer = start_endpoints({"writer Topic -1", "readers Topic 1"});
  writer.say("write Topic 8 " + std::to_string(count) + " 64");
  EXPECT_EQ(numbers(writer.await("written"))[0], 8 * count);
  writer.ask("mark Topic");
  reader.ask("take Topic 1");
  const Words samples = reader.take("sample");
  EXPECT_EQ(samples, in_order(writer.take("wrote")));
  ASSERT_EQ(static_cast<int>(samples.size()), 8 * count);
  const std::string& last = samples.back();
  EXPECT_EQ(numbers(last.substr(last.find(' ')))[1], 8 * count) << "a number is left out";
}

/// A reader that is full, or one that takes any number, in a process that is stopped.
class NoRoom : public Waiting, public ::testing::WithParamInterface<bool> {};

TEST_P(NoRoom, TimedOutWritesAreReportedAndNeverArrive) {
  const bool stopped = GetParam();
  constexpr int limit = 200;
  for (const int size : stopped ? std::vector<int>{64, 65000} : std::vector<int>{64}) {
    Child reader = start_endpoints({stopped ? "reader Topic -1 0" : "reader Topic 4 0"});
    Child writer = start_endpoints({"writer Topic " + std::to_string(limit), "readers Topic 1"});
    if (stopped) { reader.signal(SIGSTOP); }
    // The first time until there is no room, then against closed doors.
    for (const int threads : {1, 1, 8}) {
      writer.say("write Topic " + std::to_string(threads) + " 100000 " + std::to_string(size));
      const std::vector<int> written = numbers(writer.await("written"));
      EXPECT_EQ(written[1], threads);
      EXPECT_GE(written[2], limit);
      std::printf("%d threads: %d written, timed out after %d to %d ms\n", threads, written[0], written[2], written[3]);
    }
    if (stopped) { reader.signal(SIGCONT); }
    // Room comes by itself or, where the reader is full, by taking.
    reader.say("take Topic 1");
    until("there is room", [&] {
      writer.say("write Topic 1 1 64");
      return numbers(writer.await("written"))[0] == 1;
    });
    writer.ask("mark Topic");
    reader.await("take");
    EXPECT_EQ(reader.take("sample"), in_order(writer.take("wrote")));
  }
}

INSTANTIATE_TEST_SUITE_P(InAReader, NoRoom, ::testing::Bool(),
                         [](const auto& test) { return test.param ? "OfAStoppedProcess" : "ThatIsFull"; });

TEST_F(Waiting, AFullReaderDelaysNoOther) {
  Child full = start_endpoints({"reader Full 1 0", "reader Topic -1 0", "reader Small 1 0"});
  Child other = start_endpoints({"reader Topic -1 0"});
  Child writer = start_endpoints({"writer Full -1", "writer Topic -1", "readers Full 1", "readers Topic 2"});
  Child other_writer = start_endpoints({"writer Topic -1", "writer Small -1", "readers Topic 2", "readers Small 1"});
  writer.say("write Full 4 5 64");
  writer.await("wrote");
  for (Child* each : {&writer, &other_writer}) {
    each->say("write Topic 2 500 64");
    EXPECT_EQ(numbers(each->await("written"))[0], 1000);
  }
  // A bounded reader takes what it has room for, also beside one that has none.
  other_writer.say("write Small 1 1 64");
  EXPECT_EQ(numbers(other_writer.await("written"))[0], 1);
  writer.ask("mark Topic");
  other_writer.ask("mark Topic");
  for (Child* each : {&full, &other}) {
    each->ask("take Topic 2");
    EXPECT_EQ(each->take("sample").size(), 2000u);
  }
  EXPECT_EQ(writer.take("written"), Words{}) << "writers do not wait for the full reader";
  full.say("take Full 1");
  EXPECT_EQ(numbers(writer.await("written"))[0], 20);
  writer.ask("mark Full");
  full.await("take");
}

TEST_F(Waiting, NobodyWaitsForBestEffortReaders) {
  Child careless = start_endpoints({"reader Topic -1 0 1"});
  Child careful = start_endpoints({"reader Topic 1000 0"});
  Child writer = start_endpoints({"writer Topic 1000", "readers Topic 2"});
  careless.signal(SIGSTOP);
  writer.say("write Topic 1 100 65000");
  EXPECT_EQ(numbers(writer.await("written"))[0], 100);
  writer.ask("mark Topic");
  careful.ask("take Topic 1");
  EXPECT_EQ(careful.take("sample").size(), 100u);
  careless.signal(SIGCONT);
}

struct Load {
  const char* name;
  const char* limit;
  int size;
};
void PrintTo(const Load& each, std::ostream* out) { *out << each.name; }

/// Two processes that serve each other, both from listeners.
class BothWays : public Waiting, public ::testing::WithParamInterface<Load> {};

TEST_P(BothWays, ListenersThatAnswerDoNotBlockEachOther) {
  const std::string count = std::to_string(repetitions(2000, 50000));
  const std::string limit = std::string("limit=") + GetParam().limit;
  const std::string size = "size=" + std::to_string(GetParam().size);
  const std::string a = service() + 'a';
  const std::string b = service() + 'b';
  Child one = start("duplex", {"serves=" + a, "uses=" + b, "count=" + count, limit, size});
  Child two = start("duplex", {"serves=" + b, "uses=" + a, "count=" + count, limit, size});
  for (Child* each : {&one, &two}) { EXPECT_EQ(each->await("done"), "0"); }
  one.finish();
  two.finish();
}

INSTANTIATE_TEST_SUITE_P(With, BothWays,
                         ::testing::Values(Load{"SmallReaders", "4", 16}, Load{"FullWindows", "-1", 60000}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace

}  // namespace processes
