#include <csignal>
#include <filesystem>

#include "processes.hpp"

namespace processes {

namespace {

// What others are told of a process that has died, or seems to have.
class Departure : public ProcessTest {};

TEST_F(Departure, OfAWriterEndsItsInstances) {
  for (const bool no_writers_sample : {true, false}) {
    Child reader = start_endpoints({no_writers_sample ? "reader Topic -1 1" : "reader Topic -1 0"});
    Child writer = start_endpoints({"writer Topic -1", "readers Topic 1"}, {mortal});
    writer.say("write Topic 1 1 16");
    writer.await("written");
    const std::string got = "key valid alive";
    Words keys;
    until("the sample", [&] { return !(reader.ask("keys Topic"), keys = reader.take("key")).empty(); });
    EXPECT_EQ(keys, Words{got});
    writer.kill();
    reader.ask("writers Topic 0");
    reader.ask("keys Topic");
    EXPECT_EQ(reader.take("key"), no_writers_sample ? Words{"key invalid no_writers"} : Words{});
    // The instance has ended all the same: the next one to write it finds it new.
    Child next = start_endpoints({"writer Topic -1", "readers Topic 1"});
    next.say("write Topic 1 1 16");
    until("the sample", [&] { return !(reader.ask("keys Topic"), keys = reader.take("key")).empty(); });
    EXPECT_EQ(keys, Words{got});
  }
}

// Writers wait for room in a reader, or for its process to take what has been sent; in either case for ever, unless it
// dies.
TEST_F(Departure, LetsWritersGoOnThatWaitedForTheDead) {
  for (const bool full : {true, false}) {
    for (const int threads : {1, 4}) {
      const int count = full ? 10 : 1000;
      Child dying = start_endpoints({full ? "reader Topic 2 0" : "reader Topic -1 0"}, {mortal});
      Child living = start_endpoints({"reader Topic -1 0"});
      Child writer = start_endpoints({"writer Topic -1", "readers Topic 2"});
      if (!full) { dying.signal(SIGSTOP); }
      writer.say("write Topic " + std::to_string(threads) + ' ' + std::to_string(count) + " 65000");
      writer.await("wrote");
      writer.ask("heap");
      if (full) { EXPECT_EQ(writer.take("written"), Words{}) << "a writer does not wait"; }
      dying.kill();
      EXPECT_EQ(numbers(writer.await("written"))[0], threads * count);
      writer.ask("mark Topic");
      living.ask("take Topic 1");
      EXPECT_EQ(static_cast<int>(living.take("sample").size()), threads * count);
      support::extend_watchdog();
    }
  }
}

// To the others it was dead, and it may think the same of them.
TEST_F(Departure, OfAProcessThatOnlySleptIsUndone) {
  for (const bool replier_sleeps : {true, false}) {
    Child replier = start("replier", {mortal});
    Child requester = start("requester", {"ahead=8", mortal});
    Child& sleeper = replier_sleeps ? replier : requester;
    Child& other = replier_sleeps ? requester : replier;
    requester.await("begun");
    sleeper.signal(SIGSTOP);
    until("it is missed", [&] { return other.ask_number("others") == 0; });
    sleeper.signal(SIGCONT);
    until("it is there", [&] { return other.ask_number("others") == 1; });
    until("it sees the other", [&] { return sleeper.ask_number("others") == 1; });
    const int before = requester.ask_number("answered");
    until("calls are answered", [&] { return requester.ask_number("answered") > before + 100; });
    requester.say("stop");
    const std::string done = requester.await("done");
    EXPECT_EQ(done.substr(done.rfind(' ')), " 0") << done;
    requester.finish();
    replier.finish();
  }
}

// The engine could be configured by an environment variable; and it could leave something behind.
TEST_F(Departure, LeavesNothingAndNothingOutsideIsLookedAt) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / ("zemtra_processes_" + std::to_string(getpid()));
  for (const char* uri : {"rubbish", "file:///nowhere.xml",
                          "<General><Interfaces><NetworkInterface name=\"none\"/>"
                          "</Interfaces></General><Discovery><Tag>t</Tag></Discovery>"}) {
    fs::create_directory(folder);
    const Words surroundings = {"env",
                                "-C",
                                folder,
                                "CYCLONEDDS_URI=" + std::string(uri),
                                "TMPDIR=" + folder.string(),
                                "HOME=" + folder.string()};
    Child replier = start("replier", {}, surroundings);
    Child requester = start("requester", {"ahead=8"});
    requester.await("begun");
    until("calls are answered", [&] { return requester.ask_number("answered") > 10; });
    EXPECT_EQ(replier.proc("maps").find("/dev/shm"), std::string::npos);
    for (const auto& descriptor : fs::directory_iterator("/proc/" + std::to_string(replier.pid()) + "/fd")) {
      if (!fs::is_regular_file(descriptor)) { continue; }
      // A file may only be there because the process has inherited it.
      const fs::path inherited = "/proc/self/fd" / descriptor.path().filename();
      EXPECT_TRUE(fs::exists(inherited) && fs::equivalent(inherited, descriptor)) << fs::read_symlink(descriptor);
    }
    replier.kill();
    EXPECT_TRUE(fs::is_empty(folder));
    fs::remove_all(folder);
  }
}

}  // namespace

}  // namespace processes
