#include <iostream>
#include <string>
#include <zemtra/zemtra.hpp>

struct Greeting {
  std::string text;
  int times;
};

int main() {
  using namespace std::chrono_literals;
  zemtra::Participant participant;
  zemtra::HandlerReplier<std::string, Greeting> replier(participant, "Greeter", [](const std::string& name) {
    return Greeting{"Hello, " + name, 2};
  });
  zemtra::Requester<std::string, Greeting> requester(participant, "Greeter");

  const Greeting greeting = requester.call("world", 10s);
  for (int i = 0; i < greeting.times; ++i) { std::cout << greeting.text << '\n'; }
}
