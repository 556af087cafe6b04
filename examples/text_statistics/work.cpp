#include "work.hpp"

#include <atomic>
#include <chrono>
#include <future>
#include <iostream>
#include <mutex>

#include "replier.hpp"
#include "requester.hpp"

namespace {

constexpr const char* service = "TextStatistics";

/// Says how many requests are answered, at every tenth of the way.
class Progress {
 public:
  explicit Progress(std::size_t total) : total_(total) {}

  void advance() {
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::size_t tenth = ++done_ * 10 / total_;
    if (tenth == (done_ - 1) * 10 / total_) { return; }
    std::cout << "  " << tenth * 10 << " %: " << done_ << " of " << total_ << " requests answered" << std::endl;
  }

 private:
  const std::size_t total_;
  std::mutex mutex_;
  std::size_t done_ = 0;  // guarded by mutex_
};

/// The paragraphs that are still to be sent, and what has come of the others.
struct Work {
  explicit Work(const std::vector<std::string>& all) : paragraphs(all), progress(all.size()) {}

  const std::vector<std::string>& paragraphs;
  std::atomic<std::size_t> next{0};
  Progress progress;
};

/// What each of the four threads does: one paragraph after the other, as long as there are any.
Result request_paragraphs(Requester& requester, Work& work) {
  Result part;
  for (std::size_t i = work.next++; i < work.paragraphs.size(); i = work.next++) {
    ++part.requests;
    part.replies += requester.request(work.paragraphs[i], part.statistics);
    work.progress.advance();
  }
  return part;
}

}  // namespace

Result count_by_messaging(const std::vector<std::string>& paragraphs) {
  const Participant participant;
  Replier replier(participant, service);
  Requester shared(participant, service);
  Requester second(participant, service);
  Requester third(participant, service);

  Work work(paragraphs);
  const auto begin = std::chrono::steady_clock::now();
  std::vector<std::future<Result>> threads;
  for (Requester* const requester : {&shared, &shared, &second, &third}) {
    threads.push_back(
        std::async(std::launch::async, [requester, &work] { return request_paragraphs(*requester, work); }));
  }
  Result result;
  for (std::future<Result>& thread : threads) {
    const Result part = thread.get();
    add(result.statistics, part.statistics);
    result.requests += part.requests;
    result.replies += part.replies;
  }
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  replier.stop();
  return result;
}
