#pragma once

#include <condition_variable>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include <sys/types.h>

namespace support {

/// Values one behind the other: a command to the other process, or its answer. Both run the same program, so that
/// values travel as they lie in memory, or by the references to its `fields()` where that is not possible. They are got
/// as what they were put as, in that order.
class Packet {
 public:
  Packet() = default;
  explicit Packet(std::string octets) : octets_(std::move(octets)) {}
  /// The values in turn.
  template <class... Values>
  static Packet of(const Values&... values) {
    Packet packet;
    (packet.put(values), ...);
    return packet;
  }

  template <class T>
  void put(const T& value) {
    if constexpr (std::is_trivially_copyable_v<T>) {
      static_assert(!std::is_pointer_v<T>);
      octets_.append(reinterpret_cast<const char*>(&value), sizeof value);
    } else {
      std::apply([this](const auto&... fields) { (this->put(fields), ...); }, T(value).fields());
    }
  }
  void put(const std::string& text) {
    put(text.size());
    octets_ += text;
  }
  template <class T>
  void put(const std::vector<T>& values) {
    put(values.size());
    for (const T& value : values) { put(value); }
  }
  template <class T>
  void put(const std::optional<T>& value) {
    put(value.has_value());
    if (value) { put(*value); }
  }

  template <class T>
  T get() {
    T value{};
    get_into(value);
    return value;
  }

  /// Whether everything has been got.
  bool empty() const { return position_ == octets_.size(); }
  const std::string& octets() const { return octets_; }

 private:
  template <class T>
  void get_into(T& value) {
    if constexpr (std::is_trivially_copyable_v<T>) {
      std::memcpy(&value, next(sizeof value), sizeof value);
    } else {
      std::apply([this](auto&... fields) { (this->get_into(fields), ...); }, value.fields());
    }
  }
  void get_into(std::string& text) {
    const std::size_t size = get<std::size_t>();
    text.assign(next(size), size);
  }
  template <class T>
  void get_into(std::vector<T>& values) {
    values.resize(get<std::size_t>());
    for (T& value : values) { get_into(value); }
  }
  template <class T>
  void get_into(std::optional<T>& value) {
    if (get<bool>()) { get_into(value.emplace()); }
  }
  const char* next(std::size_t size) {
    if (size > octets_.size() - position_) { throw std::out_of_range("the packet has no such value"); }
    position_ += size;
    return octets_.data() + position_ - size;
  }

  std::string octets_;
  std::size_t position_ = 0;
};

/// What the other process does, in one of its roles.
class Service {
 public:
  virtual ~Service() = default;
  /// Obeys a command. Called by several threads; what it throws is thrown where the command came from, as a
  /// `std::runtime_error`.
  virtual Packet obey(Packet command) = 0;
};

/// What a service has made, by numbers for the other process to name it. Thread-safe; whoever removes an object sees to
/// it that nobody uses it.
template <class T>
class Numbered {
 public:
  int add(std::unique_ptr<T> object) {
    const std::lock_guard<std::mutex> lock(mutex_);
    objects_[++last_] = std::move(object);
    return last_;
  }
  T& operator[](int number) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return *objects_.at(number);
  }
  void remove(int number) {
    const std::lock_guard<std::mutex> lock(mutex_);
    objects_.erase(number);
  }

 private:
  std::mutex mutex_;
  std::map<int, std::unique_ptr<T>> objects_;
  int last_ = 0;
};

/// Makes a role known to the program, as a static object.
class Role {
 public:
  Role(const char* name, std::unique_ptr<Service> (*create)());
};

/// A child process that runs this program in one of its roles. It ends with this object, or with the thread that has
/// created it.
class OtherProcess {
 public:
  explicit OtherProcess(const char* role);
  /// Waits for its end, too. A failed expectation in the child is one of the running test.
  ~OtherProcess();
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  /// Returns when the command has been obeyed. Any thread; up to `kThreads` commands are obeyed at the same time.
  Packet call(const Packet& command);

  static constexpr int kThreads = 16;

 private:
  std::mutex mutex_;
  std::condition_variable freed_;
  std::vector<int> free_;  // sockets, each with a thread at the other end
  std::vector<int> all_;
  pid_t child_ = -1;
};

/// Whether this process has been started as a child, and what is then its main function.
bool is_other_process(int argc, char** argv);
int run_other_process(int argc, char** argv);

}  // namespace support
