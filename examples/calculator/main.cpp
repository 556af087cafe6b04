// A calculator as a service: plain C++ types, two operations, and an error that is an answer like any other.
//
//     calculator 7 / 2

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <zemtra/zemtra.hpp>

namespace calculator {

enum class Operation : std::int32_t { multiply, divide };

struct Request {
  Operation operation;
  double left;
  double right;
};

struct Reply {
  std::optional<double> result;  // none: see error
  std::string error;
};

Reply calculate(const Request& request) {
  if (request.operation == Operation::multiply) { return {request.left * request.right, ""}; }
  if (request.right == 0) { return {std::nullopt, "division by zero"}; }
  return {request.left / request.right, ""};
}

std::optional<Operation> parse(const std::string& symbol) {
  if (symbol == "x") { return Operation::multiply; }
  if (symbol == "/") { return Operation::divide; }
  return std::nullopt;
}

int run(Operation operation, double left, double right) {
  using namespace std::chrono_literals;
  zemtra::Participant participant;
  const zemtra::HandlerReplier<Request, Reply> replier(participant, "Calculator", &calculate);
  zemtra::Requester<Request, Reply> requester(participant, "Calculator");
  if (!requester.wait_for_service(10s)) {
    std::cerr << requester.explain() << '\n';
    return 1;
  }
  const Reply reply = requester.call({operation, left, right}, 10s);
  if (!reply.result) {
    std::cerr << reply.error << '\n';
    return 1;
  }
  std::cout << *reply.result << '\n';
  return 0;
}

}  // namespace calculator

int main(int argc, char** argv) {
  const auto operation = argc == 4 ? calculator::parse(argv[2]) : std::nullopt;
  if (!operation) {
    std::cerr << "usage: calculator NUMBER x|/ NUMBER\n";
    return 2;
  }
  return calculator::run(*operation, std::strtod(argv[1], nullptr), std::strtod(argv[3], nullptr));
}
