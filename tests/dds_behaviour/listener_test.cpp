// Listeners: when they are called, and what they may do.

#include <atomic>
#include <future>
#include <mutex>

#include "behaviour.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

/// Calls a function for each arrival of data.
class OnData : public DDSDataReaderListener {
 public:
  explicit OnData(std::function<void(DDSStringDataReader*)> function) : function_(std::move(function)) {}
  void on_data_available(DDSDataReader* reader) override {
    const AsItComes as_it_comes;
    function_(DDSStringDataReader::narrow(reader));
  }

 private:
  std::function<void(DDSStringDataReader*)> function_;
};

/// What a listener was told, for any thread to look at.
class Calls {
 public:
  void add(const std::string& call) {
    const std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back(call);
  }
  Strings all() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
  }

 private:
  mutable std::mutex mutex_;
  Strings calls_;
};

using ListenersWithinAProcess = OneTopic;
/// A listener cannot be of a writer in another process.
using WriterListeners = OneTopicOver;

class Listeners : public OneTopicOver {
 protected:
  DDSStringDataWriter* writer = make_writer(topic);
};

// Only within a process does the writing thread deliver.
TEST_F(ListenersWithinAProcess, AreCalledOnTheWritingThreadBeforeTheWriteReturns) {
  DDSStringDataWriter* writer = make_writer(topic);
  std::vector<std::thread::id> callers;
  OnData listener([&](DDSStringDataReader* reader) {
    callers.push_back(std::this_thread::get_id());
    take_all(reader);
  });
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(), &listener);
  EXPECT_EQ(reader->get_listener(), &listener);
  EXPECT_EQ(write(writer, "1"), DDS_RETCODE_OK);
  EXPECT_EQ(callers, std::vector<std::thread::id>{std::this_thread::get_id()});
  EXPECT_EQ(remove(writer), DDS_RETCODE_OK);
  EXPECT_EQ(callers.size(), 2u) << "a vanished writer is told of too";
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
}

TEST_P(Listeners, AreNeverCalledTwiceAtOnceForOneReaderAndMissNothing) {
  constexpr int threads = 4;
  const int each = scaled(20000);
  std::atomic<bool> running{false};
  std::atomic<int> taken{0};
  OnData listener([&](DDSStringDataReader* reader) {
    EXPECT_FALSE(running.exchange(true));
    // What has piled up may be more than one take gives, and is told once.
    for (int got = -1; got != 0; taken += got) { got = static_cast<int>(take_all(reader).size()); }
    running = false;
  });
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(), &listener);
  {
    std::vector<Thread> writing;
    for (int t = 0; t < threads; ++t) {
      writing.emplace_back([&] {
        for (int i = 0; i < each; ++i) { EXPECT_EQ(write(writer, "x"), DDS_RETCODE_OK); }
      });
    }
  }
  AWAIT_EQ(taken.load(), threads * each);
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
}

TEST_P(Listeners, MayWriteToTheirOwnTopicAndToOneWhoseListenerWritesBack) {
  const int count = scaled(100000);
  DDSTopic* back = participant.strings("Back");
  DDSStringDataWriter* back_writer = make_writer(back);
  for (DDSStringDataWriter* there : {writer, back_writer}) {
    std::atomic<int> hops{0};
    const auto answer_through = [&](DDSStringDataWriter* next) {
      return [&, next](DDSStringDataReader* reader) {
        for (const std::string& value : take_values(reader)) {
          EXPECT_EQ(value, std::to_string(hops));
          if (++hops < count) { EXPECT_EQ(write(next, std::to_string(hops)), DDS_RETCODE_OK); }
        }
      };
    };
    OnData listener(answer_through(there)), and_back(answer_through(writer));
    DDSStringDataReader* readers[] = {make_reader(topic, keep_all_reader(), &listener),
                                      make_reader(back, keep_all_reader(), &and_back)};
    EXPECT_EQ(write(writer, "0"), DDS_RETCODE_OK);
    AWAIT_EQ(hops.load(), count);
    for (DDSStringDataReader* reader : readers) { EXPECT_EQ(remove(reader), DDS_RETCODE_OK); }
  }
}

TEST_P(Listeners, AreCalledForTheStatusesOfTheirMaskOnly) {
  struct Recorder : DDSDataReaderListener {
    Calls calls;
    void on_data_available(DDSDataReader*) override { calls.add("data"); }
    void on_subscription_matched(DDSDataReader*, const DDS_SubscriptionMatchedStatus& status) override {
      calls.add("matched " + std::to_string(status.current_count) + " " + std::to_string(status.current_count_change));
    }
    void on_sample_rejected(DDSDataReader*, const DDS_SampleRejectedStatus& status) override {
      calls.add("rejected " + std::to_string(status.total_count) + " " + std::to_string(status.total_count_change));
    }
    void on_requested_incompatible_qos(DDSDataReader*, const DDS_RequestedIncompatibleQosStatus& status) override {
      calls.add("incompatible " + std::to_string(status.total_count_change));
    }
  } recorder;
  Strings expected;
  const auto told = [&](const char* call) {
    expected.emplace_back(call);
    AWAIT_EQ(recorder.calls.all(), expected);
  };
  DDSStringDataReader* reader = make_reader(topic, best_effort_reader(1), &recorder,
                                            DDS_SUBSCRIPTION_MATCHED_STATUS | DDS_SAMPLE_REJECTED_STATUS);
  told("matched 1 1");
  EXPECT_EQ(write(writer, "kept"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "rejected"), DDS_RETCODE_OK);
  told("rejected 1 1");
  EXPECT_EQ(write(writer, "rejected"), DDS_RETCODE_OK);
  told("rejected 2 1");
  DDSStringDataWriter* second = make_writer(topic);
  told("matched 2 1");
  EXPECT_EQ(remove(second), DDS_RETCODE_OK);
  told("matched 1 -1");
  EXPECT_EQ(reader->get_status_changes() & (DDS_SUBSCRIPTION_MATCHED_STATUS | DDS_SAMPLE_REJECTED_STATUS), 0u)
      << "telling the listener resets a status";
  EXPECT_EQ(reader->set_listener(&recorder, DDS_DATA_AVAILABLE_STATUS), DDS_RETCODE_OK);
  EXPECT_EQ(take_values(reader), Strings{"kept"});
  EXPECT_EQ(write(writer, "kept"), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "rejected"), DDS_RETCODE_OK);
  told("data");
  DDSStringDataReader* demanding = make_reader(participant.strings("Best effort"), keep_all_reader(), &recorder,
                                               DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS);
  {
    const LogLines log;
    make_writer(DDSTopic::narrow(demanding->get_topicdescription()), best_effort_writer());
  }
  told("incompatible 1");
  for (DDSStringDataReader* each : {reader, demanding}) { EXPECT_EQ(remove(each), DDS_RETCODE_OK); }
}

TEST_P(WriterListeners, HearOfReaders) {
  struct Recorder : DDSDataWriterListener {
    Calls calls;
    void on_publication_matched(DDSDataWriter*, const DDS_PublicationMatchedStatus& status) override {
      calls.add("matched " + std::to_string(status.current_count));
    }
    void on_offered_incompatible_qos(DDSDataWriter*, const DDS_OfferedIncompatibleQosStatus& status) override {
      calls.add("incompatible " + std::to_string(status.last_policy_id));
    }
  } recorder;
  DDSDataWriter* listening = make_writer(topic, best_effort_writer(), &recorder);
  ASSERT_NE(listening, nullptr);
  DDSStringDataReader* reader = make_reader(topic, best_effort_reader());
  AWAIT_EQ(recorder.calls.all(), Strings{"matched 1"});
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
  AWAIT_EQ(recorder.calls.all(), (Strings{"matched 1", "matched 0"}));
  {
    const LogLines log;
    make_reader(topic);
  }
  AWAIT_EQ(recorder.calls.all(), (Strings{"matched 1", "matched 0", "incompatible 11"}));
  EXPECT_EQ(listening->set_listener(nullptr, DDS_STATUS_MASK_NONE), DDS_RETCODE_OK);
  make_reader(topic, best_effort_reader());
  EXPECT_EQ(recorder.calls.all().size(), 3u);
}

TEST_P(Listeners, AreGoneOnceSetListenerHasReturned) {
  std::promise<void> entered, release;
  std::atomic<bool> finished{false};
  OnData listener([&](DDSStringDataReader*) {
    entered.set_value();
    release.get_future().wait();
    finished = true;
  });
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(), &listener);
  Thread writing([&] { EXPECT_EQ(write(writer, "1"), DDS_RETCODE_OK); });
  entered.get_future().wait();
  std::atomic<bool> replacing{false}, replaced{false};
  Thread replacer([&] {
    replacing = true;
    EXPECT_EQ(reader->set_listener(nullptr, DDS_STATUS_MASK_NONE), DDS_RETCODE_OK);
    EXPECT_TRUE(finished) << "a call was still running";
    replaced = true;
  });
  while (!replacing) { std::this_thread::yield(); }
  for (int i = 0; i < 1000; ++i) { std::this_thread::yield(); }
  EXPECT_FALSE(replaced);
  release.set_value();
  replacer.join();
  writing.join();
  const LogLines log;
  EXPECT_EQ(write(writer, "2"), DDS_RETCODE_OK);
  EXPECT_EQ(take_values(reader), (Strings{"1", "2"}));
  EXPECT_EQ(log.count("Promise already satisfied"), 0) << "a further call would find it so";
}

TEST_P(Listeners, MayNotDeleteTheirOwnReaderButOtherEntitiesAndTheWriterThatCallsThemAndReplaceThemselves) {
  DDSStringDataReader* neighbour = make_reader(topic);
  DDSStringDataWriter* second_writer = make_writer(topic);
  std::promise<void> written;
  std::promise<std::vector<DDS_ReturnCode_t>> outcomes;
  OnData listener([&](DDSStringDataReader* reader) {
    take_all(reader);
    // Where the write calls the listener, the writer may go meanwhile; elsewhere the write has to be over.
    if (!carrier().in_process()) { written.get_future().wait(); }
    outcomes.set_value(
        {remove(reader), remove(neighbour), remove(writer), reader->set_listener(nullptr, DDS_STATUS_MASK_NONE)});
  });
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(), &listener);
  EXPECT_EQ(write(writer, "the last"), DDS_RETCODE_OK);
  written.set_value();
  EXPECT_EQ(outcomes.get_future().get(),
            (std::vector<DDS_ReturnCode_t>{DDS_RETCODE_PRECONDITION_NOT_MET, DDS_RETCODE_OK, DDS_RETCODE_OK,
                                           DDS_RETCODE_OK}));
  EXPECT_EQ(reader->get_listener(), nullptr);
  const LogLines log;
  EXPECT_EQ(write(second_writer, "not told"), DDS_RETCODE_OK);
  settle();
  EXPECT_EQ(log.count("Promise already satisfied"), 0) << "a further call would find it so";
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
}

TEST_P(Listeners, ThatThrowAreLoggedAndCalledAgain) {
  std::atomic<int> calls{0};
  OnData listener([&](DDSStringDataReader*) {
    ++calls;
    if (calls == 1) { throw std::runtime_error("listener's fault"); }
    if (calls == 2) { throw 42; }
  });
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(), &listener);
  {
    const LogLines log;
    EXPECT_EQ(write(writer, "1"), DDS_RETCODE_OK);
    AWAIT_EQ(log.count("listener's fault"), 1);
    EXPECT_EQ(write(writer, "2"), DDS_RETCODE_OK);
    AWAIT_EQ(log.all().size(), 2u);
  }
  EXPECT_EQ(write(writer, "3"), DDS_RETCODE_OK);
  AWAIT_EQ(calls.load(), 3);
  EXPECT_EQ(take_values(reader), (Strings{"1", "2", "3"}));
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
}

TEST_P(Listeners, MayWaitForWhatAnotherThreadSends) {
  DDSTopic* reply = participant.strings("Reply");
  DDSStringDataReader* replies = make_reader(reply);
  DDSStringDataWriter* reply_writer = make_writer(reply);
  std::promise<void> asked;
  Thread answering([&] {
    asked.get_future().wait();
    EXPECT_EQ(write(reply_writer, "answer"), DDS_RETCODE_OK);
  });
  std::promise<Strings> answer;
  OnData listener([&](DDSStringDataReader*) {
    asked.set_value();
    DDSWaitSet waitset;
    DDSConditionSeq active;
    EXPECT_EQ(replies->get_statuscondition()->set_enabled_statuses(DDS_DATA_AVAILABLE_STATUS), DDS_RETCODE_OK);
    EXPECT_EQ(waitset.attach_condition(replies->get_statuscondition()), DDS_RETCODE_OK);
    EXPECT_EQ(waitset.wait(active, DDS_DURATION_INFINITE), DDS_RETCODE_OK);
    answer.set_value(take_values(replies));
  });
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader(), &listener);
  EXPECT_EQ(write(writer, "question"), DDS_RETCODE_OK);
  EXPECT_EQ(answer.get_future().get(), Strings{"answer"});
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
}

TEST_P(Listeners, MayBeReplacedByOneThreadWhileOthersWrite) {
  const int count = scaled(20000);
  std::atomic<int> calls{0};
  OnData one([&](DDSStringDataReader* reader) { take_all(reader), ++calls; });
  OnData another([&](DDSStringDataReader* reader) { take_all(reader), ++calls; });
  DDSStringDataReader* reader = make_reader(topic, keep_all_reader());
  std::atomic<bool> stop{false};
  Thread writing([&] {
    while (!stop) { EXPECT_EQ(write(writer, "x"), DDS_RETCODE_OK); }
  });
  for (int i = 0; i < count || calls == 0; ++i) {
    DDSDataReaderListener* const next[] = {&one, nullptr, &another};
    ASSERT_EQ(reader->set_listener(next[i % 3], DDS_DATA_AVAILABLE_STATUS), DDS_RETCODE_OK);
  }
  ASSERT_EQ(reader->set_listener(nullptr, DDS_STATUS_MASK_NONE), DDS_RETCODE_OK);
  const int before = calls;
  stop = true;
  writing.join();
  settle();
  EXPECT_EQ(calls, before);
}

RUN_OVER_EVERY_CARRIER(Listeners);
INSTANTIATE_TEST_SUITE_P(Over, WriterListeners, ::testing::ValuesIn(support::carriers_of_one_process()),
                         support::carrier_name);

}  // namespace
}  // namespace behaviour
