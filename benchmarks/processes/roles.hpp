#pragma once

#include <optional>

namespace bench {

/// What a `Child` may be started as; the domain follows the name.
namespace role {

/// Answers requests until one carries the stop tag. Then: `one_requester` or `many_requesters`.
constexpr const char* echo = "echo";
constexpr const char* one_requester = "one_requester";
constexpr const char* many_requesters = "many_requesters";
/// The same of the hand-written peer. Then: `in_thread` or `in_listener`.
constexpr const char* hand_written_echo = "hand_written_echo";
constexpr const char* in_thread = "in_thread";
constexpr const char* in_listener = "in_listener";
/// Says `matched` when it has a replier, makes round trips when it hears a line, and says `done`. Then: the size of the
/// payload and the number of round trips.
constexpr const char* caller = "caller";
constexpr const char* matched = "matched";
constexpr const char* done = "done";

}  // namespace role

/// Plays the role that this process was started for by a `Child`, and returns the process's exit code; nothing when it
/// was started by somebody else. To be called first of all.
std::optional<int> play_role(int argc, char** argv);

}  // namespace bench
