# The table of the benchmarks within one process, against their floors.

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
  header("floor ns")
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

END { if (counted) { row("most heap allocations in a round trip", "", "", most + 0, "") } }
