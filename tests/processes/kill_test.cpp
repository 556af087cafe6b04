#include "usage.hpp"

namespace processes {

namespace {

// Processes that are killed at any moment. What is promised to those that live on:
// - A request whose reply has been received has come to the replier once. (Whether one without reply has come, nobody
//   knows; but not twice, and not without the one before it.)
// - A requester gets at most one reply to a request from this replier, which sends one.
// - Who has nothing to do with the dead one does not notice.
class Kill : public ProcessTest {
 protected:
  /// Starts a requester that sends on and on.
  Child start_stream(int id, const Words& more = {}) const {
    Words options = {"id=" + std::to_string(id), "ahead=16"};
    options.insert(options.end(), more.begin(), more.end());
    return start("requester", options);
  }
  static void await_progress(Child& requester) {
    const int before = requester.ask_number("answered");
    until("replies go on coming", [&] { return requester.ask_number("answered") > before + 50; });
  }
  /// Lets a requester come to its end, and returns how many requests it has sent, how many replies it has received, and
  /// how many of these were wrong.
  static std::vector<int> end_stream(Child& requester) {
    requester.say("stop");
    const std::vector<int> sums = numbers(requester.await("done"));
    requester.finish();
    return sums;
  }
};

TEST_F(Kill, OfARequesterDisturbsNobody) {
  const int count = repetitions(4, 250);
  Child replier = start("replier");
  replier.await("ready");
  Child bystander = start_stream(0);
  await_progress(bystander);
  Usage usage(replier);
  for (int id = 1; id <= count; ++id) {
    Child victim = start_stream(id, {"telling=1", mortal});
    int last_reply = 0;
    int replies = 0;
    const auto add_reply = [&](const std::string& number) {
      last_reply = std::stoi(number);
      ++replies;
    };
    while (replies < 20 + id * 37 % 100) { add_reply(victim.await("reply")); }
    victim.kill();
    for (const std::string& number : victim.take("reply")) { add_reply(number); }
    EXPECT_EQ(replies, last_reply) << "a reply is missing or came twice";
    until("the replier misses the requester", [&] { return replier.ask_number("others") == 1; });
    const std::vector<int> seen = numbers(replier.ask("seen " + std::to_string(id)));
    EXPECT_GE(seen[0], last_reply);
    EXPECT_EQ(seen[1], 0) << "requests are missing or came twice";
    await_progress(bystander);
    usage.await_initial();
    usage.add(replier.ask_number("heap"));
    support::extend_watchdog();
  }
  usage.expect_no_growth();
  const std::vector<int> ended = end_stream(bystander);
  EXPECT_EQ(ended[0], ended[1]) << "of who was not killed, every request is answered";
  EXPECT_EQ(ended[2], 0);
  replier.finish();
}

TEST_F(Kill, OfAReplierLeavesItsRequesterReadyForTheNext) {
  const int count = repetitions(4, 250);
  Child requester = start_stream(0);
  Child first = start("replier", {mortal});
  await_progress(requester);
  Usage usage(requester);
  first.kill();
  for (int i = 1; i <= count; ++i) {
    // Half of them come before their predecessor is missed.
    if (i % 2 == 0) {
      until("the requester misses the replier", [&] { return requester.ask_number("others") == 0; });
    }
    Child victim = start("replier", {mortal});
    await_progress(requester);
    until("the one replier", [&] { return requester.ask_number("others") == 1; });
    usage.await_initial();
    usage.add(requester.ask_number("heap"));
    victim.kill();
    support::extend_watchdog();
  }
  usage.expect_no_growth();
  Child last = start("replier");
  await_progress(requester);
  const std::vector<int> ended = end_stream(requester);
  EXPECT_EQ(ended[2], 0) << "replies came twice, or not as they should";
  last.finish();
}

// Whoever goes before he has been made out is forgotten, too: with nobody left, the survivor's threads sleep.
class JustStarted : public Kill, public ::testing::WithParamInterface<bool> {
 protected:
  static void await_rest(const Child& child) {
    // ThreadSanitizer adds a thread that never rests.
    if (support::slowdown() >= 8) { return; }
    until("its threads sleep", [&] {
      const int before = child.sleeps();
      std::this_thread::sleep_for(std::chrono::milliseconds(250));
      return child.sleeps() == before;
    });
  }
};

TEST_P(JustStarted, ProcessesMayGoAtAnyMoment) {
  const bool killed = GetParam();
  const int count = repetitions(3, 150);
  Child survivor = start_endpoints({"reader Topic -1 0", "writer Topic -1"});
  Usage usage(survivor);
  for (int i = 0; i < count; ++i) {
    std::vector<Child> victims;
    for (int k = 0; k < 4; ++k) {
      victims.push_back(start("endpoints", {mortal}));
      victims.back().say("writer Topic -1");
      victims.back().say("reader Topic -1 0");
    }
    for (Child& victim : victims) {
      std::this_thread::sleep_for(std::chrono::microseconds(i * 1237 % 15000));
      killed ? victim.kill() : victim.finish();
    }
    // Its own are left.
    survivor.ask("readers Topic 1");
    survivor.ask("writers Topic 1");
    await_rest(survivor);
    usage.await_initial();
    usage.add(survivor.ask_number("heap"));
    support::extend_watchdog();
  }
  usage.expect_no_growth();
  Child guest = start_endpoints({"reader Topic -1 0"});
  survivor.ask("readers Topic 2");
  guest.finish();
  survivor.finish();
}

INSTANTIATE_TEST_SUITE_P(That, JustStarted, ::testing::Bool(),
                         [](const auto& test) { return test.param ? "AreKilled" : "Leave"; });

}  // namespace

}  // namespace processes
