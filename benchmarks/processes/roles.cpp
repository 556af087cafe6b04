#include "processes/roles.hpp"

#include <cstdlib>
#include <iostream>
#include <map>

#include "hand_written/ping_pong.hpp"
#include "processes/child.hpp"
#include "support/echo.hpp"
#include "support/requester.hpp"

namespace bench {
namespace {

using Arguments = std::vector<std::string>;  // of a role, its name first

int domain_of(const Arguments& role) { return std::stoi(role.at(1)); }

void answer(const Arguments& role) {
  const Participant participant(domain_of(role), Transport::rtps);
  Echo echo(participant, nullptr, role.at(2) == role::one_requester);
  while (echo.answer_next()) {}
}

void answer_by_hand(const Arguments& role) {
  const bool in_listener = role.at(2) == role::in_listener;
  hand_written::answer_requests(domain_of(role),
                                in_listener ? hand_written::Answer::in_listener : hand_written::Answer::in_thread);
}

// Says that it is matched, makes its round trips when it hears a line, and says that it has made them; then it stays,
// for its leaving to disturb nobody.
void call(const Arguments& role) {
  const Participant participant(domain_of(role), Transport::rtps);
  Requester requester(participant, std::stoul(role.at(2)));
  requester.wait_for_replier();
  std::cout << role::matched << std::endl;
  std::string line;
  std::getline(std::cin, line);
  requester.run_blocking(std::stol(role.at(3)));
  std::cout << role::done << std::endl;
  std::getline(std::cin, line);
}

}  // namespace

std::optional<int> play_role(int argc, char** argv) {
  const auto role = role_of(argc, argv);
  if (!role) { return std::nullopt; }
  end_with_parent();
  const std::map<std::string, void (*)(const Arguments&)> roles = {
      {role::echo, answer}, {role::hand_written_echo, answer_by_hand}, {role::caller, call}};
  try {
    roles.at(role->front())(*role);
    return EXIT_SUCCESS;
  } catch (const std::exception& fault) { std::cerr << role->front() << ": " << fault.what() << '\n'; }
  return EXIT_FAILURE;
}

}  // namespace bench
