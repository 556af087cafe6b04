// Writers and readers of keyed strings, made and used as the standard input says:
//
//   reader TOPIC LIMIT NO_WRITERS [1] makes a reader that holds at most LIMIT samples (-1: any number); NO_WRITERS is
//                                     the value of its property for samples about vanished writers; 1: best effort
//   writer TOPIC MILLISECONDS         makes a writer that waits for room so long (-1: for ever)
//   readers TOPIC COUNT               waits until the writer is matched with so many
//   writers TOPIC COUNT               waits until the reader is
//   write TOPIC THREADS COUNT SIZE    each thread writes so many samples of at least so many octets, and stops when one
//                                     is not written; meanwhile more orders are taken. "wrote SAMPLE" for each written,
//                                     then "written COUNT TIMEOUTS LEAST_MILLISECONDS MOST_MILLISECONDS"
//   mark TOPIC                        writes a sample that says that it is the last
//   take TOPIC COUNT                  takes samples up to so many of these: "sample SAMPLE" for each other
//   keys TOPIC                        takes what is there: "key KEY VALID STATE" for each sample
//   heap                              "heap OCTETS"
//
// All but "write" are done before the next one is looked at, and answered with their first word.

#include <algorithm>
#include <chrono>
#include <iostream>
#include <list>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "peer.hpp"

namespace peer {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kKey[] = "key";
constexpr char kMark[] = "mark";
constexpr char kPadding = '.';

std::string name_of(const DDS_SampleIdentity_t& identity) {
  std::ostringstream text;
  for (const DDS_Octet octet : identity.writer_guid.value) { text << std::hex << int{octet} << '.'; }
  text << std::dec << ' ' << identity.sequence_number.high << ' ' << identity.sequence_number.low;
  return text.str();
}

/// The outcome of several writes that did not come to an end.
struct TimeOuts {
  void add(std::int64_t milliseconds) {
    least = count == 0 ? milliseconds : std::min(least, milliseconds);
    most = std::max(most, milliseconds);
    ++count;
  }
  int count = 0;
  std::int64_t least = 0;
  std::int64_t most = 0;
};

class Endpoints {
 public:
  /// The names of the topics begin with `prefix`.
  Endpoints(DDSDomainParticipant* participant, std::string prefix)
      : participant_(participant), prefix_(std::move(prefix)) {
    check(DDSKeyedStringTypeSupport::register_type(participant, nullptr), "register_type");
  }
  ~Endpoints() {
    for (std::thread& thread : threads_) { thread.join(); }
    check(participant_->delete_contained_entities(), "delete_contained_entities");
  }

  void obey(const std::string& line) {
    std::istringstream words(line);
    std::string order, topic;
    words >> order >> topic;
    std::vector<int> numbers;
    for (int number = 0; words >> number;) { numbers.push_back(number); }
    numbers.resize(3);
    if (order == "reader") { make_reader(topic, numbers[0], numbers[1] != 0, numbers[2] != 0); }
    if (order == "writer") { make_writer(topic, numbers[0]); }
    if (order == "readers") { await_readers(writers_.at(topic), numbers[0]); }
    if (order == "writers") { await_writers(readers_.at(topic), numbers[0]); }
    if (order == "write") {
      threads_.emplace_back([this, topic, numbers] { write(topic, numbers[0], numbers[1], numbers[2]); });
      return;
    }
    if (order == "mark") { mark(topic); }
    if (order == "take") { take(topic, numbers[0]); }
    if (order == "keys") { take_keys(topic); }
    say(order == "heap" ? "heap " + std::to_string(heap_in_use()) : order);
  }

 private:
  DDSTopic* topic(const std::string& short_name) {
    const std::string name = prefix_ + short_name;
    DDSTopic* known = DDSTopic::narrow(participant_->lookup_topicdescription(name.c_str()));
    return known != nullptr ? known
                            : participant_->create_topic(name.c_str(), DDSKeyedStringTypeSupport::get_type_name(),
                                                         DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  }
  void make_reader(const std::string& name, int limit, bool no_writers, bool best_effort) {
    DDS_DataReaderQos qos;
    qos.reliability.kind = best_effort ? DDS_BEST_EFFORT_RELIABILITY_QOS : DDS_RELIABLE_RELIABILITY_QOS;
    qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
    qos.resource_limits.max_samples = limit;
    check(DDSPropertyQosPolicyHelper::add_property(qos.property,
                                                   "dds.data_reader.history.generate_not_alive_no_writers_sample",
                                                   no_writers ? "1" : "0", false),
          "property");
    readers_[name] = DDSKeyedStringDataReader::narrow(
        participant_->create_datareader(topic(name), qos, nullptr, DDS_STATUS_MASK_NONE));
    if (readers_[name] == nullptr) { fail("no reader"); }
  }
  void make_writer(const std::string& name, int milliseconds) {
    DDS_DataWriterQos qos;
    qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
    qos.reliability.max_blocking_time = milliseconds < 0
                                            ? DDS_DURATION_INFINITE
                                            : DDS_Duration_t(zemtra::Duration(std::chrono::milliseconds(milliseconds)));
    writers_[name] = DDSKeyedStringDataWriter::narrow(
        participant_->create_datawriter(topic(name), qos, nullptr, DDS_STATUS_MASK_NONE));
    if (writers_[name] == nullptr) { fail("no writer"); }
  }

  static DDS_ReturnCode_t write_one(DDSKeyedStringDataWriter* writer, std::string key, std::string value,
                                    DDS_SampleIdentity_t& identity) {
    DDS_WriteParams_t params;
    const DDS_ReturnCode_t retcode = writer->write_w_params({key.data(), value.data()}, params);
    identity = params.identity;
    return retcode;
  }

  void write(const std::string& name, int thread_count, int count, int size) {
    DDSKeyedStringDataWriter* writer = writers_.at(name);
    std::mutex mutex;
    int written = 0;
    TimeOuts timeouts;
    const auto write_all = [&](int thread) {
      for (int i = 0; i < count; ++i) {
        const std::string value = std::to_string(thread) + ' ' + std::to_string(i);
        const std::size_t padding = std::max<std::size_t>(static_cast<std::size_t>(size), value.size()) - value.size();
        DDS_SampleIdentity_t identity;
        const Clock::time_point begin = Clock::now();
        const DDS_ReturnCode_t retcode = write_one(writer, kKey, value + std::string(padding, kPadding), identity);
        const std::lock_guard<std::mutex> lock(mutex);
        if (retcode == DDS_RETCODE_TIMEOUT) {
          timeouts.add(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count());
          return;
        }
        check(retcode, "write");
        ++written;
        say("wrote " + name_of(identity) + ' ' + value);
      }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < thread_count; ++i) { threads.emplace_back(write_all, i); }
    for (std::thread& thread : threads) { thread.join(); }
    say("written " + std::to_string(written) + ' ' + std::to_string(timeouts.count) + ' ' +
        std::to_string(timeouts.least) + ' ' + std::to_string(timeouts.most));
  }

  void mark(const std::string& name) {
    DDS_SampleIdentity_t identity;
    check(write_one(writers_.at(name), kMark, "", identity), "write");
  }

  template <class Use>
  void take_and_use(DDSKeyedStringDataReader* reader, Use use) {
    DDS_KeyedStringSeq data;
    DDS_SampleInfoSeq infos;
    const DDS_ReturnCode_t retcode = reader->take(data, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE,
                                                  DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    if (retcode == DDS_RETCODE_NO_DATA) { return; }
    check(retcode, "take");
    for (int i = 0; i < data.length(); ++i) { use(data[i], infos[i]); }
    check(reader->return_loan(data, infos), "return_loan");
  }

  void take(const std::string& name, int marks) {
    DDSKeyedStringDataReader* reader = readers_.at(name);
    DDSReadCondition* there =
        reader->create_readcondition(DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    DDSWaitSet waitset;
    check(waitset.attach_condition(there), "attach_condition");
    while (marks > 0) {
      DDSConditionSeq active;
      check(waitset.wait(active, DDS_DURATION_INFINITE), "wait");
      take_and_use(reader, [&](const DDS_KeyedString& sample, const DDS_SampleInfo& info) {
        if (sample.key == std::string(kMark)) {
          --marks;
        } else if (info.valid_data) {
          const std::string value = sample.value;
          say("sample " + name_of(info.sample_identity) + ' ' + value.substr(0, value.find(kPadding)));
        }
      });
    }
    check(waitset.detach_condition(there), "detach_condition");
    check(reader->delete_readcondition(there), "delete_readcondition");
  }

  void take_keys(const std::string& name) {
    take_and_use(readers_.at(name), [&](const DDS_KeyedString& sample, const DDS_SampleInfo& info) {
      const char* state = info.instance_state == DDS_ALIVE_INSTANCE_STATE                  ? "alive"
                          : info.instance_state == DDS_NOT_ALIVE_NO_WRITERS_INSTANCE_STATE ? "no_writers"
                                                                                           : "disposed";
      say(std::string("key ") + sample.key + (info.valid_data ? " valid " : " invalid ") + state);
    });
  }

  DDSDomainParticipant* const participant_;
  const std::string prefix_;
  std::map<std::string, DDSKeyedStringDataWriter*> writers_;
  std::map<std::string, DDSKeyedStringDataReader*> readers_;
  std::list<std::thread> threads_;
};

}  // namespace

void run_endpoints(const Options& options, DDSDomainParticipant* participant) {
  Endpoints endpoints(participant, options.text("service"));
  say("ready");
  for (std::string line; std::getline(std::cin, line);) { endpoints.obey(line); }
}

}  // namespace peer
