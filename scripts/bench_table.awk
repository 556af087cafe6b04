# Turns the benchmarks' JSON lines into a table of medians, with what is to be reached. The exit code is 1 when a bar is
# missed or has nothing to measure it by.

function value(name,    text) {
  if (!match($0, "\"" name "\":\"?[^,\"}]*")) { return "" }
  text = substr($0, RSTART, RLENGTH)
  sub(/^"[^"]*":"?/, "", text)
  return text
}

# The bar of a case: "<=" or ">=" and a number.
function bar_of(name) { return name in bars ? bars[name] : "" }

function verdict(name, figure,    bar, limit, reached) {
  bar = bar_of(name)
  if (bar == "") { return "" }
  seen[name] = 1
  limit = substr(bar, 3) + 0
  reached = substr(bar, 1, 2) == "<=" ? figure <= limit : figure >= limit
  if (!reached) { missed++ }
  return bar (reached ? "  reached" : "  MISSED")
}

function row(name, ours, other, figure, allocations) {
  printf "%-38s %12s %12s %9s %8s  %s\n", name, ours, other, figure, allocations, verdict(name, figure + 0)
}

BEGIN {
  bars["blocking, 64 B, same"] = "<=1.5"
  bars["blocking, 65536 B, same"] = "<=1.2"
  bars["blocking, 1048576 B, same"] = "<=1.2"
  bars["listener, 64 B, same"] = "<=6"
  bars["pipelined, 64 B, same"] = ">=0.7"
  bars["typed, 64 B, same"] = "<=1.05"
  bars["typed_listener, 64 B, same"] = "<=1.05"
  bars["blocking, 10000 idle requesters"] = "<=1.2"
  bars["listener, 10000 idle requesters"] = "<=1.2"
  bars["blocking, 1000000 unread replies"] = "<=1.2"
  bars["listener, 1000000 unread replies"] = "<=1.2"
  bars["heap of an idle participant, bytes"] = "<=1048575"
  bars["most heap allocations in a round trip"] = "<=0"
  printf "%-38s %12s %12s %9s %8s  %s\n", "case", "ns", "floor ns", "ratio", "allocs", "to reach"
}

value("benchmark") == "round_trip" {
  mode = value("mode")
  # What is asked of the pipelined case is its share of the floor's requests in a second.
  figure = mode == "pipelined" ? sprintf("%.3f", 1 / value("ratio")) : value("ratio")
  row(mode ", " value("payload") " B, " value("pin"), value("ns"), value("floor_ns"), figure,
      value("allocs_per_round_trip"))
}

value("benchmark") == "scaling" && value("load") != "memory" {
  row(value("mode") ", " value("size") (value("load") == "idle" ? " idle requesters" : " unread replies"),
      value("ns"), value("alone_ns"), value("ratio"), value("allocs_per_round_trip"))
}

value("load") == "memory" { row("heap of an idle participant, bytes", "", "", value("idle_heap_bytes"), "") }

# Of the placement that repeats: with a processor for each side, how many buffers are under way at once is chance.
value("allocs_per_round_trip") != "" && value("pin") == "same" {
  if (value("allocs_per_round_trip") + 0 > most) { most = value("allocs_per_round_trip") + 0 }
  counted = 1
}

END {
  if (counted) { row("most heap allocations in a round trip", "", "", most + 0, "") }
  for (name in bars) {
    if (!(name in seen)) {
      print "not measured: " name
      missed++
    }
  }
  exit missed > 0
}
