# The table of the benchmarks between processes, against what is written by hand with the engine's own API.

BEGIN {
  bars["blocking, 64 B, same, by_hand"] = "<=1.15"
  bars["blocking, 65536 B, same, by_hand"] = "<=1.15"
  bars["blocking, 1048576 B, same, by_hand"] = "<=1.15"
  bars["pipelined, 64 B, same, by_hand"] = ">=0.9"
  bars["blocking, 1000 idle requesters"] = "<=1.2"
  bars["octets a reply, most against fewest"] = "<=1.1"
  bars["start-up, ms"] = "<=10"
  bars["resident after it, bytes"] = "<=12000000"
  header("other ns")
}

value("benchmark") == "round_trip" {
  mode = value("mode")
  # What is asked of the pipelined case is its share of the other's requests in a second.
  figure = mode == "pipelined" ? sprintf("%.3f", 1 / value("ratio")) : value("ratio")
  row(mode ", " value("payload") " B, " value("pin") ", " value("reference"), value("ns"), value("reference_ns"), figure,
      value("allocs_per_round_trip"))
}

value("load") == "idle" {
  row(value("mode") ", " value("size") " idle requesters", value("ns"), value("alone_ns"), value("ratio"),
      value("allocs_per_round_trip"))
}

value("load") == "wire" {
  octets = value("octets_per_reply") + 0
  row("octets a reply, " value("size") " processes", "", "", octets, "")
  if (octets > most_octets) { most_octets = octets }
  if (!wired || octets < fewest_octets) { fewest_octets = octets }
  wired = 1
}

value("benchmark") == "start_up" && value("transport") == "rtps" {
  row("start-up, ms", "", "", value("creation_ms"), "")
  row("resident after it, bytes", "", "", value("resident_bytes"), "")
  row("threads", "", "", value("threads"), "")
}

END {
  if (wired && fewest_octets > 0) {
    row("octets a reply, most against fewest", "", "", sprintf("%.3f", most_octets / fewest_octets), "")
  }
}
