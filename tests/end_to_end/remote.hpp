#pragma once

#include <cstdint>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

#include "side.hpp"
#include "support/other_process.hpp"

// Objects in the other process, and what stands for them in this one.

namespace end_to_end {

using support::OtherProcess;
using support::Packet;

/// What an interface has to be of whose objects live in the other process.
class Object {
 public:
  virtual ~Object() = default;
};

/// In the other process: a participant for the service "Calc", and objects that use it.
class OtherSide : public support::Service {
 public:
  using Command = Packet (*)(OtherSide&, Packet&);

  Packet obey(Packet packet) override {
    return reinterpret_cast<Command>(origin() + packet.get<std::intptr_t>())(*this, packet);
  }
  template <class... Values>
  static Packet call(OtherProcess& process, Command command, const Values&... values) {
    return process.call(Packet::of(reinterpret_cast<std::intptr_t>(command) - origin(), values...));
  }

  static Packet join(OtherSide& other, Packet& packet) {
    other.side = std::make_unique<Side>(support::kAcrossProcesses, packet.get<DDS_DomainId_t>());
    other.side->expect_topics_of("Calc");
    return {};
  }
  static Packet destroy(OtherSide& other, Packet& packet) {
    other.objects.remove(packet.get<int>());
    return {};
  }

  std::unique_ptr<Side> side;
  support::Numbered<Object> objects;

 private:
  /// The same function everywhere, which the other process has at another address.
  static std::intptr_t origin() { return reinterpret_cast<std::intptr_t>(&OtherSide::join); }
};
inline const support::Role other_side_role("side", []() -> std::unique_ptr<support::Service> {
  return std::make_unique<OtherSide>();
});

inline std::unique_ptr<OtherProcess> start_other_side() {
  auto process = std::make_unique<OtherProcess>("side");
  OtherSide::call(*process, &OtherSide::join, support::own_domain());
  return process;
}

/// A function that is carried out in the other process: one that creates an object for a participant, or an object's.
template <auto function>
struct Remotely;
template <class Interface, class... Parameters,
          std::unique_ptr<Interface> (*function)(DDSDomainParticipant*, Parameters...)>
struct Remotely<function> {
  static_assert(sizeof...(Parameters) <= 1, "they would be got in any order");
  static Packet obey(OtherSide& other, Packet& packet) {
    return Packet::of(other.objects.add(function(other.side->get(), packet.get<std::decay_t<Parameters>>()...)));
  }
  static int call(OtherProcess& process, Parameters... parameters) {
    return OtherSide::call(process, &obey, parameters...).template get<int>();
  }
};
template <class Interface, class Result, class... Parameters, Result (Interface::*function)(Parameters...)>
struct Remotely<function> {
  static Packet obey(OtherSide& other, Packet& packet) {
    auto& object = static_cast<Interface&>(other.objects[packet.get<int>()]);
    // In braces, so that they are got in their order.
    const std::tuple<std::decay_t<Parameters>...> arguments{packet.get<std::decay_t<Parameters>>()...};
    const auto call_object = [&object](const auto&... values) { return (object.*function)(values...); };
    if constexpr (std::is_void_v<Result>) {
      std::apply(call_object, arguments);
      return {};
    } else {
      return Packet::of(std::apply(call_object, arguments));
    }
  }
  static Result call(OtherProcess& process, int number, Parameters... parameters) {
    Packet answer = OtherSide::call(process, &obey, number, parameters...);
    if constexpr (!std::is_void_v<Result>) { return answer.get<Result>(); }
  }
};

/// Stands for an object that is created by a function with these arguments, and lives as long.
template <class Interface, auto create>
class Remote : public Interface {
 public:
  template <class... Arguments>
  explicit Remote(OtherProcess& process, const Arguments&... arguments)
      : process_(process), number_(Remotely<create>::call(process, arguments...)) {}
  ~Remote() override { OtherSide::call(process_, &OtherSide::destroy, number_); }

 protected:
  template <auto function, class... Arguments>
  auto remotely(const Arguments&... arguments) {
    return Remotely<function>::call(process_, number_, arguments...);
  }

 private:
  OtherProcess& process_;
  const int number_;
};

}  // namespace end_to_end
